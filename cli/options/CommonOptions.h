// The options that every command has, and how a wrong one is told.
#pragma once

#include "cli/options/FontChoice.h"
#include "cli/report/Messages.h"
#include "cli/report/Status.h"
#include "host/fonts/TextEncoding.h"
#include "jobs/Worker.h"
#include "library/Options.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace CLI
{
class App;
}

namespace vxhost
{

// A wrong command line, or one that asks for what this version cannot do: one line, exit status 2.
struct UsageError : OptionError {
    using OptionError::OptionError;
};

// What ends a run before its first document and is no mistake on the command line: one line, and a status of its own.
struct EarlyEnd : OptionError {
    EarlyEnd(Status of, const std::string &text) : OptionError(text), status(of) {}
    Status status;
};

struct CommonOptions {
    // Settings of outputs with what these say of them.
    Settings Complete(Settings settings) const;

    std::vector<std::string> inputs; // "-" is standard input
    std::string plugin;              // a file; empty: the one that is built in
    FontChoice fonts;
    std::optional<Script> script; // of text whose font does not say it; none: as the fonts suggest
    WorkerLimits limits;
    Verbosity verbosity = Verbosity::Normal;
    bool showProgress = false;
    bool strict = false;
    bool requireSandbox = false;
};

// Two steps, as a command line is read in two: first its words, then what they mean.
class CommonOptionReader
{
  public:
    // defaultTime is that of --max-time, in seconds.
    explicit CommonOptionReader(std::string defaultTime) { texts_.Set("max-time", std::move(defaultTime)); }
    // Last, so that they stand below the command's own in its help.
    void AddTo(CLI::App *command, const std::string &inputs = "documents to read; - is standard input");
    // Throws UsageError; without an input too, unless the command can do without.
    CommonOptions Read(bool needsInput = true) const;

  private:
    FontChoice ReadFontChoice(double seconds) const; // a map may take

    std::vector<std::string> inputs_;
    std::string plugin_;
    std::vector<std::string> fontDirectories_;
    std::string fontMap_;
    OptionTexts texts_; // of the table's options about reading
    std::string progress_ = "auto";
    bool noSystemFonts_ = false;
    bool requireSandbox_ = false;
    bool quiet_ = false;
    bool verbose_ = false;
    bool strict_ = false;
};

} // namespace vxhost
