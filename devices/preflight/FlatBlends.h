// Finds blends that a drawing paints as shapes of flat colours, in steps so coarse that they show.
//
// Such a blend is a run of shapes with the same segments, each beside the one before it or upon it, whose inks go one way by small
// amounts. Steps as fine as those of gradients never come here: they are a shading, which outputs paint smoothly.
#pragma once

#include "devices/preflight/PreflightLimits.h"
#include "host/drawing/Device.h"

#include <cstddef>
#include <optional>

namespace vxhost
{

struct CoarseBlend {
    Box box;         // around what shows of its shapes
    double step = 0; // the coarsest, a part of a full ink
};

class FlatBlends
{
  public:
    explicit FlatBlends(const PreflightLimits &limits) : limits_(limits) {}

    // Takes the next shape; visible is what shows of it. Each returns the blend that ends before it, if that is too coarse.
    std::optional<CoarseBlend> Add(const Path &path, const Paint &paint, const Box &visible);
    std::optional<CoarseBlend> End();

  private:
    double ChangeTo(const Path &path, const Paint &paint);

    const PreflightLimits &limits_;
    Path last_;
    Paint paint_;
    Box extent_;               // of the last one
    double direction_[4] = {}; // in which each ink goes; 0: it has not changed yet
    size_t shapes_ = 0;
    CoarseBlend blend_;
};

} // namespace vxhost
