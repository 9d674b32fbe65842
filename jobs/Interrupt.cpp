#include "jobs/Interrupt.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <set>
#include <unistd.h>

namespace vxhost
{

namespace
{

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};

// Read by the handler, changed only while no handler can run. Never freed: a handler may run until the very end.
std::set<std::string> &Paths()
{
    static auto *const paths = new std::set<std::string>;
    return *paths;
}

int g_exitStatus = 0;
volatile sig_atomic_t g_heldSignal = 0;
int g_tellingPipe = -1; // -1: signals are not held

extern "C" void EndInterrupted(int)
{
    for (const std::string &path : Paths())
        unlink(path.c_str());
    _exit(g_exitStatus);
}

extern "C" void TellInterrupt(int signal)
{
    if (g_heldSignal != 0)
        EndInterrupted(signal);
    const int error = errno;
    g_heldSignal = signal;
    (void)!write(g_tellingPipe, "", 1);
    errno = error;
}

sigset_t AllSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : kSignals)
        sigaddset(&signals, signal);
    return signals;
}

class SignalsHeldBack
{
  public:
    SignalsHeldBack()
    {
        const sigset_t signals = AllSignals();
        sigprocmask(SIG_BLOCK, &signals, &before_);
    }
    SignalsHeldBack(const SignalsHeldBack &) = delete;
    SignalsHeldBack &operator=(const SignalsHeldBack &) = delete;
    ~SignalsHeldBack() { sigprocmask(SIG_SETMASK, &before_, nullptr); }

  private:
    sigset_t before_;
};

void SetHandler(void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_mask = AllSignals();
    for (const int signal : kSignals) {
        struct sigaction present = {};
        sigaction(signal, nullptr, &present);
        if (present.sa_handler != SIG_IGN) // nohup, or a shell's background job: keep it so
            sigaction(signal, &action, nullptr);
    }
}

} // namespace

void CatchInterrupts(int exitStatus)
{
    g_exitStatus = exitStatus;
    (void)Paths(); // made here, not in the handler
    SetHandler(EndInterrupted);
}

void ForgetInterrupts()
{
    SetHandler(g_tellingPipe >= 0 ? SIG_IGN : SIG_DFL);
}

int HoldInterrupts()
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0)
        return -1;
    g_tellingPipe = ends[1];
    SetHandler(TellInterrupt);
    return ends[0];
}

int HeldInterrupt()
{
    return g_heldSignal;
}

void RemoveWhenInterrupted(const std::string &path)
{
    const SignalsHeldBack heldBack;
    Paths().insert(path);
}

void KeepWhenInterrupted(const std::string &path)
{
    const SignalsHeldBack heldBack;
    Paths().erase(path);
}

} // namespace vxhost
