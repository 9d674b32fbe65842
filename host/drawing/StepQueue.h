// Step queue: shapes held back because they may be the steps of a blend, with their paints and where each begins.
#pragma once

#include "host/drawing/ColourRamp.h"

#include <span>
#include <vector>

namespace vxhost
{

template <class Shape>
class StepQueue
{
  public:
    bool IsEmpty() const { return Size() == 0; }
    // When there is one step more than a blend can have, it is settled what the first of them are.
    bool IsFull() const { return Size() > kMaxRampSteps; }

    // start grows from step to step of a blend.
    void Push(const Shape &shape, const Paint &paint, double start)
    {
        shapes_.push_back(shape);
        paints_.push_back(paint);
        starts_.push_back(start);
    }
    void Pop(size_t count)
    {
        begin_ += count;
        if (!IsEmpty() && begin_ <= kMaxRampSteps)
            return;
        const auto end = static_cast<ptrdiff_t>(begin_);
        shapes_.erase(shapes_.begin(), shapes_.begin() + end);
        paints_.erase(paints_.begin(), paints_.begin() + end);
        starts_.erase(starts_.begin(), starts_.begin() + end);
        begin_ = 0;
    }

    // How many steps, from the first on, are one blend; 0: they are none.
    size_t CountRamp() const { return CountRampSteps(Paints(Size()), Starts(Size())); }

    std::span<const Shape> Shapes(size_t count) const { return std::span(shapes_).subspan(begin_, count); }
    std::span<const Paint> Paints(size_t count) const { return std::span(paints_).subspan(begin_, count); }
    std::span<const double> Starts(size_t count) const { return std::span(starts_).subspan(begin_, count); }
    const Shape &Front() const { return shapes_[begin_]; }
    const Shape &Back() const { return shapes_.back(); }
    const Paint &BackPaint() const { return paints_.back(); }

  private:
    size_t Size() const { return shapes_.size() - begin_; }

    std::vector<Shape> shapes_;
    std::vector<Paint> paints_;
    std::vector<double> starts_;
    size_t begin_ = 0; // the shapes before it have been taken
};

} // namespace vxhost
