// Keeps the plates of a page, compressed, until those that are drawn last are there: a file that has all inks of a pixel beside each
// other is written then.
#pragma once

#include "host/ByteSink.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

struct libdeflate_compressor;
struct libdeflate_decompressor;

namespace vxhost::raster
{

// Holds a strip of rows of each plate, and where the others are.
class PlateStore
{
  public:
    PlateStore(int width, int height, ScratchBytes scratch);

    // Takes the next row of some plates; all rows of these come, from the top, before the first of the next plates.
    Failure AddRow(std::span<const uint8_t *const> plates);

    // Adds row y of each plate to rows, in the order in which they came. Rows are asked for from the top. They are there until
    // the next call.
    Failure ReadRow(int y, std::vector<const uint8_t *> *rows);

  private:
    struct Strip {
        uint64_t at = 0; // in the scratch
        size_t size = 0;
    };
    using Bytes = std::vector<uint8_t>;

    Failure Keep(const Bytes &rows, size_t size, size_t plate);
    Failure Fetch(const Strip &strip, size_t size, Bytes *rows);
    size_t SizeOfStrip(size_t strip) const;

    size_t width_, height_, rowsOfStrip_;
    ScratchBytes scratch_;
    uint64_t used_ = 0; // of it
    std::unique_ptr<libdeflate_compressor, void (*)(libdeflate_compressor *)> compressor_;
    std::unique_ptr<libdeflate_decompressor, void (*)(libdeflate_decompressor *)> decompressor_;
    std::vector<std::vector<Strip>> plates_; // strips of each, from the top
    std::vector<Bytes> rows_;                // a strip of each plate that is added or read
    Bytes compressed_;
    size_t row_ = 0; // that is added next
};

} // namespace vxhost::raster
