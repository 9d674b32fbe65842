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

class GlyphPainter::PlacedSpans
{
  public:
    PlacedSpans(const GlyphSpans &spans, const GlyphPlace &place, int shift, const Bounds &limits,
                std::vector<Span> *row)
        : spans_(spans), place_(place), left_(place.pixelX << shift),
          top_((place.pixelY << shift) + spans.top), limits_(limits), row_(row)
    {
    }

    template <class Row>
    void Sweep(Row &&use) const
    {
        const auto rows = static_cast<int32_t>(spans_.rowEnds.size());
        for (int32_t row = std::max(limits_.top - top_, 0); row < std::min(limits_.bottom - top_, rows);
             ++row) {
            row_->clear();
            for (const Span &span : spans_.Row(static_cast<size_t>(row))) {
                const int32_t begin = ColumnOf(span.begin), end = ColumnOf(span.end);
                if (begin < end)
                    row_->push_back({begin, end});
            }
            if (!row_->empty())
                use(top_ + row, std::span<const Span>(*row_));
        }
    }

  private:
    int32_t ColumnOf(int32_t end) const
    {
        const int64_t column = left_ + GlyphSpans::ColumnOf(end, place_.fractionX);
        return static_cast<int32_t>(std::clamp<int64_t>(column, limits_.left, limits_.right));
    }

    const GlyphSpans &spans_;
    const GlyphPlace &place_;
    const int32_t left_, top_;
    const Bounds &limits_;
    std::vector<Span> *const row_;
};

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
                         InkBuffer *buffer)
{
    Target target = {{}, &clip, buffer};
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
    const PlacedSpans placed(spans, target.place, shift_, target.clip->Limits(), &row_);
    painter_.Paint(placed, *target.clip, target.buffer, [&](int /*y*/, int left, int right, uint64_t mask) {
        target.buffer->Paint(left, right, mask, ink_);
    });
}

void GlyphPainter::PaintMasks(const GlyphSpans &spans, const Target &target)
{
    finder_.Find(spans, target.place.fractionX, 1 << shift_, &masks_);
    const GlyphMasks &masks = masks_;
    const int32_t left = target.place.pixelX + masks.left, top = target.place.pixelY + masks.top;
    const auto rows = static_cast<int32_t>(masks.rowEnds.size());
    for (int32_t row = 0; row < rows; ++row)
        target.buffer->PrefetchRow(top + row, left, left + masks.width - 1);
    for (int32_t row = 0; row < rows; ++row)
        target.buffer->PrefetchMasks(top + row, left, masks.Row(static_cast<size_t>(row)));
    for (int32_t row = 0; row < rows; ++row) {
        if (target.buffer->SelectRow(top + row))
            target.buffer->PaintMasks(left, masks.Row(static_cast<size_t>(row)), ink_);
    }
}

} // namespace vxhost::raster
