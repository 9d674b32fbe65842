#include "host/fonts/FontBytes.h"

#include "host/FileReading.h"

#include <cerrno>
#include <fcntl.h>
#include <new>
#include <sys/mman.h>
#include <sys/stat.h>
#include <utility>

namespace vxhost
{

// OpenToRead does more than a confined process may. A pipe among the fonts is not waited for.
std::shared_ptr<const FontBytes> FontBytes::Open(const std::string &path)
{
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status = {};
    if (file.Get() < 0 || fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_size <= 0)
        return nullptr;
    std::shared_ptr<FontBytes> opened(new FontBytes);
    const auto size = static_cast<size_t>(status.st_size);
    void *mapped = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file.Get(), 0);
    if (mapped == MAP_FAILED && errno == ENOMEM)
        throw std::bad_alloc();
    if (mapped == MAP_FAILED)
        return nullptr;
    opened->bytes_ = opened->mapped_ = {static_cast<const std::byte *>(mapped), size};
    return opened;
}

std::shared_ptr<const FontBytes> FontBytes::FromMemory(std::vector<std::byte> bytes)
{
    std::shared_ptr<FontBytes> opened(new FontBytes);
    opened->held_ = std::move(bytes);
    opened->bytes_ = opened->held_;
    return opened;
}

FontBytes::~FontBytes()
{
    if (!mapped_.empty())
        munmap(const_cast<std::byte *>(mapped_.data()), mapped_.size());
}

} // namespace vxhost
