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
    // Hands out the pixels of a shape, of those rows of samples that the buffer has: sweep(row) calls row(y, spans) for each
    // that the shape covers, from the top. lay(y, left, right, mask) is called for neighbours with one mask, in row y of the
    // pixels, which the buffer has selected.
    template <class Sweep, class Lay>
    void Paint(Sweep &&sweep, InkBuffer *buffer, Lay &&lay)
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
    // The same of what of a shape the clip allows; the shape keeps within the clip's limits.
    template <class Sweep, class Lay>
    void PaintWithin(const Clip &clip, Sweep &&sweep, InkBuffer *buffer, Lay &&lay)
    {
        const auto sweepVisible = [&](auto &&row) {
            sweep([&](int32_t y, std::span<const Span> spans) {
                const std::span<const Span> visible = clip.Intersect(y, spans, &scratch_);
                if (!visible.empty())
                    row(y, visible);
            });
        };
        Paint(sweepVisible, buffer, lay);
    }

  private:
    void Begin(const InkBuffer &buffer);
    void AddSpans(std::span<const Span> spans, int rowInPixel, const InkBuffer &buffer);

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
