// One piece of work in a process of its own, so that a crash, an endless loop or a hunger for memory costs
// that piece alone.
//
// The work answers with bytes through a pipe. What comes through it is judged, never trusted.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace vxhost
{

struct WorkerLimits {
    double seconds = 60;               // 0: none
    int64_t memory = int64_t{1} << 30; // bytes of data, beside what is only mapped from files; 0: none
};

enum class WorkerFate { Finished, Crashed, OutOfTime, OutOfMemory, CannotStart };

struct WorkerEnd {
    WorkerFate fate = WorkerFate::Crashed;
    std::string answer; // of a finished one
    std::string detail; // of a crashed one, or one that did not start: how, as the rest of a message
};

// The worker's side of the pipe.
class WorkerLink
{
  public:
    explicit WorkerLink(int descriptor) : descriptor_(descriptor) {}
    void Progress(int64_t done, int64_t total); // cheap when the percentage is the same as before

  private:
    int descriptor_;
    int percent_ = -1;
};

using WorkerTask = std::function<std::string(WorkerLink &)>;

WorkerEnd RunWorker(const WorkerLimits &limits, const WorkerTask &task,
                    const std::function<void(int percent)> &onProgress);

// False where the memory limit cannot be set: a program under a memory checker needs its address space.
constexpr bool MemoryLimitWorks()
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    return false;
#else
    return true;
#endif
}

} // namespace vxhost
