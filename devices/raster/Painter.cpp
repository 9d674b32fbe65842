// The ends of all spans in a row of pixels cut it into stretches in which every pixel has the same samples
// inside. So the inside of a shape is one stretch, and its cost does not depend on the number of samples.
// Bits keep the ends in order without sorting.
#include "devices/raster/Painter.h"

#include <algorithm>

namespace vxhost::raster
{

void Painter::Begin(const InkBuffer &buffer)
{
    samples_ = buffer.Samples();
    shift_ = std::countr_zero(static_cast<unsigned>(samples_));
    firstColumn_ = 0;
    for (int row = 0; row < samples_; ++row)
        firstColumn_ |= uint64_t{1} << (row * samples_);
    const auto pixels = static_cast<size_t>(buffer.Width()) + 1; // a span may end at the right border
    changes_.resize(pixels);
    changed_.resize(pixels / 64 + 1);
    firstWord_ = changed_.size();
    lastWord_ = 0;
}

// The end of a span changes the rest of the samples in its own row and pixel, and all of that row in the pixels behind,
// which the last sample of the row tells.
void Painter::AddSpans(std::span<const Span> spans, int rowInPixel, const InkBuffer &buffer)
{
    const int shift = shift_, at = rowInPixel << shift_, last = samples_ - 1;
    const uint64_t row = (uint64_t{2} << last) - 1;
    uint64_t *const changes = changes_.data();
    uint64_t *const changed = changed_.data();
    const auto addEnd = [&](int32_t column) {
        const auto pixel = static_cast<size_t>(column >> shift);
        buffer.Prefetch(column >> shift);
        changes[pixel] ^= (row << (column & last) & row) << at;
        changed[pixel / 64] |= uint64_t{1} << (pixel % 64);
    };
    for (const Span &span : spans) {
        addEnd(span.begin);
        addEnd(span.end);
    }
    firstWord_ = std::min(firstWord_, static_cast<size_t>(spans.front().begin >> shift) / 64);
    lastWord_ = std::max(lastWord_, static_cast<size_t>(spans.back().end >> shift) / 64);
}

} // namespace vxhost::raster
