#include "cli/Worker.h"

#include "cli/Interrupt.h"
#include "cli/MallocHandler.h"
#include "cli/OutputFile.h"
#include "library/Options.h"
#include "library/Values.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <new>
#include <poll.h>
#include <string_view>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace vxhost
{

namespace
{

namespace fs = std::filesystem;

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

rlim_t LimitOf(__rlimit_resource resource)
{
    rlimit present = {};
    return getrlimit(resource, &present) == 0 ? present.rlim_cur : RLIM_INFINITY;
}

// Lowers the limit for good; one that is lower already stays.
void Lower(__rlimit_resource resource, int64_t to)
{
    rlimit limit = {};
    if (to == 0 || getrlimit(resource, &limit) != 0)
        return;
    const auto most = static_cast<rlim_t>(to);
    limit = {std::min(limit.rlim_cur, most), std::min(limit.rlim_max, most)};
    (void)setrlimit(resource, &limit); // lowering is always allowed
}

void LimitMemory(int64_t bytes)
{
    std::set_new_handler(EndOutOfMemory);
    SetMallocHandler(EndOutOfMemory);
    if (MemoryLimitWorks())
        Lower(RLIMIT_DATA, bytes);
}

// The system counts to a second.
bool HasTakenAllTime(const rusage &usage)
{
    const auto seconds = static_cast<rlim_t>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec);
    return LimitOf(RLIMIT_CPU) <= seconds + 1;
}

// Those of this process; the one that lists them may be among them.
std::vector<int> OpenDescriptors()
{
    std::vector<int> open;
    std::error_code failure;
    for (fs::directory_iterator at("/proc/self/fd", failure), end; !failure && at != end;
         at.increment(failure))
        open.push_back(ReadInteger(at->path().filename().string()).value_or(-1));
    return open;
}

// What this program opened itself is closed on exec; what it was started with is not its own to close.
void CloseOwnBut(const std::vector<int> &keep)
{
    for (const int descriptor : OpenDescriptors()) {
        const int flags = fcntl(descriptor, F_GETFD);
        if (flags > 0 && (flags & FD_CLOEXEC) != 0 && std::ranges::find(keep, descriptor) == keep.end())
            close(descriptor);
    }
}

// Runs the task. A library may also tell of its lack of memory by itself.
std::string Answer(const WorkerTask &task, WorkerLink *link)
{
    try {
        return task(*link);
    } catch (const std::bad_alloc &) {
        EndOutOfMemory();
    }
}

// noexcept: an exception that gets here is a bug, and ends as a crash that the parent reports.
[[noreturn]] void BeWorker(int pipe, pid_t parent, const WorkerLimits &limits, std::vector<int> keep,
                           const WorkerTask &task) noexcept
{
    ForgetInterrupts();
    keep.push_back(pipe);
    CloseOwnBut(keep);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent)
        _exit(0);
    g_workerPipe = pipe;
    LimitMemory(limits.memory);
    Lower(RLIMIT_FSIZE, limits.output.value_or(0));

    WorkerLink link(pipe);
    const std::string answer = Answer(task, &link);
    const uint64_t length = answer.size();
    std::string head(1, kAnswerFrame);
    head.append(reinterpret_cast<const char *>(&length), sizeof length);
    const bool told = WriteAll(pipe, head) && WriteAll(pipe, answer);
    // Not exit: what the parent registered to run at its end is the parent's.
    _exit(told ? 0 : 1);
}

} // namespace

WorkerLimits WorkerLimits::For(size_t inputSize) const
{
    WorkerLimits limits = *this;
    limits.output = MostOutput(output, inputSize);
    return limits;
}

void WorkerLink::Progress(int64_t done, int64_t total)
{
    const int percent = total > 0 ? static_cast<int>(std::clamp<int64_t>(done * 100 / total, 0, 100)) : 0;
    if (percent == percent_)
        return;
    percent_ = percent;
    const char frame[] = {kProgressFrame, static_cast<char>(percent)};
    (void)WriteAll(descriptor_, {frame, sizeof frame}); // a parent that does not listen misses nothing else
}

// Takes the frames out of what has arrived.
class Worker::FrameReader
{
  public:
    explicit FrameReader(std::function<void(int)> onProgress) : onProgress_(std::move(onProgress)) {}

    // False when what came is nothing that a worker sends.
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
                if (onProgress_)
                    onProgress_(std::clamp<int>(rest[1], 0, 100));
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
    std::function<void(int)> onProgress_;
    std::string bytes_;
};

Worker::Worker() = default;

std::unique_ptr<Worker> Worker::Start(const WorkerLimits &limits, std::vector<int> keep,
                                      const WorkerTask &task, std::function<void(int)> onProgress,
                                      std::string *error)
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        *error = SystemText(errno);
        return nullptr;
    }
    const pid_t parent = getpid();
    const pid_t process = fork();
    if (process == 0)
        BeWorker(ends[1], parent, limits, std::move(keep), task);
    const int failure = errno;
    close(ends[1]);
    if (process < 0) {
        close(ends[0]);
        *error = SystemText(failure);
        return nullptr;
    }
    std::unique_ptr<Worker> worker(new Worker);
    worker->pipe_ = ends[0];
    worker->process_ = process;
    worker->frames_ = std::make_unique<FrameReader>(std::move(onProgress));
    if (limits.seconds > 0)
        worker->deadline_ = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                               std::chrono::duration<double>(limits.seconds));
    return worker;
}

