// The bytes of a font file: the one door through which fonts come, from a file or from a program's memory.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace vxhost
{

class FontBytes
{
  public:
    // Maps the file. Null when there is none that can be read; lack of memory is thrown.
    static std::shared_ptr<const FontBytes> Open(const std::string &path);
    static std::shared_ptr<const FontBytes> FromMemory(std::vector<std::byte> bytes);

    FontBytes(const FontBytes &) = delete;
    FontBytes &operator=(const FontBytes &) = delete;
    ~FontBytes();

    std::span<const std::byte> Get() const { return bytes_; }

  private:
    FontBytes() = default;

    std::span<const std::byte> bytes_;
    std::span<const std::byte> mapped_;
    std::vector<std::byte> held_;
};

using SharedFontBytes = std::shared_ptr<const FontBytes>;

} // namespace vxhost
