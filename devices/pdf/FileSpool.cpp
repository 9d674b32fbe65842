#include "devices/pdf/FileSpool.h"

#include "host/SystemText.h"
#include "host/TemporaryFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace vxhost::pdf
{

namespace
{

constexpr size_t kReadBytes = 256 * 1024;

int OpenFile(const PdfOptions &options)
{
    if (options.spool >= 0)
        return fcntl(options.spool, F_DUPFD_CLOEXEC, 0);
    return options.spoolFolder.empty() ? OpenTemporaryFile() : OpenTemporaryFile(options.spoolFolder);
}

} // namespace

FileSpool::FileSpool(const PdfOptions &options) : file_(OpenFile(options))
{
    if (file_ < 0)
        Fail(errno);
}

FileSpool::~FileSpool()
{
    if (file_ >= 0)
        close(file_);
}

void FileSpool::Fail(int cause)
{
    failure_ = {FailureKind::SpoolFailed,
                "cannot keep the page in a temporary file, " + SystemText(cause) +
                    ": name another folder in --temp-dir",
                cause};
}

void FileSpool::Clear()
{
    pieces_.clear();
    end_ = 0;
    if (file_ >= 0)
        failure_ = {};
}

void FileSpool::Add(std::span<const char> piece)
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

void FileSpool::Take(size_t piece, const std::function<void(std::span<const char>)> &take)
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

std::unique_ptr<PieceSpool> MakePieceSpool(const PdfOptions &options)
{
    return std::make_unique<FileSpool>(options);
}

} // namespace vxhost::pdf
