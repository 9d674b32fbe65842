#include "cli/batch/WholeLines.h"

#include <string>
#include <unistd.h>

namespace vxhost
{

namespace
{

constexpr size_t kReadSize = size_t{256} << 10;

} // namespace

uint64_t ReadWholeLines(int descriptor, const std::function<void(uint64_t at, std::string_view line)> &take)
{
    uint64_t at = 0;
    std::string bytes;
    std::string piece(kReadSize, '\0');
    while (true) {
        const ssize_t got =
            pread(descriptor, piece.data(), piece.size(), static_cast<off_t>(at + bytes.size()));
        if (got <= 0)
            return at;
        bytes.append(piece, 0, static_cast<size_t>(got));
        size_t taken = 0;
        for (size_t end; (end = bytes.find('\n', taken)) != std::string::npos; taken = end + 1)
            take(at + taken, std::string_view(bytes).substr(taken, end + 1 - taken));
        bytes.erase(0, taken);
        at += taken;
    }
}

} // namespace vxhost
