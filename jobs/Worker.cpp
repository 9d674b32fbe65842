#include "jobs/Worker.h"

#include "jobs/Interrupt.h"
#include "jobs/MallocHandler.h"
#include "jobs/OutputFile.h"
#include "jobs/WorkerHeap.h"
#include "library/OptionValues.h"
#include "library/Options.h"
#include "library/pipe/WorkerFrames.h"

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
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace vxhost
{

namespace
{

namespace fs = std::filesystem;

// The handler of a failed allocation, which takes no argument, finds the pipe here.
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

// Returns the open descriptors of this process, the one by which they are listed among them. None: nothing says which they are.
std::optional<std::vector<int>> OpenDescriptors()
{
    std::vector<int> open;
    std::error_code failure;
    for (fs::directory_iterator at("/proc/self/fd", failure), end; !failure && at != end;
         at.increment(failure))
        open.push_back(ReadInteger(at->path().filename().string()).value_or(-1));
    return failure ? std::nullopt : std::optional(std::move(open));
}

bool CloseByKernel(unsigned first, unsigned last)
{
    return syscall(SYS_close_range, first, last, 0) == 0;
}

// A process that cannot close what it does not need does not become a worker.
bool CanCloseRange()
{
    return CloseByKernel(~0U, ~0U) || OpenDescriptors();
}

// A kernel without the call has the descriptors closed one by one.
void CloseRange(unsigned first, unsigned last)
{
    if (CloseByKernel(first, last))
        return;
    const std::optional<std::vector<int>> open = OpenDescriptors();
    if (!open)
        _exit(1);
    for (const int descriptor : *open) {
        if (descriptor >= static_cast<int>(first) && static_cast<unsigned>(descriptor) <= last)
            close(descriptor);
    }
}

// A sanitizer tells there what it found.
constexpr bool kKeepsStandardError = !MemoryLimitWorks();

// Leaves the process nothing but what its work needs: not what this program opened for other work, nor what it was itself
// started with. The standard streams that are not kept lead nowhere.
void CloseAllBut(std::vector<int> keep)
{
    std::ranges::sort(keep);
    unsigned first = STDERR_FILENO + 1;
    for (const int descriptor : keep) {
        const auto kept = static_cast<unsigned>(descriptor);
        if (kept < first)
            continue;
        if (kept > first)
            CloseRange(first, kept - 1);
        first = kept + 1;
    }
    CloseRange(first, ~0U);
    // Now there is room for one more, however few this program may have.
    const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        const bool isKept =
            std::ranges::find(keep, stream) != keep.end() || (stream == STDERR_FILENO && kKeepsStandardError);
        if (!isKept && (nowhere < 0 || dup2(nowhere, stream) < 0))
            _exit(1);
    }
    if (nowhere > STDERR_FILENO)
        close(nowhere);
}

// Runs the task. A library may also tell of its lack of memory by itself.
std::string Answer(const WorkerTask &task, WorkerLink *link)
{
    try {
        return task.run(*link);
    } catch (const std::bad_alloc &) {
        EndOutOfMemory();
    }
}

// noexcept: an exception that gets here is a bug, and ends as a crash that the parent reports.
[[noreturn]] void BeWorker(int pipe, pid_t parent, const WorkerLimits &limits,
                           const WorkerTask &task) noexcept
{
    ForgetInterrupts();
    std::vector<int> keep = task.descriptors;
    keep.push_back(pipe);
    CloseAllBut(std::move(keep));
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent)
        _exit(0);
    g_workerPipe = pipe;
    if (task.touchesMuchMemory && MemoryLimitWorks())
        PrepareHeap(limits.memory);
    LimitMemory(limits.memory);
    Lower(RLIMIT_FSIZE, limits.output.value_or(0));
    std::signal(SIGXFSZ, SIG_IGN); // a file that may not grow is an error of write

    WorkerLink link(pipe);
    const std::string answer = Answer(task, &link);
    const bool told = WriteAll(pipe, AnswerFrameHead(answer.size())) && WriteAll(pipe, answer);
    // exit would run what the parent registered for its own end.
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

Worker::Worker() = default;

std::unique_ptr<Worker> Worker::Start(const WorkerLimits &limits, const WorkerTask &task, int *error)
{
    if (!CanCloseRange()) {
        *error = ENOSYS;
        return nullptr;
    }
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        *error = errno;
        return nullptr;
    }
    const pid_t parent = getpid();
    const pid_t process = fork();
    if (process == 0)
        BeWorker(ends[1], parent, limits, task);
    const int failure = errno;
    close(ends[1]);
    if (process < 0) {
        close(ends[0]);
        *error = failure;
        return nullptr;
    }
    std::unique_ptr<Worker> worker(new Worker);
    worker->pipe_ = ends[0];
    worker->process_ = process;
    worker->frames_ = std::make_unique<WorkerFrames>(task.mostAnswer, task.onProgress);
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

bool Worker::WaitForAny(std::span<Worker *const> workers, std::initializer_list<int> others)
{
    std::optional<Clock::time_point> deadline;
    std::vector<pollfd> ready;
    for (const int other : others)
        ready.push_back({other, POLLIN, 0}); // poll passes over -1
    for (const Worker *worker : workers) {
        if (worker->deadline_ && (!deadline || *worker->deadline_ < *deadline))
            deadline = worker->deadline_;
        ready.push_back({worker->pipe_, POLLIN, 0});
    }
    const auto isOtherReady = [&] {
        return std::ranges::any_of(std::span(ready).first(others.size()), &pollfd::revents);
    };
    while (std::ranges::none_of(workers, &Worker::HasEnded) && !isOtherReady()) {
        int timeout = -1;
        if (deadline) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(*deadline - Clock::now()).count();
            timeout = static_cast<int>(std::clamp<int64_t>(left, 0, INT_MAX));
        }
        const int count = poll(ready.data(), ready.size(), timeout);
        for (size_t i = 0; i < workers.size(); ++i) {
            Worker &worker = *workers[i];
            if (count > 0 && ready[others.size() + i].revents != 0)
                worker.Listen();
            // The clock is for a worker too that never stops talking. One that is gone was not late: nobody looked for a while.
            if (!worker.HasEnded() && worker.deadline_ && *worker.deadline_ <= Clock::now() &&
                !worker.IsGone())
                worker.Conclude({FaultKind::OutOfTime});
        }
    }
    return isOtherReady();
}

