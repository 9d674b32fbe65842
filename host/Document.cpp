#include "host/Document.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <limits>
#include <string_view>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vxhost
{

namespace
{

constexpr size_t kMaxBytes = std::numeric_limits<int32_t>::max();
constexpr size_t kFirstRead = size_t{64} << 10;

constexpr std::string_view kTooLong =
    "longer than 2147483647 bytes, the most that a document may have: split it";

// The system's words for an error, as the rest of a message that starts in lower case.
std::string SystemError(int number)
{
    std::string text = std::strerror(number);
    if (!text.empty() && text[0] >= 'A' && text[0] <= 'Z')
        text[0] = static_cast<char>(text[0] - 'A' + 'a');
    return text;
}

std::string OpenError(int number)
{
    if (number == ENOENT)
        return "no such file: check the name";
    return "cannot be opened, " + SystemError(number);
}

class Descriptor
{
  public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor()
    {
        if (number_ >= 0)
            ::close(number_);
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    int Get() const { return number_; }

  private:
    int number_;
};

} // namespace

std::unique_ptr<Document> Document::Open(const std::string &path, std::string *error)
{
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (file.Get() < 0) {
        *error = OpenError(errno);
        return nullptr;
    }
    return FromDescriptor(file.Get(), error);
}

std::unique_ptr<Document> Document::FromDescriptor(int descriptor, std::string *error, size_t maxHeld)
{
    struct stat status;
    if (::fstat(descriptor, &status) != 0) {
        *error = "cannot be read, " + SystemError(errno);
        return nullptr;
    }
    if (S_ISDIR(status.st_mode)) {
        *error = "is a directory: name a file in it";
        return nullptr;
    }

    std::unique_ptr<Document> document(new Document);
    // A shell may hand over a file that is partly read already; what is left is the document.
    const off_t start = S_ISREG(status.st_mode) ? ::lseek(descriptor, 0, SEEK_CUR) : -1;
    if (start >= 0 && status.st_size > start) {
        const auto length = static_cast<uint64_t>(status.st_size);
        if (length - static_cast<uint64_t>(start) > kMaxBytes ||
            length > std::numeric_limits<size_t>::max()) {
            *error = kTooLong;
            return nullptr;
        }
        void *mapped = ::mmap(nullptr, static_cast<size_t>(length), PROT_READ, MAP_PRIVATE, descriptor, 0);
        if (mapped != MAP_FAILED) {
            document->mapped_ = {static_cast<std::byte *>(mapped), static_cast<size_t>(length)};
            document->bytes_ = document->mapped_.subspan(static_cast<size_t>(start));
            return document;
        }
    }
    // A pipe, or a file system that does not map or does not say how long its files are.
    if (!document->ReadWhole(descriptor, maxHeld, error))
        return nullptr;
    return document;
}

// By realloc, which moves pages instead of copying what they hold.
bool Document::ReadWhole(int descriptor, size_t maxHeld, std::string *error)
{
    size_t capacity = 0, length = 0;
    while (true) {
        if (length == capacity) {
            capacity = capacity == 0 ? kFirstRead : std::min(capacity * 2, kMaxBytes + 1);
            void *larger = std::realloc(owned_.get(), capacity);
            if (larger == nullptr) {
                *error = "cannot be read, " + SystemError(ENOMEM);
                return false;
            }
            (void)owned_.release();
            owned_.reset(static_cast<std::byte *>(larger));
        }
        const ssize_t got = ::read(descriptor, owned_.get() + length, capacity - length);
        if (got == 0)
            break;
        if (got < 0) {
            if (errno == EINTR)
                continue;
            *error = "cannot be read, " + SystemError(errno);
            return false;
        }
        length += static_cast<size_t>(got);
        if (length > std::min(maxHeld, kMaxBytes)) {
            *error = maxHeld < kMaxBytes ? "" : kTooLong;
            return false;
        }
    }
    bytes_ = {owned_.get(), length};
    return true;
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
    // Advice: where it is not taken the pages stay.
    if (first < last)
        (void)::madvise(const_cast<std::byte *>(mapped_.data()) + first, last - first, MADV_DONTNEED);
}

Document::~Document()
{
    if (!mapped_.empty())
        ::munmap(const_cast<std::byte *>(mapped_.data()), mapped_.size());
}

} // namespace vxhost
