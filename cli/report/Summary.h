// What is told of a Result: the exit status, a line for what went wrong, a line a warning. All wording about documents and
// outputs is here.
#pragma once

#include "cli/report/Messages.h"
#include "cli/report/Status.h"
#include "jobs/Engine.h"
#include "jobs/Result.h"

#include <string>
#include <string_view>
#include <vector>

namespace vxhost
{

// What of the words depends on the command that says them.
enum class Audience {
    Info,
    Fonts, // nobody is sent to vx fonts
    Trace, // nor to vx trace; the calls stand above
    Render,
    Profile, // no document: the profile that was given is tried
    Batch    // whose results go further than its user: a file that is no drawing is not quoted
};

struct Summary {
    Status status = Status::Done;
    std::string error;   // one line; empty: nothing to tell
    std::string subject; // what it is about, if it is not the input: an output, as messages name it
    std::vector<std::string> warnings;

    bool IsDone() const { return status == Status::Done || status == Status::Warned; }
};

struct Telling {
    Audience audience = Audience::Info;
    WorkerLimits limits; // of the run
    bool isStrict = false;
};

Summary Summarise(const std::string &input, const Result &result, const Telling &telling);

// What a worker was not kept from; empty: from nothing.
std::string UnconfinedText(const Confinement &confinement);

void Tell(const std::string &input, const Result &result, const Summary &summary, Messages *messages);

// How a message names them.
std::string InputName(const std::string &input);
std::string OutputName(const std::string &output);

} // namespace vxhost
