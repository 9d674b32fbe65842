// A mask whose rows are all alike is a rectangle, however the document drew it, and is kept as one: clipping
// to rectangles is what documents do most.
#include "devices/raster/Clip.h"

#include <utility>

namespace vxhost::raster
{

struct Clip::Mask {
    int32_t top = 0;
    std::vector<size_t> rowStart; // places in spans: one for each row, and the end
    std::vector<Span> spans;
    MemoryCap *budget = nullptr;
    uint64_t bytes = 0;

    Mask() = default;
    Mask(const Mask &) = delete;
    Mask &operator=(const Mask &) = delete;
    ~Mask()
    {
        if (budget != nullptr)
            budget->Give(bytes);
    }

    std::span<const Span> Row(int32_t y) const
    {
        const auto row = static_cast<size_t>(y - top);
        return std::span(spans).subspan(rowStart[row], rowStart[row + 1] - rowStart[row]);
    }
    bool HasEqualRows() const
    {
        for (size_t row = 0; row + 1 < rowStart.size(); ++row) {
            if (rowStart[row + 1] - rowStart[row] != 1 || spans[row] != spans[0])
                return false;
        }
        return true;
    }
};

Clip Clip::Intersect(Scanner *shape, MemoryCap *budget) const
{
    auto mask = std::make_shared<Mask>();
    Bounds bounds = {bounds_.right, bounds_.bottom, bounds_.left, bounds_.top};
    std::vector<Span> scratch;
    // Twice: a vector that grows holds the old and the new.
    const auto maxSpans =
        static_cast<size_t>(std::min<uint64_t>(budget->Left() / (2 * sizeof(Span)), SIZE_MAX));
    int32_t nextRow = 0;
    shape->Sweep([&](int32_t y, std::span<const Span> spans) {
        const std::span<const Span> visible = Intersect(y, spans, &scratch);
        if (visible.empty() || budget->IsExhausted())
            return;
        if (mask->spans.size() + visible.size() > maxSpans) {
            budget->Fail();
            return;
        }
        if (mask->spans.empty())
            bounds.top = mask->top = nextRow = y;
        for (; nextRow <= y; ++nextRow) // rows without a span begin where this one does
            mask->rowStart.push_back(mask->spans.size());
        mask->spans.insert(mask->spans.end(), visible.begin(), visible.end());
        bounds.left = std::min(bounds.left, visible.front().begin);
        bounds.right = std::max(bounds.right, visible.back().end);
        bounds.bottom = y + 1;
    });
    if (mask->spans.empty() || budget->IsExhausted())
        return Clip(Bounds{});
    mask->rowStart.push_back(mask->spans.size());

    Clip clip(bounds);
    if (mask->HasEqualRows())
        return clip;
    mask->rowStart.shrink_to_fit();
    mask->spans.shrink_to_fit();
    const uint64_t bytes = mask->spans.size() * sizeof(Span) + mask->rowStart.size() * sizeof(size_t);
    if (!budget->Take(bytes))
        return Clip(Bounds{});
    mask->budget = budget;
    mask->bytes = bytes;
    clip.mask_ = std::move(mask);
    return clip;
}

std::span<const Span> Clip::MaskRow(int32_t y) const
{
    return mask_->Row(y);
}

std::span<const Span> Clip::IntersectMask(int32_t y, std::span<const Span> spans,
                                          std::vector<Span> *scratch) const
{
    scratch->clear();
    const std::span<const Span> mine = mask_->Row(y);
    auto a = mine.begin();
    if (mine.size() > 8) // a small shape in a large clip: skip what ends before it
        a = std::partition_point(a, mine.end(), [&](const Span &s) { return s.end <= spans.front().begin; });
    for (auto b = spans.begin(); a != mine.end() && b != spans.end();) {
        const int32_t begin = std::max(a->begin, b->begin);
        const int32_t end = std::min(a->end, b->end);
        if (begin < end)
            scratch->push_back({begin, end});
        if (a->end < b->end)
            ++a;
        else
            ++b;
    }
    return *scratch;
}

bool ClipStack::Restore()
{
    if (levels_.back().saves > 0)
        --levels_.back().saves;
    else if (levels_.size() > 1)
        levels_.pop_back();
    else
        return false;
    return true;
}

void ClipStack::Replace(Clip clip)
{
    if (levels_.back().saves == 0) {
        levels_.back().clip = std::move(clip);
        return;
    }
    --levels_.back().saves; // popping the new level is that restore
    levels_.push_back({std::move(clip), 0});
}

} // namespace vxhost::raster
