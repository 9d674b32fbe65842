// Mixes the samples of a row of pixels into the bytes of plates: how much of each ink a pixel has, 0 none, 255 full.
#pragma once

#include "devices/raster/InkBuffer.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace vxhost::raster
{

class PlateMixer
{
  public:
    // width: that of a row, in pixels of so many samples a side.
    PlateMixer(int width, int samples);

    // Mixes row y. Rows holds what is mixed until the next call.
    void Mix(const InkBuffer &buffer, int y);
    const std::vector<uint8_t> &Row(size_t channel) const { return rows_[channel]; }

  private:
    InkWord MeanOf(const InkBuffer::Row &row, int x) const;

    unsigned samplesPerPixel_;
    std::array<std::vector<uint8_t>, 4> rows_;
};

} // namespace vxhost::raster
