#include "devices/raster/GlyphCache.h"

#include <algorithm>
#include <utility>

namespace vxhost::raster
{

namespace
{

constexpr size_t kMostKept = 8;   // fractions of y of a glyph
constexpr size_t kNodeBytes = 64; // of a map and the allocator, about

template <class Item>
size_t BytesOf(const std::vector<Item> &items)
{
    return items.capacity() * sizeof(Item);
}

} // namespace

GlyphSpans *KeptGlyph::SpansFor(int32_t fractionY, bool *isNew)
{
    for (Kept &each : kept_) {
        if (each.fractionY == fractionY) {
            *isNew = false;
            return &each.spans;
        }
    }
    *isNew = true;
    if (kept_.size() < kMostKept)
        return &kept_.emplace_back(Kept{fractionY, {}}).spans;
    Kept &replaced = kept_[oldest_];
    oldest_ = (oldest_ + 1) % kMostKept;
    replaced.fractionY = fractionY;
    return &replaced.spans;
}

size_t KeptGlyph::Bytes() const
{
    size_t bytes = sizeof *this + kNodeBytes + shape.Bytes() + BytesOf(kept_);
    for (const Kept &each : kept_)
        bytes += BytesOf(each.spans.rowEnds) + BytesOf(each.spans.spans);
    return bytes;
}

void GlyphCache::Reset(size_t maxBytes, MemoryCap *cap)
{
    Forget();
    maxBytes_ = maxBytes;
    cap_ = cap;
}

void GlyphCache::Forget()
{
    glyphsOf_.clear();
    glyphs_ = nullptr;
    if (cap_ != nullptr)
        cap_->Return(borrowed_);
    borrowed_ = 0;
    isFull_ = isUsed_ = false;
}

void GlyphCache::GiveBack()
{
    if (isUsed_)
        isFull_ = true;
    else
        Forget();
}

void GlyphCache::SetMatrix(const Matrix &emsToSamples)
{
    const std::array<double, 4> matrix = {emsToSamples.a, emsToSamples.b, emsToSamples.c, emsToSamples.d};
    if (matrix == matrix_)
        return;
    matrix_ = matrix;
    glyphs_ = nullptr;
}

KeptGlyph *GlyphCache::Use(uint64_t number)
{
    if (glyphs_ == nullptr)
        glyphs_ = &glyphsOf_[matrix_];
    isUsed_ = true;
    return &(*glyphs_)[number];
}

void GlyphCache::Release()
{
    isUsed_ = false;
    if (isFull_)
        Forget();
}

void GlyphCache::Account(KeptGlyph *glyph)
{
    const size_t bytes = glyph->Bytes(), before = std::exchange(glyph->accounted, bytes);
    const size_t more = bytes - std::min(before, bytes);
    isFull_ = isFull_ || borrowed_ + more > maxBytes_ || !cap_->Borrow(more, this);
    borrowed_ += isFull_ ? 0 : more;
}

} // namespace vxhost::raster
