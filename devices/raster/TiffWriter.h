// Writes a TIFF file row by row: 8 bits a sample, gray or in inks, compressed by deflate in strips.
#pragma once

#include "host/ByteSink.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace vxhost::raster
{

struct TiffHeader {
    int width = 1, height = 1;
    double pixelsPerInchX = 72, pixelsPerInchY = 72;
    std::vector<std::string> inks;      // a sample each, the four of the process first; empty: it is gray
    std::string title;                  // UTF-8, may be empty
    std::string ink;                    // of a plate; empty: it is none
    std::span<const std::byte> profile; // ICC, of the press; empty: it is not known

    // A file that might become larger has places of 64 bits.
    uint64_t mostOfPlain = std::numeric_limits<uint32_t>::max();
};

constexpr size_t kMostTiffInks = 256;

// Rows come from the top, then End. After a failure the rest is ignored; End says what failed. But lack of memory is thrown, as
// std::bad_alloc, and what a sink throws goes on.
class TiffWriter
{
  public:
    TiffWriter(const TiffHeader &header, ByteSinks sinks);
    ~TiffWriter();
    TiffWriter(const TiffWriter &) = delete;
    TiffWriter &operator=(const TiffWriter &) = delete;

    // Writes the next row, of each ink or of gray.
    void WriteRow(std::span<const uint8_t *const> inks);
    void WriteRow(const uint8_t *gray) { WriteRow({&gray, 1}); }
    Failure End();

  private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace vxhost::raster
