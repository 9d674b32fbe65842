// The bytes of a font file: the one door through which fonts come, from a file or from a program's memory.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace vxhost
{

class FontBytes
{
  public:
    // Maps the file. Null when there is none that can be read; lack of memory is thrown.
    static std::shared_ptr<const FontBytes> Open(const std::string &path);
    static std::shared_ptr<const FontBytes> FromMemory(std::vector<std::byte> bytes);

    std::span<const std::byte> Get() const { return bytes_; }
    const std::string &Path() const { return path_; } // of the file; empty: they came from memory

  private:
    FontBytes(std::span<const std::byte> bytes, std::string path, std::shared_ptr<const void> holder)
        : bytes_(bytes), path_(std::move(path)), holder_(std::move(holder))
    {
    }

    std::span<const std::byte> bytes_;
    std::string path_;
    std::shared_ptr<const void> holder_; // what they are in
};

using SharedFontBytes = std::shared_ptr<const FontBytes>;

} // namespace vxhost
