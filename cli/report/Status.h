// Lists the exit statuses of the command, and decides which of several wins.
#pragma once

namespace vxhost
{

enum class Status {
    Done = 0,
    InputFailed = 1, // an input could not be read or drawn
    Usage = 2,       // shows before the first input is touched, so it never meets another status
    Warned = 3,      // there were warnings, under --strict
    OutputFailed = 4,
    LimitHit = 5,
    WorkerCrashed = 6,
    Interrupted = 130,
};

// Returns the worse of two. What might have hit any input is worse than what is an input's own fault.
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
