// Reads the options that every command has.
#pragma once

#include "cli/report/Messages.h"
#include "cli/report/Status.h"
#include "host/fonts/FontconfigFonts.h"
#include "host/reading/Reading.h"
#include "jobs/Worker.h"
#include "library/Options.h"

#include <cstddef>
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

// Is thrown for a wrong command line, or one that asks for what this version cannot do. The text is one line; the exit status is 2.
struct UsageError : OptionError {
    using OptionError::OptionError;
};

// Is thrown when something ends a run before its first document and is no mistake on the command line. The text is one line.
struct EarlyEnd : OptionError {
    EarlyEnd(Status of, const std::string &text) : OptionError(text), status(of) {}
    Status status;
};

struct CommonOptions {
    // Returns the settings of outputs with what these options say of them.
    Settings Complete(Settings settings) const;

    std::vector<std::string> inputs; // "-" is standard input
    std::string plugin;              // a file; empty: the one that is built in
    FontSources fonts;
    ReadingOptions reading;
    WorkerLimits limits;
    Verbosity verbosity = Verbosity::Normal;
    bool showProgress = false;
    bool strict = false;
    bool requireSandbox = false;
    std::string said; // in one text, what was said that decides over outputs
};

// Reads what --jobs says: how many there may be at a time. None: it says nothing. Throws UsageError.
std::optional<size_t> ReadJobs(const std::string &text);

// Works in two steps: the words of the command line are stored, and then Read says what they mean.
class CommonOptionReader
{
  public:
    CommonOptionReader() : CommonOptionReader(FindOption("max-time")->standard) {}
    // defaultTime is that of --max-time, in seconds, for a command whose own differs from the table's.
    explicit CommonOptionReader(std::string defaultTime) { texts_.Set("max-time", std::move(defaultTime)); }
    // Call it after the command's own options are added, so that these stand below them in its help.
    void AddTo(CLI::App *command, const std::string &inputs = "documents to read; - is standard input");
    // Throws UsageError for what is wrong, and where there is no input though the command needs one.
    CommonOptions Read(bool needsInput = true) const;

  private:
    std::string TextOfSaid() const;

    std::vector<std::string> inputs_;
    std::string plugin_;
    std::vector<std::string> fontDirectories_;
    std::string fontMap_;
    OptionTexts texts_; // what is said of the table's options about reading
    std::string progress_ = "auto";
    bool noSystemFonts_ = false;
    bool requireSandbox_ = false;
    bool quiet_ = false;
    bool verbose_ = false;
    bool strict_ = false;
};

} // namespace vxhost
