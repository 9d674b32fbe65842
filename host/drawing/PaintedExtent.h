// Finds the box of what a drawing paints, whatever the colour.
//
// Fills and strokes are measured exactly, joins and caps as they are drawn; a dashed line counts as a whole one, and a clip by its
// box.
#pragma once

#include "host/drawing/Device.h"

#include <optional>
#include <vector>

namespace vxhost
{

class PaintedExtent final : public Device
{
  public:
    // Nothing: nothing is painted.
    const std::optional<Box> &Found() const { return found_; }

    void BeginPage(const Page &page) override;
    void Save() override { clips_.push_back(clips_.back()); }
    void Restore() override { clips_.pop_back(); }
    void ClipPath(const Path &path) override;
    void FillPath(const Path &path, const Paint &paint) override;
    void StrokePath(const Path &path, const StrokeStyle &style, const Paint &paint) override;
    void Shade(const Shading &shading) override;
    Failure EndPage() override { return {}; }

  private:
    void Add(const Box &painted);

    std::vector<Box> clips_ = {{}}; // one for each state that is saved, the present one last
    std::optional<Box> found_;
};

} // namespace vxhost
