// One run of a command: the engine that its options ask for, and what is told of each document.
#pragma once

#include "cli/options/CommonOptions.h"
#include "cli/report/Messages.h"
#include "cli/report/Summary.h"
#include "jobs/Rendering.h"

#include <map>
#include <span>
#include <string>
#include <vector>

namespace vxhost
{

class Session
{
  public:
    // Throws UsageError when there is no plug-in that works, or a font that the user chose is not there.
    Session(const CommonOptions &options, Audience audience, Messages *messages);

    Engine &Jobs() { return engine_; }

    struct Outcome {
        Result result;
        Summary summary;
    };
    // Reads a document by one pass, waits for it, and tells what there is to tell.
    Outcome Read(const std::string &input, Pass pass);
    Outcome Read(JobTask task, const std::vector<int> &descriptors = {});
    Summary Summarise(const std::string &input, const Result &result) const;
    Summary Tell(const std::string &input, const Result &result);

    // Throws OptionError for what is wrong with the settings, whatever the document.
    void CheckDevices(std::span<const Format *const> formats, const Settings &settings);

    // Of this machine. Throws EarlyEnd when they cannot be listed.
    const FontList &Fonts();

  private:
    void CheckFault(const Fault &fault, const Confinement &confinement, Audience audience) const;
    void CheckServed(const std::map<std::string, std::string> &served);

    Messages *messages_;
    Telling telling_;
    Engine engine_;
};

} // namespace vxhost
