#include "devices/pdf/PieceSpool.h"

#include "host/TemporaryFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace vxhost::pdf
{

namespace
{

constexpr size_t kReadBytes = 256 * 1024;

} // namespace

PieceSpool::PieceSpool(int descriptor)
    : file_(descriptor >= 0 ? fcntl(descriptor, F_DUPFD_CLOEXEC, 0) : OpenTemporaryFile())
{
    if (file_ < 0)
        Fail(errno);
}

PieceSpool::~PieceSpool()
{
    if (file_ >= 0)
        close(file_);
}

void PieceSpool::Fail(int cause)
{
    failure_ = {FailureKind::SpoolFailed,
                std::string("cannot keep the page in a temporary file, ") + std::strerror(cause) +
                    ": name another folder in TMPDIR",
                cause};
}

void PieceSpool::Clear()
{
    pieces_.clear();
    end_ = 0;
    if (file_ >= 0)
        failure_ = {};
}

void PieceSpool::Add(std::span<const char> piece)
{
    if (failure_)
        return;
    pieces_.push_back({end_, piece.size(), false});
    while (!piece.empty()) {
        const ssize_t written = pwrite(file_, piece.data(), piece.size(), end_);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return Fail(written < 0 ? errno : ENOSPC);
        end_ += written;
        piece = piece.subspan(static_cast<size_t>(written));
    }
}

void PieceSpool::Take(size_t piece, const std::function<void(std::span<const char>)> &take)
{
    const Piece wanted = pieces_[piece];
    if (wanted.isTaken)
        return Fail(ENODATA);
    pieces_[piece].isTaken = true;
    std::vector<char> part(std::min(wanted.bytes, kReadBytes));
    int64_t at = wanted.offset;
    const int64_t end = at + static_cast<int64_t>(wanted.bytes);
    while (at < end && !failure_) {
        const size_t count = std::min(part.size(), static_cast<size_t>(end - at));
        const ssize_t got = pread(file_, part.data(), count, at);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            return Fail(got < 0 ? errno : EIO);
        take({part.data(), static_cast<size_t>(got)});
        // A file system that cannot do this needs more room and somewhat more time.
        static_cast<void>(fallocate(file_, FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, at, got));
        at += got;
    }
}

} // namespace vxhost::pdf
