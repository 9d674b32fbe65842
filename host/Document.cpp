#include "host/Document.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <fcntl.h>
#include <limits>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>

namespace vxhost
{

namespace
{

constexpr size_t kMaxBytes = std::numeric_limits<int32_t>::max();

constexpr std::string_view kTooLong =
    "longer than 2147483647 bytes, the most that a document may have: split it";

} // namespace

std::unique_ptr<Document> Document::Open(const std::string &path, std::string *error,
                                         const DocumentLimits &limits, ReadEnd *end)
{
    const Descriptor file(OpenToRead(path, limits.kinds, error));
    return file.Get() < 0 ? nullptr : FromDescriptor(file.Get(), error, limits.reading, end);
}

std::unique_ptr<Document> Document::FromDescriptor(int descriptor, std::string *error,
                                                   const ReadLimits &limits, ReadEnd *end)
{
    std::unique_ptr<Document> document(new Document);
    struct stat &status = document->status_;
    if (::fstat(descriptor, &status) != 0) {
        *error = "cannot be read, " + SystemText(errno);
        return nullptr;
    }
    if (S_ISDIR(status.st_mode)) {
        *error = "is a directory: name a file in it";
        return nullptr;
    }

    // A shell may hand over a file that is partly read already; what is left is the document.
    const off_t start = S_ISREG(status.st_mode) ? ::lseek(descriptor, 0, SEEK_CUR) : -1;
    if (start >= 0 && status.st_size > start) {
        const auto length = static_cast<uint64_t>(status.st_size);
        if (length - static_cast<uint64_t>(start) > kMaxBytes ||
            length > std::numeric_limits<size_t>::max()) {
            *error = kTooLong;
            return nullptr;
        }
        document->file_.Take(::fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
        if (document->file_.Get() < 0) {
            *error = "cannot be opened, " + SystemText(errno);
            return nullptr;
        }
        void *mapped = ::mmap(nullptr, static_cast<size_t>(length), PROT_READ, MAP_PRIVATE, descriptor, 0);
        if (mapped != MAP_FAILED) {
            document->mapped_ = {static_cast<std::byte *>(mapped), static_cast<size_t>(length)};
            document->bytes_ = document->mapped_.subspan(static_cast<size_t>(start));
            return document;
        }
    }
    // What comes here is a pipe, or a file of a file system that does not map or does not tell lengths.
    using Clock = std::chrono::steady_clock;
    const Clock::time_point started = Clock::now();
    const ReadEnd reading =
        document->held_.ReadAll(descriptor, {std::min(limits.bytes, kMaxBytes), limits.seconds});
    if (reading == ReadEnd::Whole) {
        document->secondsRead_ = std::chrono::duration<double>(Clock::now() - started).count();
        document->bytes_ = document->held_.Get();
        return document;
    }
    if (reading == ReadEnd::Failed)
        *error = "cannot be read, " + SystemText(errno);
    else
        *error = reading == ReadEnd::TooLong && limits.bytes >= kMaxBytes ? kTooLong : "";
    if (end != nullptr)
        *end = reading;
    return nullptr;
}

std::unique_ptr<Document> Document::FromMemory(std::span<const std::byte> bytes, std::string *error)
{
    if (bytes.size() > kMaxBytes) {
        *error = kTooLong;
        return nullptr;
    }
    std::unique_ptr<Document> document(new Document);
    document->bytes_ = bytes;
    return document;
}

void Document::Leave(size_t from, size_t to) const
{
    if (mapped_.empty())
        return;
    const auto page = static_cast<size_t>(::sysconf(_SC_PAGESIZE));
    const auto start = static_cast<size_t>(bytes_.data() - mapped_.data());
    const size_t first = (start + from) / page * page, last = (start + to) / page * page;
    // This is advice: where the system does not take it, the pages stay.
    if (first < last)
        (void)::madvise(const_cast<std::byte *>(mapped_.data()) + first, last - first, MADV_DONTNEED);
}

bool Document::HasChanged() const
{
    struct stat now;
    if (mapped_.empty() || ::fstat(file_.Get(), &now) != 0)
        return false;
    return now.st_size != status_.st_size || now.st_mtim.tv_sec != status_.st_mtim.tv_sec ||
           now.st_mtim.tv_nsec != status_.st_mtim.tv_nsec;
}

Document::~Document()
{
    if (!mapped_.empty())
        ::munmap(const_cast<std::byte *>(mapped_.data()), mapped_.size());
}

} // namespace vxhost
