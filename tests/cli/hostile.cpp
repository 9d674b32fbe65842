// A plug-in that does what no plug-in should, so that the command's guards can be seen at work. VX_HOSTILE says what.
#include <vx/HostCall.h>
#include <vx/Procs.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <mutex>
#include <string>
#include <string_view>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

namespace
{

constexpr int32_t kBlock = 1 << 20;

void LoopForEver()
{
    volatile bool goesOn = true; // volatile: a loop that does nothing may otherwise be left out
    while (goesOn)
        continue;
}

void TouchNewMemoryForEver()
{
    for (;;)
        std::memset(::operator new(kBlock), 1, kBlock);
}

int16_t TakeAllHostMemory(const MemoryProcs *memory)
{
    while (void *block = memory->allocate(kBlock, memory->refcon))
        std::memset(block, 1, kBlock);
    return kVXOutOfMemory;
}

// Makes a worker that no longer listens and does not end.
void CloseAndLoop()
{
    constexpr int kMaxDescriptor = 1024;
    for (int descriptor = 3; descriptor < kMaxDescriptor; ++descriptor)
        close(descriptor);
    LoopForEver();
}

// Holds notes for the test. A worker has no descriptor to write them to, so they go through memory that it shares with its
// parent, in which a thread writes them to a file.
struct Notebook {
    std::atomic<size_t> length;
    char text[1 << 16];
};
Notebook *g_notebook = nullptr;

void HandOnNotes()
{
    static std::mutex mutex;
    static size_t handedOn = 0;
    const char *number = std::getenv("VX_HOSTILE_NOTEBOOK");
    const std::lock_guard lock(mutex);
    // Room that was taken and is not written to yet holds zeros.
    const size_t length = strnlen(g_notebook->text + handedOn, sizeof g_notebook->text - handedOn);
    if (number != nullptr && length > 0 && write(std::atoi(number), g_notebook->text + handedOn, length) > 0)
        handedOn += length;
}

std::atomic<bool> g_isReading = false;
std::atomic<bool> g_isClosed = false;
std::thread *g_reader = nullptr;

// Runs when the program loads this file, which is before there is a worker.
__attribute__((constructor)) void OpenNotebook()
{
    g_notebook = static_cast<Notebook *>(
        mmap(nullptr, sizeof *g_notebook, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    g_reader = new std::thread([] {
        for (g_isReading = true; !g_isClosed; usleep(2000))
            HandOnNotes();
    });
    // A thread that is about to start may hold a lock of a sanitizer's, which a worker forked then would wait for in vain.
    while (!g_isReading)
        usleep(100);
}

// Runs when the program lets go of this file.
__attribute__((destructor)) void CloseNotebook()
{
    g_isClosed = true;
    g_reader->join();
    delete g_reader;
    HandOnNotes();
}

// Takes room before it writes, as several workers may write at a time.
void NoteLine(const char *what, unsigned long long value)
{
    char line[128];
    const auto size = static_cast<size_t>(
        std::snprintf(line, sizeof line, what[0] == 0 ? "%s%llu\n" : "%s %llu\n", what, value));
    const size_t at = g_notebook->length.fetch_add(size);
    if (at + size <= sizeof g_notebook->text)
        std::memcpy(g_notebook->text + at, line, size);
}

// Notes "what 0" or "what" and the errno.
void Note(const char *what, long outcome)
{
    NoteLine(what, outcome < 0 ? static_cast<unsigned long long>(errno) : 0);
}

void NoteLimit(const char *what, __rlimit_resource resource)
{
    rlimit limit = {};
    const int outcome = getrlimit(resource, &limit);
    NoteLine(what, outcome < 0 ? ~0ULL : static_cast<unsigned long long>(limit.rlim_max));
}

void NoteOpening(const char *what, const char *variable, int flags)
{
    const char *path = std::getenv(variable);
    Note(what, path == nullptr ? -1 : open(path, flags, 0600));
}

// Tries what code that took over the worker would try first.
void ReachOut()
{
    NoteOpening("read", "VX_HOSTILE_READ", O_RDONLY);
    NoteOpening("write", "VX_HOSTILE_WRITE", O_WRONLY);
    NoteOpening("create", "VX_HOSTILE_CREATE", O_WRONLY | O_CREAT);
    NoteOpening("font", "VX_HOSTILE_FONT", O_RDONLY);
    Note("internet", socket(AF_INET, SOCK_STREAM, 0));
    Note("local", socket(AF_UNIX, SOCK_STREAM, 0));
    Note("signal", kill(1, 0));
    NoteLimit("core", RLIMIT_CORE);
    NoteLimit("processes", RLIMIT_NPROC);
    NoteLimit("files", RLIMIT_NOFILE);
    NoteLimit("size", RLIMIT_FSIZE);
    Note("self", syscall(SYS_tgkill, getpid(), syscall(SYS_gettid), 0));
    const pid_t child = static_cast<pid_t>(syscall(SYS_fork));
    if (child == 0)
        _exit(0);
    Note("process", child);
    char program[] = "/bin/true";
    char *const words[] = {program, nullptr};
    Note("program", execv(program, words));
}

// Tries everything else that such code would, by the numbers of the calls: the C library might make others in their place.
void Probe()
{
    struct Call {
        const char *name;
        long number;
        long arguments[5];
    };
    const long parent = getppid(), self = getpid();
    const auto shadow = reinterpret_cast<long>("/etc/shadow");
    struct stat status;
    const Call calls[] = {
        {"signal-0-to-parent", SYS_kill, {parent, 0}},
        {"thread-signal-to-parent", SYS_tgkill, {parent, parent, 0}},
        {"pidfd_open", SYS_pidfd_open, {parent, 0}},
        {"pidfd_getfd", SYS_pidfd_getfd, {0, 0, 0}},
        {"ptrace", SYS_ptrace, {16, parent, 0, 0}},
        {"process_vm_readv", SYS_process_vm_readv, {parent, 0, 0, 0, 0}},
        {"prlimit-of-parent", SYS_prlimit64, {parent, RLIMIT_NOFILE, 0, 0}},
        {"open-by-path", SYS_openat, {AT_FDCWD, shadow, O_PATH}},
        {"open-unnamed", SYS_openat, {AT_FDCWD, reinterpret_cast<long>("/tmp"), O_TMPFILE | O_RDWR, 0600}},
        {"open-unnamed-to-read", SYS_openat, {AT_FDCWD, reinterpret_cast<long>("/tmp"), O_TMPFILE, 0600}},
        {"openat2", SYS_openat2, {AT_FDCWD, shadow, 0, 0}},
        {"list-folder", SYS_getdents64, {0, 0, 0}},
        {"readlink", SYS_readlinkat, {AT_FDCWD, reinterpret_cast<long>("/proc/self/exe"), 0, 0}},
        {"access", SYS_faccessat, {AT_FDCWD, shadow, R_OK}},
        {"unlink", SYS_unlinkat, {AT_FDCWD, shadow, 0}},
        {"chmod", SYS_fchmodat, {AT_FDCWD, shadow, 0600}},
        {"times", SYS_utimensat, {AT_FDCWD, shadow, 0, 0}},
        {"shared-memory", SYS_mmap, {0, 4096, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1}},
        {"shared-memory-checked", SYS_mmap, {0, 4096, PROT_READ, MAP_SHARED_VALIDATE | MAP_ANONYMOUS, -1}},
        {"system-v-memory", SYS_shmget, {0, 4096, 01600}},
        {"memfd", SYS_memfd_create, {reinterpret_cast<long>("x"), 0}},
        {"code", SYS_mmap, {0, 4096, PROT_READ | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1}},
        {"code-later", SYS_mprotect, {reinterpret_cast<long>(&status) & ~4095L, 4096, 7}},
        {"socketpair", SYS_socketpair, {AF_UNIX, SOCK_STREAM, 0, 0}},
        {"clone", SYS_clone, {SIGCHLD, 0, 0, 0, 0}},
        {"clone3", SYS_clone3, {0, 0}},
        {"program-by-descriptor", SYS_execveat, {0, reinterpret_cast<long>(""), 0, 0, AT_EMPTY_PATH}},
        {"unshare", SYS_unshare, {0x10000000}},
        {"mount", SYS_mount, {0, 0, 0, 0, 0}},
        {"io_uring", SYS_io_uring_setup, {1, 0}},
        {"bpf", SYS_bpf, {0, 0, 0}},
        {"perf", SYS_perf_event_open, {0, 0, 0, 0, 0}},
        {"userfaultfd", SYS_userfaultfd, {0}},
        {"keys", SYS_keyctl, {0, 0, 0, 0, 0}},
        {"core-dumps", SYS_prctl, {4, 1, 0, 0, 0}},
        {"terminal", SYS_ioctl, {2, 0x5412, 0}},
        {"session", SYS_setsid, {}},
        {"owner-of-signals", SYS_fcntl, {2, F_SETOWN, parent}},
        {"locks", SYS_fcntl, {2, F_SETLK, 0}},
        {"flags", SYS_fcntl, {2, F_SETFL, O_NONBLOCK}},
        {"timer", SYS_timer_create, {0, 0, 0}},
        {"inotify", SYS_inotify_init1, {0}},
        {"copy", SYS_copy_file_range, {0, 0, 0, 0, 0}},
        {"user", SYS_setuid, {65534}},
        {"seccomp", SYS_seccomp, {0, 0, 0}},
        // The worker needs these, or they cannot be told from what it needs:
        {"memory", SYS_mmap, {0, 4096, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1}},
        {"existence-and-size", SYS_newfstatat, {AT_FDCWD, shadow, reinterpret_cast<long>(&status), 0}},
        {"thread-signal-to-itself", SYS_tgkill, {self, self, 0}},
    };
    for (const auto &[name, number, with] : calls)
        Note(name, syscall(number, with[0], with[1], with[2], with[3], with[4], 0L));
    char byte = 0;
    Note("input", read(STDIN_FILENO, &byte, 1) == 0 ? 0 : -1);
    Note("output", write(STDOUT_FILENO, "forged\n", 7));
    constexpr off_t kTooMuch = off_t{6} << 30;
    for (int descriptor = 0; descriptor < 1024; ++descriptor) {
        if (fstat(descriptor, &status) != 0)
            continue;
        const bool isFile = S_ISREG(status.st_mode);
        NoteLine(isFile                     ? "is-file"
                 : S_ISFIFO(status.st_mode) ? "is-pipe"
                 : S_ISCHR(status.st_mode)  ? "is-device"
                                            : "is-other",
                 static_cast<unsigned long long>(descriptor));
        if (!isFile)
            continue;
        Note("set-room-aside", fallocate(descriptor, FALLOC_FL_KEEP_SIZE, 0, kTooMuch));
        Note("take-room", fallocate(descriptor, 0, 0, kTooMuch));
        Note("lengthen", ftruncate(descriptor, kTooMuch));
    }
}

// Writes an answer in the worker's stead. It goes to all descriptors, as nobody says which of them is the pipe.
[[noreturn]] void Answer(std::string_view bytes)
{
    constexpr int kDescriptors = 256;
    for (int descriptor = STDERR_FILENO + 1; descriptor < kDescriptors; ++descriptor) {
        if (write(descriptor, bytes.data(), bytes.size()) < 0)
            continue;
    }
    _exit(0);
}

// A whole frame of lists in lists, each of which says that it has one item: a reader that goes down with them needs a stack.
std::string DeepAnswer()
{
    constexpr uint64_t kDepth = 300000;
    std::string frame = "a";
    frame.append(reinterpret_cast<const char *>(&kDepth), sizeof kDepth);
    return frame.append(kDepth, '\x81');
}

// Draws more than any device keeps in memory, and does not end: whoever waits for the note finds the worker half way.
void ScribbleForEver(const HostCallRecord *record)
{
    constexpr int kFirstLines = 200000;
    constexpr Fixed kWidth = 72 * 65536;
    const auto moveTo = reinterpret_cast<ZRKMoveToProc>(record->procs->entry[kZRKMoveTo]);
    const auto lineTo = reinterpret_cast<ZRKLineToProc>(record->procs->entry[kZRKLineTo]);
    const auto stroke = reinterpret_cast<ZRKPathProc>(record->procs->entry[kZRKStroke]);
    for (uint32_t line = 1;; ++line) {
        const FixedPoint from = {0, static_cast<Fixed>(line * 7919 % kWidth)};
        const FixedPoint to = {kWidth, static_cast<Fixed>(line * 104729 % kWidth)};
        moveTo(record->drawing, &from);
        lineTo(record->drawing, &to);
        stroke(record->drawing);
        if (line == kFirstLines)
            Note("drawn", 0);
    }
}

int16_t FindNothing(HostCallRecord *record)
{
    const Fixed box[] = {0, 0, 72 * 65536, 72 * 65536};
    std::memcpy(record->boundingBox, box, sizeof box);
    return kVXOk;
}

int16_t Scribble(int32_t selector, HostCallRecord *record)
{
    if (selector == kVXParse)
        ScribbleForEver(record);
    return FindNothing(record);
}

// Makes a picture by three calls.
int16_t Nap(HostCallRecord *record)
{
    usleep(500000);
    return FindNothing(record);
}

// Waits until somebody writes to the document or cuts it.
int16_t Watch(HostCallRecord *record)
{
    char first = '%';
    while (first == '%') {
        int32_t position = 0, count = 1;
        record->reader->read(record->reader, kVXSetPosition, nullptr, &position);
        record->reader->read(record->reader, kVXReadBytes, &first, &count);
    }
    return FindNothing(record);
}

} // namespace

extern "C" __attribute__((visibility("default"))) void
HostileMain(int32_t selector, HostCallRecord *record, void *data, int16_t *result) __asm__("main");

extern "C" void HostileMain(int32_t selector, HostCallRecord *record, void *data, int16_t *result)
{
    (void)data;
    const char *behaviour = std::getenv("VX_HOSTILE");
    const std::string_view how = behaviour == nullptr ? "" : behaviour;
    NoteLine("", static_cast<unsigned long long>(getpid()));
    *result = -9999;
    if (how == "reach")
        ReachOut();
    if (how == "probe")
        Probe();
    if (how == "crash")
        std::abort();
    if (how == "kill")
        (void)std::raise(SIGKILL);
    if (how == "watch")
        *result = Watch(record);
    if (how == "nap")
        *result = Nap(record);
    if (how == "exit")
        _exit(0);
    if (how == "babble")
        Answer("Q");
    if (how == "boast")
        Answer("a\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF");
    if (how == "forge")
        Answer({"a\2\0\0\0\0\0\0\0\xA1\1", 11});
    if (how == "deep")
        Answer(DeepAnswer());
    if (how == "loop")
        LoopForEver();
    if (how == "close")
        CloseAndLoop();
    if (how == "heap")
        TouchNewMemoryForEver();
    if (how == "scribble")
        *result = Scribble(selector, record);
    if (how == "memory")
        *result = TakeAllHostMemory(record->memory);
}
