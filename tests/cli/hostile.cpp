// A plug-in that does what no plug-in should, so that the command's guards can be seen at work. VX_HOSTILE says what.
#include <vx/HostCall.h>
#include <vx/Procs.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/syscall.h>
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

// A worker that no longer listens and does not end.
void CloseAndLoop()
{
    constexpr int kMaxDescriptor = 1024;
    for (int descriptor = 3; descriptor < kMaxDescriptor; ++descriptor)
        close(descriptor);
    LoopForEver();
}

// A descriptor that the test hands down, since a worker opens no file for writing.
int Notebook()
{
    const char *number = std::getenv("VX_HOSTILE_NOTEBOOK");
    return number == nullptr ? -1 : std::atoi(number);
}

// "what 0" or "what" and the errno.
void Note(const char *what, long outcome)
{
    dprintf(Notebook(), "%s %d\n", what, outcome < 0 ? errno : 0);
}

void NoteLimit(const char *what, __rlimit_resource resource)
{
    rlimit limit = {};
    const int outcome = getrlimit(resource, &limit);
    dprintf(Notebook(), "%s %llu\n", what,
            outcome < 0 ? ~0ULL : static_cast<unsigned long long>(limit.rlim_max));
}

void NoteOpening(const char *what, const char *variable, int flags)
{
    const char *path = std::getenv(variable);
    Note(what, path == nullptr ? -1 : open(path, flags, 0600));
}

// What code that took over the worker would try first.
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

// An answer in the worker's stead. It goes everywhere, as nobody says which descriptor is the pipe.
[[noreturn]] void Answer(std::string_view bytes)
{
    constexpr int kDescriptors = 256;
    for (int descriptor = STDERR_FILENO + 1; descriptor < kDescriptors; ++descriptor) {
        if (write(descriptor, bytes.data(), bytes.size()) < 0)
            continue;
    }
    _exit(0);
}

// More than any device keeps in memory, and no end: whoever waits for the note finds the worker half way.
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

// Three calls make a picture.
int16_t Nap(HostCallRecord *record)
{
    usleep(500000);
    return FindNothing(record);
}

// Until somebody writes to the document or cuts it.
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
    dprintf(Notebook(), "%d\n", static_cast<int>(getpid()));
    *result = -9999;
    if (how == "reach")
        ReachOut();
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
