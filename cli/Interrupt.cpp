#include "cli/Interrupt.h"

#include "cli/Status.h"

#include <climits>
#include <csignal>
#include <cstring>
#include <unistd.h>

namespace vxhost
{

namespace
{

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};

// Read by the handler. The path is whole whenever the flag is set.
char g_path[PATH_MAX];
volatile std::sig_atomic_t g_hasPath = 0;

extern "C" void EndInterrupted(int)
{
    if (g_hasPath != 0)
        unlink(g_path);
    _exit(static_cast<int>(Status::Interrupted));
}

void SetHandler(void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    sigemptyset(&action.sa_mask);
    for (const int signal : kSignals) {
        struct sigaction present = {};
        sigaction(signal, nullptr, &present);
        if (present.sa_handler != SIG_IGN) // nohup, or a shell's background job: keep it so
            sigaction(signal, &action, nullptr);
    }
}

} // namespace

void CatchInterrupts()
{
    SetHandler(EndInterrupted);
}

void ForgetInterrupts()
{
    SetHandler(SIG_DFL);
}

void RemoveWhenInterrupted(const std::string &path)
{
    g_hasPath = 0;
    if (path.empty() || path.size() >= sizeof g_path)
        return;
    std::memcpy(g_path, path.c_str(), path.size() + 1);
    g_hasPath = 1;
}

} // namespace vxhost
