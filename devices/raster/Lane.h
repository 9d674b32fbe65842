// Rows of a picture, and what paints shapes into them. What a lane has after the same shapes does not depend on which other
// rows there are, nor on who paints them.
#pragma once

#include "devices/raster/Clip.h"
#include "devices/raster/InkBuffer.h"
#include "devices/raster/Painter.h"
#include "devices/raster/Shader.h"
#include "devices/raster/Sweeper.h"

#include <cstdint>
#include <span>

namespace vxhost::raster
{

// These are what can be painted. All keep within the limits of the clip.

struct EdgeShape {
    std::span<const Edge> edges;
    Bounds bounds; // of what is reported of it
};

struct WholeClip {
};

// Items of rows that follow each other.
template <class Item>
struct PlacedRows {
    int32_t top = 0;
    std::span<const uint32_t> ends; // places in items, one for each row
    std::span<const Item> items;

    int32_t Bottom() const { return top + static_cast<int32_t>(ends.size()); }
    std::span<const Item> Row(int32_t y) const
    {
        const auto row = static_cast<size_t>(y - top);
        const size_t begin = row == 0 ? 0 : ends[row - 1];
        return items.subspan(begin, ends[row] - begin);
    }
};
using PlacedSpans = PlacedRows<Span>; // of samples

struct PlacedMasks {
    PlacedRows<MaskedRun> rows; // of pixels
    int32_t left = 0, width = 0;
};

// Says what is laid down where a shape is: an ink, or those of a part of a shading.
struct Coat {
    Ink ink;
    const ShadedPart *part = nullptr;
};

class Lane
{
  public:
    Lane(int top, int width, int height, int samples, bool tracked, MemoryCap *cap);

    const InkBuffer &Buffer() const { return buffer_; }
    // Its rows of samples.
    int32_t Top() const { return top_; }
    int32_t Bottom() const { return bottom_; }

    void Paint(const EdgeShape &shape, const Clip &clip, const Coat &coat);
    void Paint(const WholeClip &, const Clip &clip, const Coat &coat);
    void Paint(const PlacedSpans &spans, const Clip &clip, const Coat &coat);
    void Paint(const PlacedMasks &masks, const Clip &clip, const Coat &coat); // which has them all

  private:
    template <class Use>
    void WithLay(const Coat &coat, Use &&use);

    InkBuffer buffer_;
    const int32_t top_, bottom_;
    Sweeper sweeper_;
    Painter painter_;
};

} // namespace vxhost::raster
