// Does one piece of work in a process of its own, so that a crash, an endless loop or a hunger for memory costs that piece
// alone.
//
// The work answers with bytes through a pipe. What comes through it is judged, never trusted. One thread looks after
// any number of workers.
#pragma once

#include "library/Result.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <sys/resource.h>
#include <sys/types.h>
#include <vector>

namespace vxhost
{

class WorkerFrames;

struct WorkerLimits {
    double seconds = 60;               // 0: none
    int64_t memory = int64_t{1} << 30; // bytes of data, beside what is only mapped from files; 0: none
    std::optional<int64_t> output; // bytes of a file that it writes; 0: none; not said: by the input's size

    // Returns the limits for an input of that size, with all said.
    WorkerLimits For(size_t inputSize) const;
};

struct WorkerEnd {
    Fault fault;        // none: it came to its end
    std::string answer; // its bytes, at which nobody has looked
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

struct WorkerTask {
    std::function<std::string(WorkerLink &)> run; // runs in the process, and returns the answer
    std::vector<int> descriptors;                 // all that it may use
    size_t mostAnswer = 0;                        // bytes; a longer one is taken for a crash
    bool touchesMuchMemory = false; // megabytes, as a picture's pixels: it gets them by large pages
    std::function<void(int percent)> onProgress; // null: nobody is told
};

class Worker
{
  public:
    // Null when there can be no process; error is then the errno, ENOSYS where the system has no way to close descriptors
    // that are not named.
    static std::unique_ptr<Worker> Start(const WorkerLimits &limits, const WorkerTask &task, int *error);
    Worker(const Worker &) = delete;
    Worker &operator=(const Worker &) = delete;
    ~Worker(); // ends the process if it still runs

    // Waits until one of the workers has ended, or there is something to read from one of the others, those that are not -1.
    // True when there is.
    static bool WaitForAny(std::span<Worker *const> workers, std::initializer_list<int> others = {});

    bool HasEnded() const { return end_.has_value(); }
    WorkerEnd TakeEnd() { return std::move(*end_); } // once it has ended

  private:
    using Clock = std::chrono::steady_clock;

    Worker();
    bool IsGone() const; // what it said may still be in the pipe
    void Listen();
    void Conclude(Fault seen);
    int WaitForProcess(rusage *usage = nullptr);

    int pipe_ = -1;
    pid_t process_ = -1;
    std::optional<Clock::time_point> deadline_;
    std::unique_ptr<WorkerFrames> frames_;
    std::optional<WorkerEnd> end_;
};

// Whether a write of a worker with these limits failed for its own, rather than for one that this process has as well.
bool IsOutputLimit(const WorkerLimits &limits, int error);

// The limit, as a shell calls it, under which this program was started and which a worker that ran out of memory met
// rather than its own; empty: there is none.
std::string_view CallersMemoryLimit(const WorkerLimits &limits);

// Whether a write failed for a limit of that kind.
bool IsCallersFileLimit(int error);

// How many workers there can be at a time, where this process holds so many descriptors for each; at least 1.
size_t MostWorkers(size_t descriptorsEach);

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
