#include "cli/Worker.h"

#include "cli/Interrupt.h"
#include "cli/OutputFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <new>
#include <optional>
#include <poll.h>
#include <string_view>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vxhost
{

namespace
{

using Clock = std::chrono::steady_clock;

constexpr size_t kMaxAnswer = size_t{64} << 20;

// What a frame in the pipe is: one byte, then for an answer its length and its bytes.
enum Frame : char { kProgressFrame = 'p', kMemoryFrame = 'm', kAnswerFrame = 'a' };

// Where the handler of a failed allocation, which takes no argument, finds the pipe.
int g_workerPipe = -1;

[[noreturn]] void EndOutOfMemory()
{
    const char frame = kMemoryFrame;
    (void)WriteAll(g_workerPipe, {&frame, 1}); // the parent sees an end without an answer if this fails
    _exit(0);
}

void LimitMemory(int64_t bytes)
{
    std::set_new_handler(EndOutOfMemory);
    if (!MemoryLimitWorks() || bytes == 0)
        return;
    const rlimit limit = {static_cast<rlim_t>(bytes), static_cast<rlim_t>(bytes)};
    // Refused only above the limit that holds already.
    (void)setrlimit(RLIMIT_DATA, &limit);
}

// noexcept: an exception that gets here is a bug, and ends as a crash that the parent reports.
[[noreturn]] void BeWorker(int pipe, pid_t parent, const WorkerLimits &limits,
                           const WorkerTask &task) noexcept
{
    ForgetInterrupts();
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent)
        _exit(0);
    const rlimit noCore = {0, 0};
    (void)setrlimit(RLIMIT_CORE, &noCore);
    g_workerPipe = pipe;
    LimitMemory(limits.memory);

    WorkerLink link(pipe);
    const std::string answer = task(link);
    const uint64_t length = answer.size();
    std::string head(1, kAnswerFrame);
    head.append(reinterpret_cast<const char *>(&length), sizeof length);
    const bool told = WriteAll(pipe, head) && WriteAll(pipe, answer);
    // Not exit: what the parent registered to run at its end is the parent's.
    _exit(told ? 0 : 1);
}

// Takes the frames out of what has arrived. False when what came is nothing that a worker sends.
class FrameReader
{
  public:
    explicit FrameReader(const std::function<void(int)> *onProgress) : onProgress_(onProgress) {}

    bool Add(std::string_view bytes)
    {
        bytes_ += bytes;
        size_t at = 0;
        while (at < bytes_.size()) {
            const std::string_view rest = std::string_view(bytes_).substr(at);
            if (rest[0] == kMemoryFrame) {
                outOfMemory = true;
                ++at;
            } else if (rest[0] == kProgressFrame) {
                if (rest.size() < 2)
                    break;
                if (*onProgress_)
                    (*onProgress_)(std::clamp<int>(rest[1], 0, 100));
                at += 2;
            } else if (rest[0] == kAnswerFrame) {
                uint64_t length = 0;
                if (rest.size() < 1 + sizeof length)
                    break;
                std::memcpy(&length, rest.data() + 1, sizeof length);
                if (length > kMaxAnswer)
                    return false;
                if (rest.size() < 1 + sizeof length + length)
                    break;
                answer = std::string(rest.substr(1 + sizeof length, length));
                at += 1 + sizeof length + length;
            } else {
                return false;
            }
        }
        bytes_.erase(0, at);
        return true;
    }

    bool outOfMemory = false;
    std::optional<std::string> answer;

  private:
    const std::function<void(int)> *onProgress_;
    std::string bytes_;
};

// Milliseconds to wait: -1 for ever, 0 when the time is over.
int TimeLeft(const std::optional<Clock::time_point> &deadline)
{
    if (!deadline)
        return -1;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*deadline - Clock::now()).count();
    return static_cast<int>(std::clamp<int64_t>(left, 0, INT_MAX));
}

enum class Listened { ToTheEnd, OutOfTime, Nonsense };

Listened Listen(int pipe, const WorkerLimits &limits, FrameReader *frames)
{
    std::optional<Clock::time_point> deadline;
    if (limits.seconds > 0)
        deadline = Clock::now() +
                   std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(limits.seconds));
    char buffer[1 << 16];
    while (true) {
        pollfd ready = {pipe, POLLIN, 0};
        const int timeout = TimeLeft(deadline);
        const int count = poll(&ready, 1, timeout);
        if (count == 0 && TimeLeft(deadline) == 0)
            return Listened::OutOfTime;
        if (count <= 0)
            continue;
        const ssize_t got = read(pipe, buffer, sizeof buffer);
        if (got == 0 || (got < 0 && errno != EINTR))
            return Listened::ToTheEnd;
        if (got > 0 && !frames->Add({buffer, static_cast<size_t>(got)}))
            return Listened::Nonsense;
    }
}

int WaitFor(pid_t worker)
{
    int status = 0;
    while (waitpid(worker, &status, 0) < 0 && errno == EINTR)
        continue;
    return status;
}

WorkerEnd JudgeEnd(Listened listened, int status, FrameReader &frames)
{
    if (listened == Listened::OutOfTime)
        return {WorkerFate::OutOfTime, "", ""};
    if (frames.outOfMemory)
        return {WorkerFate::OutOfMemory, "", ""};
    if (listened == Listened::Nonsense)
        return {WorkerFate::Crashed, "", "its answer made no sense"};
    if (WIFSIGNALED(status))
        return {WorkerFate::Crashed, "",
                fmt::format("signal {} ({})", WTERMSIG(status), strsignal(WTERMSIG(status)))};
    if (!frames.answer || WEXITSTATUS(status) != 0)
        return {WorkerFate::Crashed, "", fmt::format("ended with {} and no answer", WEXITSTATUS(status))};
    return {WorkerFate::Finished, std::move(*frames.answer), ""};
}

} // namespace

void WorkerLink::Progress(int64_t done, int64_t total)
{
    const int percent = total > 0 ? static_cast<int>(std::clamp<int64_t>(done * 100 / total, 0, 100)) : 0;
    if (percent == percent_)
        return;
    percent_ = percent;
    const char frame[] = {kProgressFrame, static_cast<char>(percent)};
    (void)WriteAll(descriptor_, {frame, sizeof frame}); // a parent that does not listen misses nothing else
}

WorkerEnd RunWorker(const WorkerLimits &limits, const WorkerTask &task,
                    const std::function<void(int percent)> &onProgress)
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        return {WorkerFate::CannotStart, "", SystemText(errno)};
    const pid_t parent = getpid();
    const pid_t worker = fork();
    if (worker < 0) {
        const int error = errno;
        close(ends[0]);
        close(ends[1]);
        return {WorkerFate::CannotStart, "", SystemText(error)};
    }
    if (worker == 0) {
        close(ends[0]);
        BeWorker(ends[1], parent, limits, task);
    }
    close(ends[1]);
    FrameReader frames(&onProgress);
    const Listened listened = Listen(ends[0], limits, &frames);
    close(ends[0]);
    // Also when it closed its end: one that goes on without it would be waited for in vain. How a process that
    // is ending already ended does not change.
    kill(worker, SIGKILL);
    return JudgeEnd(listened, WaitFor(worker), frames);
}

} // namespace vxhost
