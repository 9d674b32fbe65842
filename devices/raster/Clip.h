// The clip: which samples may be painted.
//
// A rectangle is only its bounds. Anything else has a mask, a list of spans for each row, which never
// changes once it is made: clips that are saved share it.
#pragma once

#include "devices/raster/MemoryCap.h"
#include "devices/raster/Scanner.h"

#include <algorithm>
#include <memory>
#include <span>
#include <vector>

namespace vxhost::raster
{

class Clip
{
  public:
    Clip() = default;
    explicit Clip(const Bounds &bounds) : bounds_(bounds) {}

    // Nothing outside of these can be painted.
    const Bounds &Limits() const { return bounds_; }
    bool IsRectangle() const { return mask_ == nullptr; }
    // Returns whether they are one clip; two that allow the same may be two.
    bool operator==(const Clip &) const = default;

    // The part of the shape in the scanner, which was begun with Limits(), that lies in this clip. An empty
    // clip when the budget does not last.
    Clip Intersect(Scanner *shape, MemoryCap *budget) const;

    // The part of one row's spans that lies in this clip; valid until either spans or scratch change.
    std::span<const Span> Intersect(int32_t y, std::span<const Span> spans, std::vector<Span> *scratch) const
    {
        if (mask_ == nullptr)
            return spans;
        return IntersectMask(y, spans, scratch);
    }

    // Calls row(y, spans) for each row of samples that the clip allows, of those from top to bottom, as a sweeper does for a
    // shape.
    template <class Row>
    void Sweep(int32_t top, int32_t bottom, Row &&row) const
    {
        const Span all = {bounds_.left, bounds_.right};
        const int32_t end = std::min(bottom, bounds_.bottom);
        for (int32_t y = std::max(top, bounds_.top); y < end && all.begin < all.end; ++y) {
            const std::span<const Span> spans = mask_ == nullptr ? std::span(&all, 1) : MaskRow(y);
            if (!spans.empty())
                row(y, spans);
        }
    }

  private:
    struct Mask;
    std::span<const Span> MaskRow(int32_t y) const;
    std::span<const Span> IntersectMask(int32_t y, std::span<const Span> spans,
                                        std::vector<Span> *scratch) const;

    Bounds bounds_;
    std::shared_ptr<const Mask> mask_;
};

// The clips of save and restore. A save costs nothing until the clip changes after it.
class ClipStack
{
  public:
    void Reset(const Bounds &page) { levels_.assign(1, {Clip(page), 0}); }
    const Clip &Top() const { return levels_.back().clip; }
    void Save() { ++levels_.back().saves; }
    bool Restore(); // false when there is nothing to restore
    void Replace(Clip clip);

  private:
    struct Level {
        Clip clip;
        uint64_t saves; // made since this clip was set and not yet restored
    };
    std::vector<Level> levels_ = {Level{}};
};

} // namespace vxhost::raster
