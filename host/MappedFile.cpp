#include "host/MappedFile.h"

#include "host/FileReading.h"

#include <cerrno>
#include <fcntl.h>
#include <new>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vxhost
{

// Not OpenToRead: a confined process may do no more than this.
std::shared_ptr<const MappedFile> MappedFile::Open(const std::string &path)
{
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status = {};
    if (file.Get() < 0 || fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_size <= 0)
        return nullptr;
    std::shared_ptr<const MappedFile> mapped = Map(file.Get(), static_cast<size_t>(status.st_size));
    if (mapped == nullptr && errno == ENOMEM)
        throw std::bad_alloc();
    return mapped;
}

std::shared_ptr<const MappedFile> MappedFile::Map(int descriptor, size_t size)
{
    void *mapped = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, descriptor, 0);
    if (mapped == MAP_FAILED)
        return nullptr;
    try {
        return std::shared_ptr<const MappedFile>(
            new MappedFile({static_cast<const std::byte *>(mapped), size}));
    } catch (...) {
        munmap(mapped, size);
        throw;
    }
}

MappedFile::~MappedFile()
{
    munmap(const_cast<std::byte *>(bytes_.data()), bytes_.size());
}

void MappedFile::Leave(size_t from, size_t to) const
{
    const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    const size_t first = from / page * page, last = to / page * page;
    // Advice: where it is not taken the pages stay.
    if (first < last)
        (void)madvise(const_cast<std::byte *>(bytes_.data()) + first, last - first, MADV_DONTNEED);
}

} // namespace vxhost
