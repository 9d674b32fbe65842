#include "library/interface/Helper.h"

#include "host/FileReading.h"
#include "host/reading/Utf8.h"
#include "library/interface/Calls.h"
#include "library/pipe/Answer.h"
#include "library/pipe/WorkerFrames.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <memory>
#include <new>
#include <poll.h>
#include <spawn.h>
#include <string_view>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace vxhost
{

namespace
{

// Above the helper's own descriptors, so that none of ours is in their way.
constexpr int kFirstDescriptor = kHelperAnswer + 1;

[[noreturn]] void ThrowLack(std::string_view what, int error)
{
    if (error == ENOMEM)
        throw std::bad_alloc();
    throw CallError(VX_NOT_ISOLATED, std::string("no ")
                                         .append(what)
                                         .append(" for the helper program, ")
                                         .append(SystemText(error))
                                         .append(": free some, and call again"));
}

// Duplicates a descriptor to a number that none of the helper's has: where the program has closed its standard streams, the first
// number may be one of theirs.
void Keep(const Descriptor &opened, Descriptor *kept)
{
    kept->Take(opened.Get() < 0 ? -1 : fcntl(opened.Get(), F_DUPFD_CLOEXEC, kFirstDescriptor));
    if (kept->Get() < 0)
        ThrowLack("descriptor", errno);
}

// A program that may write no longer file is ended by the system if it tries.
void CheckFileLimit(size_t size)
{
    rlimit limit = {};
    if (getrlimit(RLIMIT_FSIZE, &limit) == 0 && limit.rlim_cur < size)
        throw CallError(VX_LIMIT, "the drawing and what belongs to it have " + std::to_string(size) +
                                      " bytes, and ulimit -f allows " + std::to_string(limit.rlim_cur) +
                                      ": allow more where the program is started");
}

// Makes a file in memory with these bytes.
void KeepBytes(std::span<const std::byte> bytes, Descriptor *kept)
{
    CheckFileLimit(bytes.size());
    Keep(Descriptor(memfd_create("vx", MFD_CLOEXEC)), kept);
    while (!bytes.empty()) {
        const ssize_t written = write(kept->Get(), bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR)
            throw std::bad_alloc(); // there is no other reason
        bytes = bytes.subspan(written < 0 ? 0 : static_cast<size_t>(written));
    }
    (void)lseek(kept->Get(), 0, SEEK_SET);
}

void KeepDrawing(const HelperTask &task, Descriptor *kept)
{
    if (task.path.empty())
        return KeepBytes(task.bytes, kept);
    std::string error;
    const Descriptor file(OpenToRead(task.path, FileKinds::Regular, &error));
    if (file.Get() < 0)
        throw CallError(VX_CANNOT_READ, Printable(task.path) + ": " + error);
    Keep(file, kept);
}

struct Pipe {
    Descriptor ours;
    std::optional<Descriptor> helpers;
};

void Open(Pipe *pipe)
{
    int ends[2] = {-1, -1};
    (void)pipe2(ends, O_CLOEXEC);
    const Descriptor reader(ends[0]), writer(ends[1]);
    Keep(reader, &pipe->ours);
    Keep(writer, &pipe->helpers.emplace());
}

// The helper that was installed with the file that this code is in, wherever that was moved to.
std::string InstalledHelper()
{
    Dl_info info = {};
    if (dladdr(reinterpret_cast<const void *>(&RunHelper), &info) == 0 || info.dli_fname == nullptr)
        throw CallError(VX_NOT_ISOLATED, "libvx does not find its own place: name the helper program");
    const std::unique_ptr<char, decltype(&std::free)> real(realpath(info.dli_fname, nullptr), std::free);
    std::string place = real == nullptr ? info.dli_fname : real.get();
    place.resize(place.find_last_of('/') + 1);
    return place.append(VX_HELPER_PLACE);
}

// Hands on what the loader, the library that lists fonts and the sanitizers look at. All else may be secret, and a drawing that took over
// a worker could look at it.
std::vector<char *> EnvironmentOfHelper()
{
    constexpr std::array<std::string_view, 10> kHandedOn = {
        "LD_LIBRARY_PATH=", "HOME=",         "XDG_",          "FONTCONFIG_", "FC_", "LANG", "LC_",
        "ASAN_OPTIONS=",    "TSAN_OPTIONS=", "UBSAN_OPTIONS="};
    std::vector<char *> kept;
    for (char **variable = environ; variable != nullptr && *variable != nullptr; ++variable) {
        const auto begins = [&](std::string_view name) {
            return std::string_view(*variable).starts_with(name);
        };
        if (std::ranges::any_of(kHandedOn, begins))
            kept.push_back(*variable);
    }
    kept.push_back(nullptr);
    return kept;
}

class SpawnActions
{
  public:
    SpawnActions() { Check(posix_spawn_file_actions_init(&actions_)); }
    SpawnActions(const SpawnActions &) = delete;
    SpawnActions &operator=(const SpawnActions &) = delete;
    ~SpawnActions() { posix_spawn_file_actions_destroy(&actions_); }

    void Give(const Descriptor &descriptor, int as)
    {
        Check(posix_spawn_file_actions_adddup2(&actions_, descriptor.Get(), as));
    }
    // Standard error leads nowhere, and nothing else is open.
    void CloseTheRest()
    {
        Check(posix_spawn_file_actions_addopen(&actions_, STDERR_FILENO, "/dev/null", O_WRONLY, 0));
        Check(posix_spawn_file_actions_addclosefrom_np(&actions_, kFirstDescriptor));
    }
    const posix_spawn_file_actions_t *Get() const { return &actions_; }

  private:
    static void Check(int error)
    {
        if (error != 0)
            throw std::bad_alloc();
    }

    posix_spawn_file_actions_t actions_ = {};
};

// Signals as a program has them that was started by a shell, in a group of its own: Ctrl-C is for its caller.
class SpawnAttributes
{
  public:
    SpawnAttributes()
    {
        sigset_t all, none;
        sigfillset(&all);
        sigemptyset(&none);
        if (posix_spawnattr_init(&attributes_) != 0)
            throw std::bad_alloc();
        posix_spawnattr_setsigdefault(&attributes_, &all);
        posix_spawnattr_setsigmask(&attributes_, &none);
        posix_spawnattr_setpgroup(&attributes_, 0);
        posix_spawnattr_setflags(&attributes_,
                                 POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETPGROUP);
    }
    SpawnAttributes(const SpawnAttributes &) = delete;
    SpawnAttributes &operator=(const SpawnAttributes &) = delete;
    ~SpawnAttributes() { posix_spawnattr_destroy(&attributes_); }
    const posix_spawnattr_t *Get() const { return &attributes_; }

  private:
    posix_spawnattr_t attributes_ = {};
};

// The process ends with this object, at the latest.
class Process
{
  public:
    Process(const std::string &program, const SpawnActions &actions)
    {
        const SpawnAttributes attributes;
        const std::vector<char *> environment = EnvironmentOfHelper();
        std::string name = program;
        char *const arguments[] = {name.data(), nullptr};
        const int error = posix_spawn(&number_, program.c_str(), actions.Get(), attributes.Get(), arguments,
                                      environment.data());
        if (error == ENOMEM)
            throw std::bad_alloc();
        if (error == EAGAIN)
            ThrowLack("process", error);
        if (error != 0)
            throw CallError(VX_NOT_ISOLATED, "the helper program " + Printable(program) +
                                                 " cannot be started, " + SystemText(error) +
                                                 ": install vx whole, or name its place");
        const auto handle = static_cast<int>(syscall(SYS_pidfd_open, number_, 0));
        if (handle >= 0)
            handle_.Take(handle);
    }
    Process(const Process &) = delete;
    Process &operator=(const Process &) = delete;
    ~Process() { (void)End(); }

    // Returns how it ended; none: the program that called us waits for all of its children, and this one is gone.
    std::optional<int> End()
    {
        if (number_ < 0)
            return std::nullopt;
        // It is killed by its handle: where the program ignores SIGCHLD the number may be somebody else's by now. An end that has begun does
        // not change.
        if (handle_.Get() >= 0)
            (void)syscall(SYS_pidfd_send_signal, handle_.Get(), SIGKILL, nullptr, 0);
        else
            (void)kill(number_, SIGKILL);
        int status = 0;
        pid_t waited = 0;
        while ((waited = waitpid(number_, &status, 0)) < 0 && errno == EINTR)
            continue;
        const bool isOurs = waited == number_;
        number_ = -1;
        return isOurs ? std::optional(status) : std::nullopt;
    }

  private:
    pid_t number_ = -1;
    Descriptor handle_; // means this process, and no later one of its number
};

// Reads from a helper until both pipes have come to their end.
class Listener
{
  public:
    Listener(const HelperTask &task, int output, int answer)
        : task_(task), pipes_{{{output, POLLIN, 0}, {answer, POLLIN, 0}}},
          frames_(kMaxAnswer, [this](int percent) { percent_ = percent; })
    {
        if (task.seconds > 0)
            deadline_ = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                           std::chrono::duration<double>(task.seconds));
    }

    // False: the time is up.
    bool Listen()
    {
        while (pipes_[0].fd >= 0 || pipes_[1].fd >= 0) {
            std::vector<pollfd> ready(pipes_.begin(), pipes_.end());
            const int count = poll(ready.data(), ready.size(), Wait());
            if (deadline_ && *deadline_ <= Clock::now())
                return false;
            // Whatever poll said, if it was interrupted it said nothing.
            if (count > 0 && ready[0].revents != 0)
                TakeOutput();
            if (count > 0 && ready[1].revents != 0)
                TakeAnswer();
            if (task_.onProgress)
                Leave([this] { task_.onProgress(percent_); });
        }
        return true;
    }

    std::optional<std::string> Answer() { return frames_.TakeAnswer(); }

  private:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::milliseconds kBetweenProgress{100};

    int Wait() const
    {
        std::optional<std::chrono::milliseconds> wait;
        if (deadline_)
            wait = std::max(std::chrono::ceil<std::chrono::milliseconds>(*deadline_ - Clock::now()),
                            std::chrono::milliseconds(0));
        if (task_.onProgress)
            wait = std::min(wait.value_or(kBetweenProgress), kBetweenProgress);
        return wait ? static_cast<int>(std::min<int64_t>(wait->count(), INT_MAX)) : -1;
    }

    // Runs a procedure of the caller's, whose time is its own.
    template <typename Action>
    void Leave(const Action &action)
    {
        const Clock::time_point left = Clock::now();
        action();
        if (deadline_)
            *deadline_ += Clock::now() - left;
    }

    // Returns what has come; empty: the pipe has come to its end.
    std::span<const std::byte> Read(pollfd *pipe)
    {
        ssize_t got = 0;
        while ((got = read(pipe->fd, buffer_.data(), buffer_.size())) < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            pipe->fd = -1; // which poll passes over
        return {buffer_.data(), got > 0 ? static_cast<size_t>(got) : 0};
    }

    void TakeOutput()
    {
        const std::span<const std::byte> bytes = Read(&pipes_[0]);
        if (!bytes.empty())
            Leave([&] { task_.onOutput(bytes); });
    }

    void TakeAnswer()
    {
        const std::span<const std::byte> bytes = Read(&pipes_[1]);
        if (!frames_.Add({reinterpret_cast<const char *>(bytes.data()), bytes.size()}))
            pipes_[0].fd = pipes_[1].fd = -1; // it is no helper of ours
    }

    const HelperTask &task_;
    std::array<pollfd, 2> pipes_;
    WorkerFrames frames_;
    int percent_ = 0;
    std::optional<Clock::time_point> deadline_;
    std::array<std::byte, 1 << 16> buffer_;
};

std::string EndText(const std::optional<int> &status)
{
    if (!status)
        return "ended";
    if (WIFSIGNALED(*status)) {
        const char *name = sigabbrev_np(WTERMSIG(*status));
        return std::string("ended by signal ") + (name == nullptr ? "?" : name);
    }
    return "ended with status " + std::to_string(WEXITSTATUS(*status));
}

} // namespace

std::optional<Result> RunHelper(const HelperTask &task)
{
    const std::string program = task.program.empty() ? InstalledHelper() : task.program;
    IsolatedRequest request = task.request;
    request.version = VX_VERSION;
    request.caller = getpid();
    const std::optional<std::string> words = WriteRequest(request);
    if (!words)
        throw CallError(VX_WRONG_ARGUMENT,
                        "an option, a path or a name has more than 4096 bytes: give a shorter one");
    Descriptor drawing, asked;
    KeepDrawing(task, &drawing);
    KeepBytes(std::as_bytes(std::span(*words)), &asked);
    Pipe output, answer;
    Open(&output);
    Open(&answer);
    SpawnActions actions;
    actions.Give(drawing, STDIN_FILENO);
    actions.Give(*output.helpers, STDOUT_FILENO);
    actions.Give(asked, kHelperRequest);
    actions.Give(*answer.helpers, kHelperAnswer);
    actions.CloseTheRest();
    Process process(program, actions);
    output.helpers.reset();
    answer.helpers.reset();
    const auto listener = std::make_unique<Listener>(task, output.ours.Get(), answer.ours.Get());
    if (!listener->Listen())
        return std::nullopt;
    const std::optional<int> status = process.End();
    const std::optional<std::string> bytes = listener->Answer();
    std::optional<Result> result = bytes ? ReadResult(*bytes) : std::nullopt;
    if (!result)
        throw CallError(VX_FAILED, "the helper program " + Printable(program) + " " + EndText(status) +
                                       " and gave no answer: install the one of this libvx, or report it");
    return result;
}

} // namespace vxhost
