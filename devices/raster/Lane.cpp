#include "devices/raster/Lane.h"

#include <algorithm>

namespace vxhost::raster
{

Lane::Lane(int top, int width, int height, int samples, bool tracked, MemoryCap *cap)
    : buffer_(width, height, samples, tracked, cap, top), top_(top * samples),
      bottom_((top + height) * samples)
{
}

// Calls use with what lays the coat down.
template <class Use>
void Lane::WithLay(const Coat &coat, Use &&use)
{
    if (coat.part == nullptr)
        use([&buffer = buffer_, ink = coat.ink](int /*y*/, int left, int right, uint64_t mask) {
            buffer.Paint(left, right, mask, ink);
        });
    else
        use([&buffer = buffer_, &part = *coat.part](int y, int left, int right, uint64_t mask) {
            part.Paint(y, left, right, mask, &buffer);
        });
}

void Lane::Paint(const EdgeShape &shape, const Clip &clip, const Coat &coat)
{
    Bounds bounds = shape.bounds;
    bounds.top = std::max(bounds.top, top_);
    bounds.bottom = std::min(bounds.bottom, bottom_);
    const auto sweep = [&](auto &&row) { sweeper_.Sweep(shape.edges, bounds, row); };
    WithLay(coat, [&](auto &&lay) { painter_.PaintWithin(clip, sweep, &buffer_, lay); });
}

void Lane::Paint(const WholeClip &, const Clip &clip, const Coat &coat)
{
    const auto sweep = [&](auto &&row) { clip.Sweep(top_, bottom_, row); };
    WithLay(coat, [&](auto &&lay) { painter_.Paint(sweep, &buffer_, lay); });
}

void Lane::Paint(const PlacedSpans &spans, const Clip &clip, const Coat &coat)
{
    const int32_t top = std::max(spans.top, top_), bottom = std::min(spans.Bottom(), bottom_);
    const auto sweep = [&](auto &&row) {
        for (int32_t y = top; y < bottom; ++y) {
            if (const std::span<const Span> one = spans.Row(y); !one.empty())
                row(y, one);
        }
    };
    WithLay(coat, [&](auto &&lay) { painter_.PaintWithin(clip, sweep, &buffer_, lay); });
}

void Lane::Paint(const PlacedMasks &masks, const Clip &, const Coat &coat)
{
    const auto &rows = masks.rows;
    const int32_t top = std::max(rows.top, buffer_.Top());
    const int32_t bottom = std::min(rows.Bottom(), buffer_.Top() + buffer_.Height());
    for (int32_t y = top; y < bottom; ++y)
        buffer_.PrefetchRow(y, masks.left, masks.left + masks.width - 1);
    for (int32_t y = top; y < bottom; ++y)
        buffer_.PrefetchMasks(y, masks.left, rows.Row(y));
    for (int32_t y = top; y < bottom; ++y) {
        if (buffer_.SelectRow(y))
            buffer_.PaintMasks(masks.left, rows.Row(y), coat.ink);
    }
}

} // namespace vxhost::raster
