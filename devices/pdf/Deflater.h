// Deflate, by the faster library.
#pragma once

#include "devices/pdf/PdfDevice.h"

#include <cstddef>
#include <memory>
#include <span>
#include <string>

struct libdeflate_compressor;

namespace vxhost::pdf
{

int LevelOf(Compression compression); // 0: nothing is compressed

class Deflater
{
  public:
    explicit Deflater(int level); // throws std::bad_alloc
    ~Deflater();
    Deflater(const Deflater &) = delete;
    Deflater &operator=(const Deflater &) = delete;

    // The compressed bytes in zlib's wrapper, which PDF calls FlateDecode. Valid until the next call.
    std::span<const char> Compress(std::span<const char> bytes);

  private:
    libdeflate_compressor *compressor_;
    std::unique_ptr<char[]> room_;
    size_t roomBytes_ = 0;
};

} // namespace vxhost::pdf
