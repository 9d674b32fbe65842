// Brings the rows of samples of a shape together into pixels, to be laid down as ink.
#pragma once

#include "devices/raster/Clip.h"
#include "devices/raster/InkBuffer.h"
#include "devices/raster/Scanner.h"

#include <bit>
#include <utility>

namespace vxhost::raster
{

class Painter
{
  public:
    // Hands out the pixels of a shape, a scanner's or another's that keeps within the clip's limits, where the clip allows:
    // lay(y, left, right, mask) for neighbours with one mask, in row y, which the buffer has selected.
    template <class Shape, class Lay>
    void Paint(Shape &&shape, const Clip &clip, InkBuffer *buffer, Lay &&lay)
    {
        const auto sweep = [&](auto &&row) {
            shape.Sweep([&](int32_t y, std::span<const Span> spans) {
                const std::span<const Span> visible = clip.Intersect(y, spans, &scratch_);
                if (!visible.empty())
                    row(y, visible);
            });
        };
        PaintRows(sweep, buffer, lay);
    }
    // The same for a shape that covers all of the clip.
    template <class Lay>
    void Paint(const Clip &clip, InkBuffer *buffer, Lay &&lay)
    {
        PaintRows([&](auto &&row) { clip.Sweep(row); }, buffer, lay);
    }

  private:
    void Begin(const InkBuffer &buffer);
    void AddSpans(std::span<const Span> spans, int rowInPixel, const InkBuffer &buffer);

    template <class Sweep, class Lay>
    void PaintRows(Sweep &&sweep, InkBuffer *buffer, Lay &&lay)
    {
        Begin(*buffer);
        int32_t pixelRow = -1;
        bool hasMemory = false;
        const auto endRow = [&] {
            if (hasMemory)
                LayRow(*buffer,
                       [&](int left, int right, uint64_t mask) { lay(pixelRow, left, right, mask); });
        };
        sweep([&](int32_t y, std::span<const Span> spans) {
            if (y >> shift_ != pixelRow) {
                endRow();
                pixelRow = y >> shift_;
                hasMemory = buffer->SelectRow(pixelRow);
            }
            if (hasMemory)
                AddSpans(spans, y & (samples_ - 1), *buffer);
        });
        endRow();
    }

    template <class Lay>
    void LayRow(const InkBuffer &buffer, Lay &&lay)
    {
        uint64_t inside = 0;
        size_t begin = 0;
        const auto layUpTo = [&](size_t end) {
            if (inside != 0 && begin < end)
                lay(static_cast<int>(begin), static_cast<int>(end), inside);
            begin = end;
        };
        for (size_t word = firstWord_; word <= lastWord_; ++word) {
            buffer.PrefetchBlocks(word, changed_[word]);
            for (uint64_t rest = changed_[word]; rest != 0; rest &= rest - 1) {
                const size_t pixel = word * 64 + static_cast<size_t>(std::countr_zero(rest));
                const uint64_t changes = std::exchange(changes_[pixel], 0);
                // The last sample of a row tells what becomes of that row behind the pixel.
                const uint64_t last = changes >> (samples_ - 1) & firstColumn_;
                const uint64_t changesBack = changes ^ ((last << samples_) - last);
                layUpTo(pixel);
                inside ^= changes;
                if (changesBack != 0) {
                    layUpTo(pixel + 1);
                    inside ^= changesBack;
                }
            }
            changed_[word] = 0;
        }
        firstWord_ = changed_.size();
        lastWord_ = 0;
    }

    int shift_ = 0; // a pixel has 1 << shift_ samples a side
    int samples_ = 1;
    uint64_t firstColumn_ = 1; // of the samples of a pixel
    // changes_ holds, for each pixel of the row at hand, which of its samples are inside and not outside, or the other way
    // round, for the ends of spans in it; changed_ has one bit for each pixel with such ends. Both are zero between two rows.
    std::vector<uint64_t> changes_;
    std::vector<uint64_t> changed_;
    size_t firstWord_ = 0, lastWord_ = 0; // the words of changed_ that are not zero
    std::vector<Span> scratch_;
};

} // namespace vxhost::raster
