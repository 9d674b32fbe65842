// Lays the rows of samples of a shape down as ink, pixel by pixel.
#pragma once

#include "devices/raster/Clip.h"
#include "devices/raster/InkBuffer.h"
#include "devices/raster/Scanner.h"

namespace vxhost::raster
{

class Painter
{
  public:
    // Paints the shape in the scanner, which was begun with the clip's limits, where the clip allows.
    void Paint(Scanner *shape, const Clip &clip, const Ink &ink, InkBuffer *buffer);

  private:
    void AddSpans(std::span<const Span> spans, int rowInPixel);
    void PaintPixels(int32_t y, const Ink &ink, InkBuffer *buffer);

    int shift_ = 0; // a pixel has 1 << shift_ samples a side
    int samples_ = 1;
    // Of the row of pixels at hand: which samples change between inside and outside from a pixel on, and one
    // bit for each pixel where some do. All zero between two rows.
    std::vector<uint64_t> changes_;
    std::vector<uint64_t> changed_;
    size_t firstWord_ = 0, lastWord_ = 0; // of changed_, what is not zero
    std::vector<Span> scratch_;
};

} // namespace vxhost::raster
