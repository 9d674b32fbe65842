// Holds all that the documents of a run are read with: the plug-in, the fonts, what a worker may take and what it may reach.
#pragma once

#include "host/reading/Reading.h"
#include "jobs/MachineFonts.h"
#include "jobs/Sandbox.h"
#include "jobs/Worker.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace vxhost
{

struct EngineOptions {
    std::unique_ptr<Plugin> plugin;
    FontSources fonts;
    ReadingOptions reading;
    WorkerLimits limits;
    bool mustBeConfined = false; // no document is read where the kernel cannot confine its worker
    // Is told how much of an input was read; null: nobody is.
    std::function<void(const std::string &input, int percent)> onProgress;
};

class Engine
{
  public:
    explicit Engine(EngineOptions options);
    Engine(const Engine &) = delete;
    Engine &operator=(const Engine &) = delete;

    const EngineOptions &Options() const { return options_; }
    MachineFonts &Fonts() { return fonts_; }

    // Waits until the fonts are listed. Returns null when they cannot be: Fonts().WhyNone() says why.
    const FontList *WaitForFonts();

    // Returns what a worker that starts now reads with: the fonts of the machine if they are listed, else boxes for all of them.
    bool HasFonts() const { return fonts_.List() != nullptr; }
    const Installation &Installed();
    // Returns rules that allow these files, those of the fonts that are listed, and those of all calls before, which the user
    // chose too.
    FileRules &RulesWith(const std::vector<std::string> &files);
    const CallRules &Calls() const { return calls_; }

  private:
    EngineOptions options_;
    MachineFonts fonts_;
    Installation installation_;
    FileRules rules_;
    CallRules calls_{SystemCalls::OfReading};
    std::set<std::string> ruled_; // files that were added
    bool rulesHaveFonts_ = false;
};

} // namespace vxhost
