#include "jobs/Interrupt.h"

#include <csignal>
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

extern "C" void EndInterrupted(int)
{
    for (const std::string &path : Paths())
        unlink(path.c_str());
    _exit(g_exitStatus);
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
    SetHandler(SIG_DFL);
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
