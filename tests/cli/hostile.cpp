// A plug-in that does what no plug-in should, so that the command's guards can be seen at work. VX_HOSTILE says what.
#include <vx/HostCall.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>
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

void TellProcess()
{
    const char *path = std::getenv("VX_HOSTILE_PID");
    if (path == nullptr)
        return;
    if (std::FILE *file = std::fopen(path, "w")) {
        std::fprintf(file, "%d\n", static_cast<int>(getpid()));
        std::fclose(file);
    }
}

} // namespace

extern "C" __attribute__((visibility("default"))) void
HostileMain(int32_t selector, HostCallRecord *record, void *data, int16_t *result) __asm__("main");

extern "C" void HostileMain(int32_t selector, HostCallRecord *record, void *data, int16_t *result)
{
    (void)selector;
    (void)data;
    const char *behaviour = std::getenv("VX_HOSTILE");
    const std::string_view how = behaviour == nullptr ? "" : behaviour;
    TellProcess();
    *result = -9999;
    if (how == "crash")
        std::abort();
    if (how == "exit")
        _exit(0);
    if (how == "loop")
        LoopForEver();
    if (how == "close")
        CloseAndLoop();
    if (how == "heap")
        TouchNewMemoryForEver();
    if (how == "memory")
        *result = TakeAllHostMemory(record->memory);
}
