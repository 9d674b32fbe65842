// Finds the words for a Result: the exit status, a line for what went wrong, a line a warning. All wording about documents and
// outputs is here.
#pragma once

#include "cli/report/Messages.h"
#include "cli/report/Status.h"
#include "jobs/Engine.h"
#include "library/Result.h"

#include <string>
#include <string_view>
#include <vector>

namespace vxhost
{

// The words depend on the command that says them.
enum class CommandKind {
    Info,
    Fonts, // does not send anybody to vx fonts
    Text,
    Check, // whose findings tell what others warn of
    Trace, // does not send anybody to vx trace: the calls stand above
    Render,
    Merge,   // whose documents are pages of one output
    Profile, // no document: the profile that was given is tried
    Batch    // whose results go further than its user: a file that is no drawing is not quoted
};

struct Summary {
    Status status = Status::Done;
    std::string error;   // one line; empty: there is nothing to tell
    std::string subject; // the output that it is about, as messages name it; empty: it is about the input
    std::vector<std::string> warnings;

    bool IsDone() const { return status == Status::Done || status == Status::Warned; }
};

struct SummaryOptions {
    CommandKind command = CommandKind::Info;
    WorkerLimits limits; // those of the run
    bool isStrict = false;
};

Summary Summarise(const std::string &input, const Result &result, const SummaryOptions &options);

void Tell(const std::string &input, const Result &result, const Summary &summary, Messages *messages);

// Each names its file as messages do.
std::string InputName(const std::string &input);
std::string OutputName(const std::string &output);

} // namespace vxhost