Worker::~Worker()
{
    if (!end_)
        (void)WaitForProcess();
}

bool Worker::WaitForAny(std::span<Worker *const> workers, int also)
{
    std::optional<Clock::time_point> deadline;
    std::vector<pollfd> ready{{also, POLLIN, 0}}; // poll passes over -1
    for (const Worker *worker : workers) {
        if (worker->deadline_ && (!deadline || *worker->deadline_ < *deadline))
            deadline = worker->deadline_;
        ready.push_back({worker->pipe_, POLLIN, 0});
    }
    while (std::ranges::none_of(workers, &Worker::HasEnded) && ready[0].revents == 0) {
        int timeout = -1;
        if (deadline) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(*deadline - Clock::now()).count();
            timeout = static_cast<int>(std::clamp<int64_t>(left, 0, INT_MAX));
        }
        const int count = poll(ready.data(), ready.size(), timeout);
        for (size_t i = 0; i < workers.size(); ++i) {
            Worker &worker = *workers[i];
            if (count > 0 && ready[i + 1].revents != 0)
                worker.Listen();
            // Also of one that never stops talking.
            if (!worker.HasEnded() && worker.deadline_ && *worker.deadline_ <= Clock::now())
                worker.Conclude(WorkerFate::OutOfTime, "");
        }
    }
    return ready[0].revents != 0;
}

void Worker::Listen()
{
    char buffer[1 << 16];
    const ssize_t got = read(pipe_, buffer, sizeof buffer);
    if (got == 0 || (got < 0 && errno != EINTR))
        Conclude(WorkerFate::Finished, "");
    else if (got > 0 && !frames_->Add({buffer, static_cast<size_t>(got)}))
        Conclude(WorkerFate::Crashed, "its answer made no sense");
}

// fate is what it looks like from here; how the process ended has its say.
void Worker::Conclude(WorkerFate fate, const std::string &crash)
{
    rusage usage = {};
    const int status = WaitForProcess(&usage);
    const int signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    if (fate == WorkerFate::OutOfTime)
        end_ = {fate, "", ""};
    else if (frames_->outOfMemory)
        end_ = {WorkerFate::OutOfMemory, "", ""};
    else if (fate == WorkerFate::Crashed)
        end_ = {fate, "", crash};
    else if (signal == SIGXCPU || (signal == SIGKILL && HasTakenAllTime(usage)))
        end_ = {WorkerFate::OutOfProcessorTime, "", ""};
    else if (signal == SIGKILL)
        end_ = {WorkerFate::Killed, "", ""};
    else if (signal != 0)
        end_ = {WorkerFate::Crashed, "", fmt::format("signal {} ({})", signal, strsignal(signal))};
    else if (!frames_->answer || WEXITSTATUS(status) != 0)
        end_ = {WorkerFate::Crashed, "", fmt::format("ended with {} and no answer", WEXITSTATUS(status))};
    else
        end_ = {fate, std::move(*frames_->answer), ""};
}

int Worker::WaitForProcess(rusage *usage)
{
    close(pipe_);
    // Also when it closed its end: one that goes on without it would be waited for in vain. How a process that
    // is ending already ended does not change, so what is first tells our end from the system's.
    kill(process_, SIGTERM);
    kill(process_, SIGKILL);
    int status = 0;
    while (wait4(process_, &status, 0, usage) < 0 && errno == EINTR)
        continue;
    return status;
}

bool IsOutputLimit(const WorkerLimits &limits, int error)
{
    const int64_t most = limits.output.value_or(0);
    return error == EFBIG && most > 0 && LimitOf(RLIMIT_FSIZE) > static_cast<rlim_t>(most);
}

bool IsCallersFileLimit(int error)
{
    return error == EFBIG && LimitOf(RLIMIT_FSIZE) != RLIM_INFINITY;
}

// A worker begins with what this process has; the limit that leaves it less is the one that it meets.
std::string_view CallersMemoryLimit(const WorkerLimits &limits)
{
    const rlim_t data = LimitOf(RLIMIT_DATA), space = LimitOf(RLIMIT_AS);
    const rlim_t own = limits.memory > 0 ? static_cast<rlim_t>(limits.memory) : RLIM_INFINITY;
    // The file counts pages: of the address space, in memory, shared, code, not used, data.
    uint64_t pages[6] = {};
    std::ifstream("/proc/self/statm") >> pages[0] >> pages[1] >> pages[2] >> pages[3] >> pages[4] >> pages[5];
    const rlim_t notData =
        (pages[0] - std::min(pages[0], pages[5])) * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
    const rlim_t left = space == RLIM_INFINITY ? space : space - std::min(space, notData);
    if (left < std::min(data, own))
        return "ulimit -v";
    return data < own ? "ulimit -d" : "";
}

size_t MostWorkers(size_t descriptorsEach)
{
    constexpr size_t kOthers = 6; // a manifest, and what is opened for a moment
    const rlim_t limit = LimitOf(RLIMIT_NOFILE);
    const size_t taken = OpenDescriptors().size() + kOthers;
    return limit <= taken ? 1 : std::max<size_t>((limit - taken) / descriptorsEach, 1);
}

} // namespace vxhost
