#include "devices/pdf/PieceSpool.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace vxhost::pdf
{

namespace
{

constexpr size_t kReadBytes = 256 * 1024;

std::string TemporaryFolder()
{
    const char *named = std::getenv("TMPDIR");
    return named != nullptr && *named != '\0' ? named : "/tmp";
}

// Not every file system has files without a name; there a name is given and taken away again.
int OpenUnnamed(const std::string &folder)
{
    const int file = open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (file >= 0)
        return file;
    std::string name = folder + "/vx-XXXXXX";
    const int named = mkostemp(name.data(), O_CLOEXEC);
    if (named >= 0)
        unlink(name.c_str());
    return named;
}

} // namespace

std::unique_ptr<PieceSpool> PieceSpool::Open(int descriptor, std::function<void(int)> onFailure,
                                             std::string *error)
{
    const std::string folder = TemporaryFolder();
    const int file = descriptor >= 0 ? fcntl(descriptor, F_DUPFD_CLOEXEC, 0) : OpenUnnamed(folder);
    if (file >= 0)
        return std::unique_ptr<PieceSpool>(new PieceSpool(file, std::move(onFailure)));
    *error = "cannot make a temporary file in \"" + folder + "\", " + std::strerror(errno) +
             ": name another folder in TMPDIR";
    return nullptr;
}

PieceSpool::~PieceSpool()
{
    close(file_);
}

void PieceSpool::Fail(int cause)
{
    error_ = std::string("cannot keep the page in a temporary file, ") + std::strerror(cause) +
             ": name a folder with more room in TMPDIR";
    if (onFailure_)
        onFailure_(cause);
}

void PieceSpool::Clear()
{
    pieces_.clear();
    end_ = 0;
    error_.clear();
}

void PieceSpool::Add(std::span<const char> piece)
{
    if (!error_.empty())
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
    while (at < end && error_.empty()) {
        const size_t count = std::min(part.size(), static_cast<size_t>(end - at));
        const ssize_t got = pread(file_, part.data(), count, at);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            return Fail(got < 0 ? errno : EIO);
        take({part.data(), static_cast<size_t>(got)});
        // Where the file system cannot, it takes more room and somewhat more time.
        static_cast<void>(fallocate(file_, FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, at, got));
        at += got;
    }
}

} // namespace vxhost::pdf
