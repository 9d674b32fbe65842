#include "cli/viewer/Browser.h"

#include "cli/options/CommonOptions.h"

#include <fmt/format.h>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vxhost
{

namespace
{

// Ctrl-C is for us, not for the browser, and what browsers print is not for the user.
[[noreturn]] void RunBrowser(const std::string &address)
{
    (void)setsid();
    const int nothing = open("/dev/null", O_RDWR);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        (void)dup2(nothing, stream);
    std::signal(SIGPIPE, SIG_DFL);
    std::signal(SIGXFSZ, SIG_DFL);
    execl("/bin/sh", "sh", "-c", "set -f; exec ${BROWSER:-xdg-open} \"$1\"", "sh", address.c_str(), nullptr);
    _exit(127);
}

} // namespace

Browser::Browser(const std::string &address) : process_(fork())
{
    if (process_ == 0)
        RunBrowser(address);
    if (process_ < 0)
        throw EarlyEnd(Status::InputFailed,
                       fmt::format("no process for a browser, {}: try again later", SystemText(errno)));
    handle_.Take(static_cast<int>(syscall(SYS_pidfd_open, process_, 0)));
}

bool Browser::HasFailed()
{
    int status = 0;
    (void)waitpid(process_, &status, 0);
    process_ = -1;
    return status != 0;
}

} // namespace vxhost
