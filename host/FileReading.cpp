#include "host/FileReading.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdint>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vxhost
{

namespace
{

using Clock = std::chrono::steady_clock;

constexpr size_t kFirstRead = size_t{64} << 10;

std::string OpenError(int error)
{
    if (error == ENOENT)
        return "no such file: check the name";
    return "cannot be opened, " + SystemText(error);
}

std::string RefusalOf(mode_t mode, FileKinds allowed)
{
    const std::string kind = WhichKindIsRefused(mode, allowed);
    if (kind.empty())
        return "";
    return "is " + kind + (S_ISDIR(mode) ? ": name a file in it" : ", not a file: name a file");
}

// False when nothing came before the end. Waiting is left to poll: a descriptor may be one that read would wait for.
bool WaitForBytes(int descriptor, bool hasEnd, Clock::time_point end)
{
    while (true) {
        int timeout = -1;
        if (hasEnd) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
            if (left <= 0)
                return false;
            timeout = static_cast<int>(std::min<int64_t>(left, INT_MAX));
        }
        pollfd ready = {descriptor, POLLIN, 0};
        const int count = poll(&ready, 1, timeout);
        if (count > 0 || (count < 0 && errno != EINTR))
            return true;
    }
}

} // namespace

std::string WhichKindIsRefused(mode_t mode, FileKinds allowed)
{
    if (S_ISDIR(mode))
        return "a directory";
    if (S_ISREG(mode) || allowed == FileKinds::All)
        return "";
    if (S_ISFIFO(mode))
        return allowed == FileKinds::Pipes ? "" : "a pipe";
    return S_ISSOCK(mode) ? "a socket" : "a device";
}

int OpenToRead(const std::string &path, FileKinds allowed, std::string *error)
{
    // The kind is looked at first, since opening alone may start something: a writer that waits for a reader, a tape.
    struct stat status;
    if (stat(path.c_str(), &status) == 0) {
        *error = RefusalOf(status.st_mode, allowed);
        if (!error->empty())
            return -1;
    }
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0) {
        *error = OpenError(errno);
        return -1;
    }
    // The name may mean another file by now.
    *error = fstat(descriptor, &status) != 0 ? OpenError(errno) : RefusalOf(status.st_mode, allowed);
    if (error->empty())
        return descriptor;
    close(descriptor);
    return -1;
}

Descriptor::~Descriptor()
{
    if (number_ >= 0)
        close(number_);
}

ReadEnd HeldBytes::ReadAll(int descriptor, const ReadLimits &limits)
{
    const auto end = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                        std::chrono::duration<double>(limits.seconds));
    const size_t most = std::max(limits.bytes, limits.bytes + 1); // one more shows that it is too long
    size_t capacity = 0;
    while (true) {
        if (length_ == capacity) {
            capacity = std::min(std::max(capacity * 2, kFirstRead), most);
            if (!bytes_.Resize(capacity))
                return ReadEnd::Failed;
        }
        if (!WaitForBytes(descriptor, limits.seconds > 0, end))
            return ReadEnd::TooLate;
        const ssize_t got = read(descriptor, bytes_.Get() + length_, capacity - length_);
        if (got < 0 && errno != EINTR && errno != EAGAIN)
            return ReadEnd::Failed;
        if (got == 0)
            break;
        length_ += got > 0 ? static_cast<size_t>(got) : 0;
        if (length_ > limits.bytes)
            return ReadEnd::TooLong;
    }
    (void)bytes_.Resize(std::max<size_t>(length_, 1)); // room that is not needed would count as memory, too
    return ReadEnd::Whole;
}

} // namespace vxhost
