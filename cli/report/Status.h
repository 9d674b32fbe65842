// The exit statuses of the command, and which of several wins.
#pragma once

namespace vxhost
{

enum class Status {
    Done = 0,
    InputFailed = 1, // could not be read or drawn
    Usage = 2,       // found before the first input is touched, so it never meets another
    Warned = 3,      // under --strict
    OutputFailed = 4,
    LimitHit = 5,
    WorkerCrashed = 6,
    Interrupted = 130,
};

// Of several inputs the worst decides: what may have hit any input, before what is this input's own fault.
constexpr Status Worst(Status left, Status right)
{
    constexpr Status kWorstFirst[] = {Status::Interrupted, Status::Usage,        Status::WorkerCrashed,
                                      Status::LimitHit,    Status::OutputFailed, Status::InputFailed,
                                      Status::Warned};
    for (const Status status : kWorstFirst) {
        if (status == left || status == right)
            return status;
    }
    return Status::Done;
}

} // namespace vxhost
