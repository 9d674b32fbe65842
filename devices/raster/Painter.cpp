// The ends of all spans in a row of pixels cut it into stretches in which every pixel has the same samples
// inside. So the inside of a shape is one stretch, and its cost does not depend on the number of samples.
// Bits keep the ends in order without sorting.
#include "devices/raster/Painter.h"

#include <algorithm>
#include <bit>

namespace vxhost::raster
{

void Painter::Paint(Scanner *shape, const Clip &clip, const Ink &ink, InkBuffer *buffer)
{
    samples_ = buffer->Samples();
    shift_ = std::countr_zero(static_cast<unsigned>(samples_));
    const auto pixels = static_cast<size_t>(buffer->Width()) + 2; // a span may end at the right border
    changes_.resize(pixels);
    changed_.resize(pixels / 64 + 1);
    firstWord_ = changed_.size();
    lastWord_ = 0;
    int32_t pixelRow = -1;
    shape->Sweep([&](int32_t y, std::span<const Span> spans) {
        if (y >> shift_ != pixelRow) {
            PaintPixels(pixelRow, ink, buffer);
            pixelRow = y >> shift_;
        }
        const std::span<const Span> visible = clip.Intersect(y, spans, &scratch_);
        if (!visible.empty())
            AddSpans(visible, y & (samples_ - 1));
    });
    PaintPixels(pixelRow, ink, buffer);
}

// The end of a span changes the rest of the samples in its own pixel and, from the next pixel on, the first
// ones as well.
void Painter::AddSpans(std::span<const Span> spans, int rowInPixel)
{
    const int shift = shift_, at = rowInPixel << shift_, last = samples_ - 1;
    const uint64_t row = (uint64_t{2} << last) - 1;
    uint64_t *const changes = changes_.data();
    uint64_t *const changed = changed_.data();
    const auto change = [&](size_t pixel, uint64_t samples) {
        changes[pixel] ^= samples << at;
        changed[pixel / 64] |= uint64_t{1} << (pixel % 64);
    };
    const auto addEnd = [&](int32_t column) {
        const auto pixel = static_cast<size_t>(column >> shift);
        const uint64_t first = (uint64_t{1} << (column & last)) - 1;
        change(pixel, row & ~first);
        if (first != 0)
            change(pixel + 1, first);
    };
    for (const Span &span : spans) {
        addEnd(span.begin);
        addEnd(span.end);
    }
    firstWord_ = std::min(firstWord_, static_cast<size_t>(spans.front().begin >> shift) / 64);
    lastWord_ = std::max(lastWord_, static_cast<size_t>((spans.back().end >> shift) + 1) / 64);
}

void Painter::PaintPixels(int32_t y, const Ink &ink, InkBuffer *buffer)
{
    if (firstWord_ > lastWord_ || !buffer->SelectRow(y))
        return;
    uint64_t inside = 0;
    size_t begin = 0;
    for (size_t word = firstWord_; word <= lastWord_; ++word) {
        for (uint64_t rest = changed_[word]; rest != 0; rest &= rest - 1) {
            const size_t pixel = word * 64 + static_cast<size_t>(std::countr_zero(rest));
            if (inside != 0)
                buffer->Paint(static_cast<int>(begin), static_cast<int>(pixel), inside, ink);
            inside ^= changes_[pixel];
            changes_[pixel] = 0;
            begin = pixel;
        }
        changed_[word] = 0;
    }
    firstWord_ = changed_.size();
    lastWord_ = 0;
}

} // namespace vxhost::raster
