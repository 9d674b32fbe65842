// Runs a command: holds the engine that its options ask for, and tells what there is to tell of each document.
#pragma once

#include "cli/options/CommonOptions.h"
#include "cli/report/Messages.h"
#include "cli/report/Summary.h"
#include "jobs/Rendering.h"
#include "library/FontMap.h"

#include <functional>
#include <span>
#include <string>
#include <vector>

namespace vxhost
{

class Session
{
  public:
    // Throws UsageError when there is no plug-in that works, or a font that the user chose is not there.
    Session(const CommonOptions &options, CommandKind command, Messages *messages);

    Engine &Jobs() { return engine_; }

    // Does a task, waits for its end, and tells what there is to tell. The worker may use these descriptors.
    Status Run(JobTask task, const std::vector<int> &descriptors);
    Summary Summarise(const std::string &input, const Result &result) const;
    Summary Tell(const std::string &input, const Result &result);
    // Tells what became of an output that several documents are in.
    Summary TellOutput(const std::string &output, const Result &result);

    // Reads each input, tells what there is to tell of it, and prints the text that is made of it. error is what was told.
    using ResultText =
        std::function<std::string(const std::string &input, const Result &result, const std::string &error)>;
    Status PrintEach(const std::vector<std::string> &inputs, const ResultText &makeText);

    // Throws OptionError for what is wrong with the settings, whatever the document.
    void CheckDevices(std::span<const Format *const> formats, const Settings &settings);

    // Warns of an output whose name is that of another format.
    Status TellOfName(const std::string &output, std::span<const Format *const> formats);

    // Returns the fonts of this machine. Throws EarlyEnd when they cannot be listed.
    const FontList &Fonts();

  private:
    Result Finish(JobTask task, const std::vector<int> &descriptors = {});
    void CheckFault(const Fault &fault, const Confinement &confinement, CommandKind command) const;
    void CheckServed(const FontMap &served);

    Messages *messages_;
    SummaryOptions summaryOptions_;
    Engine engine_;
};

} // namespace vxhost
