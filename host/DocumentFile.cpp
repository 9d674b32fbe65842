// How a document gets its bytes from a file or a pipe.
#include "host/Document.h"
#include "host/MappedFile.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vxhost
{

namespace
{

// A regular file. The document may begin behind its first byte.
class MappedHolder final : public Document::Holder
{
  public:
    MappedHolder(std::shared_ptr<const MappedFile> file, size_t start, const struct stat &status)
        : file_(std::move(file)), start_(start), status_(status)
    {
    }

    // Keeps the file open, so that it can be asked whether it changed. False: errno says why not.
    bool KeepOpen(int descriptor)
    {
        descriptor_.Take(::fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
        return descriptor_.Get() >= 0;
    }
    std::span<const std::byte> Bytes() const { return file_->Bytes().subspan(start_); }

    void Leave(size_t from, size_t to) const override { file_->Leave(start_ + from, start_ + to); }
    bool HasChanged() const override
    {
        struct stat now;
        if (::fstat(descriptor_.Get(), &now) != 0)
            return false;
        return now.st_size != status_.st_size || now.st_mtim.tv_sec != status_.st_mtim.tv_sec ||
               now.st_mtim.tv_nsec != status_.st_mtim.tv_nsec;
    }
    std::optional<int64_t> ModifiedAt() const override { return status_.st_mtim.tv_sec; }

  private:
    Descriptor descriptor_;
    std::shared_ptr<const MappedFile> file_;
    size_t start_;
    struct stat status_; // as it was
};

// Holds what a pipe or a device delivered.
class ReadHolder final : public Document::Holder
{
  public:
    ReadEnd ReadAll(int descriptor, const ReadLimits &limits)
    {
        using Clock = std::chrono::steady_clock;
        const Clock::time_point started = Clock::now();
        const ReadEnd end = bytes_.ReadAll(descriptor, limits);
        seconds_ = std::chrono::duration<double>(Clock::now() - started).count();
        return end;
    }
    std::span<const std::byte> Bytes() const { return bytes_.Get(); }
    double SecondsRead() const override { return seconds_; }

  private:
    HeldBytes bytes_;
    double seconds_ = 0;
};

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
    struct stat status;
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
        if (length - static_cast<uint64_t>(start) > kMostDocumentBytes ||
            length > std::numeric_limits<size_t>::max()) {
            *error = kDocumentTooLong;
            return nullptr;
        }
        if (auto file = MappedFile::Map(descriptor, static_cast<size_t>(length))) {
            auto holder = std::make_unique<MappedHolder>(std::move(file), static_cast<size_t>(start), status);
            if (!holder->KeepOpen(descriptor)) {
                *error = "cannot be opened, " + SystemText(errno);
                return nullptr;
            }
            const std::span<const std::byte> bytes = holder->Bytes();
            return std::unique_ptr<Document>(new Document(bytes, std::move(holder)));
        }
    }
    // A pipe, or a file system that does not map or does not say how long its files are.
    auto holder = std::make_unique<ReadHolder>();
    const ReadEnd reading =
        holder->ReadAll(descriptor, {std::min(limits.bytes, kMostDocumentBytes), limits.seconds});
    if (reading == ReadEnd::Whole) {
        const std::span<const std::byte> bytes = holder->Bytes();
        return std::unique_ptr<Document>(new Document(bytes, std::move(holder)));
    }
    if (reading == ReadEnd::Failed)
        *error = "cannot be read, " + SystemText(errno);
    else
        *error = reading == ReadEnd::TooLong && limits.bytes >= kMostDocumentBytes ? kDocumentTooLong : "";
    if (end != nullptr)
        *end = reading;
    return nullptr;
}

} // namespace vxhost
