#include "devices/raster/GlyphPainter.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace vxhost::raster
{

namespace
{

// Of larger ones there are few on a page, and what they cover is too much to keep.
constexpr double kMostPixelsAnEm = 48;

// Glyphs are painted by masks where a pixel has so many samples a side, and they have so many, and by spans elsewhere.
constexpr int kMostSamplesOfMasks = 4;
constexpr int32_t kMostWidthOfMasks = 1024;

} // namespace

void GlyphPainter::Reset(int samples, size_t maxBytes, MemoryCap *cap)
{
    shift_ = std::countr_zero(static_cast<unsigned>(samples));
    keeps_ = maxBytes > 0;
    cache_.Reset(maxBytes, cap);
}

bool GlyphPainter::CanPaint(const Matrix &emsToSamples) const
{
    // Written so that what is not a number is too large.
    const double most = kMostPixelsAnEm * (1 << shift_);
    return Length({emsToSamples.a, emsToSamples.b}) <= most &&
           Length({emsToSamples.c, emsToSamples.d}) <= most;
}

void GlyphPainter::Begin(const Matrix &emsToSamples, const Ink &ink)
{
    matrix_ = {emsToSamples.a, emsToSamples.b, emsToSamples.c, emsToSamples.d, 0, 0};
    ink_ = ink;
    cache_.SetMatrix(matrix_);
}

bool GlyphPainter::Paint(const Path &outline, uint64_t number, Point origin, const Clip &clip,
                         Surface *surface)
{
    Target target = {{}, &clip, surface};
    if (ink_.keep == ~InkWord{0} || !FindPlace(origin, shift_, &target.place))
        return true; // nothing of it would be seen
    if (!keeps_ || number == 0)
        return PaintFresh(outline, target);
    KeptGlyph *const glyph = cache_.Use(number);
    const bool fits = PaintKept(outline, target, glyph);
    cache_.Release();
    return fits;
}

bool GlyphPainter::PaintFresh(const Path &outline, const Target &target)
{
    if (!shape_.Make(outline, matrix_))
        return false;
    scanner_.Find(shape_, target.place.fractionY, &spans_);
    PaintSpans(spans_, target);
    return true;
}

bool GlyphPainter::PaintKept(const Path &outline, const Target &target, KeptGlyph *glyph)
{
    if (!std::exchange(glyph->isMade, true)) {
        glyph->fits = glyph->shape.Make(outline, matrix_);
        cache_.Account(glyph);
    }
    if (!glyph->fits)
        return false;
    const Bounds box = glyph->shape.BoundsAt(target.place, shift_), &limits = target.clip->Limits();
    if (box.right <= limits.left || limits.right <= box.left || box.bottom <= limits.top ||
        limits.bottom <= box.top)
        return true;
    bool isNew = false;
    GlyphSpans *const spans = glyph->SpansFor(target.place.fractionY, &isNew);
    if (isNew) {
        scanner_.Find(glyph->shape, target.place.fractionY, spans);
        cache_.Account(glyph);
    }
    const bool isInside = limits.left <= box.left && box.right <= limits.right && limits.top <= box.top &&
                          box.bottom <= limits.bottom;
    if (isInside && target.clip->IsRectangle() && 1 << shift_ <= kMostSamplesOfMasks &&
        box.right - box.left <= kMostWidthOfMasks)
        PaintMasks(*spans, target);
    else
        PaintSpans(*spans, target);
    return true;
}

void GlyphPainter::PaintSpans(const GlyphSpans &spans, const Target &target)
{
    const Bounds &limits = target.clip->Limits();
    const int32_t left = target.place.pixelX << shift_, first = (target.place.pixelY << shift_) + spans.top;
    const auto columnOf = [&](int32_t end) {
        const int64_t column = left + GlyphSpans::ColumnOf(end, target.place.fractionX);
        return static_cast<int32_t>(std::clamp<int64_t>(column, limits.left, limits.right));
    };
    const int32_t top = std::max(limits.top, first);
    const int32_t bottom = std::min(limits.bottom, first + static_cast<int32_t>(spans.rowEnds.size()));
    placed_.clear();
    placedEnds_.clear();
    for (int32_t y = top; y < bottom; ++y) {
        for (const Span &span : spans.Row(static_cast<size_t>(y - first))) {
            const int32_t begin = columnOf(span.begin), end = columnOf(span.end);
            if (begin < end)
                placed_.push_back({begin, end});
        }
        placedEnds_.push_back(static_cast<uint32_t>(placed_.size()));
    }
    if (!placed_.empty())
        target.surface->Paint(PlacedSpans{top, placedEnds_, placed_}, *target.clip, {ink_});
}

void GlyphPainter::PaintMasks(const GlyphSpans &spans, const Target &target)
{
    finder_.Find(spans, target.place.fractionX, 1 << shift_, &masks_);
    const PlacedRows<MaskedRun> rows = {target.place.pixelY + masks_.top, masks_.rowEnds, masks_.runs};
    target.surface->Paint(PlacedMasks{rows, target.place.pixelX + masks_.left, masks_.width}, *target.clip,
                          {ink_});
}

} // namespace vxhost::raster