bool Worker::IsGone() const
{
    siginfo_t end = {};
    return waitid(P_PID, static_cast<id_t>(process_), &end, WEXITED | WNOHANG | WNOWAIT) == 0 &&
           end.si_pid != 0;
}

void Worker::Listen()
{
    char buffer[1 << 16];
    const ssize_t got = read(pipe_, buffer, sizeof buffer);
    if (got == 0 || (got < 0 && errno != EINTR))
        Conclude({});
    else if (got > 0 && !frames_->Add({buffer, static_cast<size_t>(got)}))
        Conclude({FaultKind::Crashed, "its answer made no sense"});
}

// seen is what it looks like from here; how the process ended has its say.
void Worker::Conclude(Fault seen)
{
    rusage usage = {};
    const int status = WaitForProcess(&usage);
    const int signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    std::optional<std::string> answer = frames_->TakeAnswer();
    end_.emplace();
    Fault &fault = end_->fault;
    if (frames_->IsOutOfMemory() && seen.kind != FaultKind::OutOfTime)
        fault.kind = FaultKind::OutOfMemory;
    else if (seen)
        fault = std::move(seen);
    else if (signal == SIGXCPU || (signal == SIGKILL && HasTakenAllTime(usage)))
        fault.kind = FaultKind::OutOfProcessorTime;
    else if (signal == SIGKILL)
        fault.kind = FaultKind::Killed;
    else if (signal != 0)
        fault = {FaultKind::Crashed, fmt::format("signal {} ({})", signal, strsignal(signal))};
    else if (!answer || WEXITSTATUS(status) != 0)
        fault = {FaultKind::Crashed, fmt::format("ended with {} and no answer", WEXITSTATUS(status))};
    else
        end_->answer = std::move(*answer);
}

int Worker::WaitForProcess(rusage *usage)
{
    close(pipe_);
    // It is killed also when it closed its end: if it went on without it, it would be waited for in vain. How a process that
    // is ending already ended does not change, so what is first, which it does not ignore, tells our end from the system's.
    kill(process_, SIGUSR1);
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
    const size_t taken = OpenDescriptors().value_or(std::vector<int>()).size() + kOthers;
    return limit <= taken ? 1 : std::max<size_t>((limit - taken) / descriptorsEach, 1);
}

} // namespace vxhost
