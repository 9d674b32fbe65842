// The bytes of a file, which the system brings into memory as they are looked at.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>

namespace vxhost
{

class MappedFile
{
  public:
    // Waits for nobody at the other end of a pipe. Null when there is no regular file that can be read; lack of memory is
    // thrown.
    static std::shared_ptr<const MappedFile> Open(const std::string &path);
    // The first bytes of an open file. Null where it cannot be: errno says why.
    static std::shared_ptr<const MappedFile> Map(int descriptor, size_t size);

    MappedFile(const MappedFile &) = delete;
    MappedFile &operator=(const MappedFile &) = delete;
    ~MappedFile(); // NOLINT(performance-trivially-destructible): it is not where there are files

    std::span<const std::byte> Bytes() const { return bytes_; }
    // Between the two nothing need stay in memory; it comes back when it is looked at again.
    void Leave(size_t from, size_t to) const;

  private:
    explicit MappedFile(std::span<const std::byte> bytes) : bytes_(bytes) {}
    std::span<const std::byte> bytes_;
};

} // namespace vxhost
