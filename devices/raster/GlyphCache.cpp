#include "devices/raster/GlyphCache.h"

#include <algorithm>

namespace vxhost::raster
{

namespace
{

constexpr size_t kMostSpans = 4; // of a glyph
constexpr int kUsesBeforeMasks = 2;
constexpr size_t kMostTurns = 1024; // a glyph with more is of no font that anybody reads
constexpr size_t kNodeBytes = 64;   // of a map and the allocator, about

template <class Item>
size_t BytesOf(const std::vector<Item> &items)
{
    return items.capacity() * sizeof(Item);
}

} // namespace

size_t KeptSpans::Bytes() const
{
    return BytesOf(spans.rowEnds) + BytesOf(spans.spans) + BytesOf(turns_) + BytesOf(placed_) +
           BytesOf(masks_) + maskBytes_;
}

void KeptSpans::Clear()
{
    uses_ = 0;
    turns_.clear();
    placed_.clear();
    masks_.clear();
    maskBytes_ = 0;
}

void KeptSpans::FindTurns(int shift)
{
    constexpr int32_t kSample = 1 << kFractionBits;
    turns_.reserve(spans.spans.size() * 2);
    for (const Span &span : spans.spans) {
        for (const int32_t end : {span.begin, span.end}) {
            // The first fraction that takes the end to the next column.
            const int64_t column = GlyphSpans::ColumnOf(end, 0);
            const auto turn = static_cast<int32_t>((column << kFractionBits) + kSample / 2 + 1 - end);
            if (turn < kSample)
                turns_.push_back(static_cast<uint16_t>(turn));
        }
    }
    std::ranges::sort(turns_);
    turns_.erase(std::unique(turns_.begin(), turns_.end()), turns_.end());
    turns_.shrink_to_fit();
    placed_.assign((turns_.size() + 1) << shift, 0);
}

const GlyphMasks &KeptSpans::FindMasksAt(int32_t fractionX, int shift, GlyphMasks *scratch)
{
    const bool isKept = uses_ >= kUsesBeforeMasks && spans.spans.size() <= kMostTurns / 2;
    if (!isKept) {
        ++uses_;
        FindMasks(spans, fractionX, shift, scratch);
        return *scratch;
    }
    if (placed_.empty())
        FindTurns(shift);
    const auto inSample = static_cast<uint16_t>(fractionX);
    const auto interval = static_cast<size_t>(std::ranges::upper_bound(turns_, inSample) - turns_.begin());
    uint16_t &place =
        placed_[(static_cast<size_t>(fractionX >> kFractionBits)) * (turns_.size() + 1) + interval];
    if (place == 0) {
        GlyphMasks &made = masks_.emplace_back();
        FindMasks(spans, fractionX, shift, &made);
        maskBytes_ += BytesOf(made.masks) + kNodeBytes;
        place = static_cast<uint16_t>(masks_.size());
    }
    return masks_[place - 1U];
}

KeptSpans *KeptGlyph::SpansFor(int32_t fractionY, bool *isNew)
{
    for (KeptSpans &each : spans) {
        if (each.fractionY == fractionY) {
            *isNew = false;
            return &each;
        }
    }
    *isNew = true;
    KeptSpans *room = nullptr;
    if (spans.size() < kMostSpans) {
        room = &spans.emplace_back();
    } else {
        room = &spans[oldest];
        oldest = (oldest + 1) % kMostSpans;
        room->Clear();
    }
    room->fractionY = fractionY;
    return room;
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
    const auto [found, isNew] = glyphs_->try_emplace(number);
    if (isNew)
        Account(0, sizeof(Glyphs::value_type) + kNodeBytes);
    return &found->second;
}

void GlyphCache::Release()
{
    isUsed_ = false;
    if (isFull_)
        Forget();
}

void GlyphCache::Account(size_t before, size_t now)
{
    if (now > before) {
        const size_t more = now - before;
        isFull_ = isFull_ || borrowed_ + more > maxBytes_ || !cap_->Borrow(more, this);
        borrowed_ += isFull_ ? 0 : more;
    } else if (!isFull_) {
        cap_->Return(before - now);
        borrowed_ -= before - now;
    }
}

} // namespace vxhost::raster
