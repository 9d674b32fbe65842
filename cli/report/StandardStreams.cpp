#include "cli/report/StandardStreams.h"

#include "jobs/OutputFile.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace vxhost
{

bool PrepareStreams()
{
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    // The order matters: the system gives the lowest number that is free.
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(stream, F_GETFD) >= 0)
            continue;
        // O_PATH makes a descriptor that can be neither read nor written, like a closed one.
        if (open("/dev/null", O_PATH) != stream)
            return false;
    }
    return true;
}

bool PrintResult(std::string_view text, Messages *messages)
{
    if (WriteAll(STDOUT_FILENO, text))
        return true;
    if (errno != EPIPE)
        messages->Error("standard output", "cannot be written, " + SystemText(errno));
    return false;
}

} // namespace vxhost
