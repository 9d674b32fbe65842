// Tells whether paints cover a point, as they cover a pixel of a picture: under the clip, with dashes, joins and thin lines.
#pragma once

#include "host/drawing/Paint.h"
#include "host/drawing/Path.h"

#include <memory>

namespace vxhost
{

class PointProbe
{
  public:
    // Lines that are thinner than within, points, are taken to be as wide as that.
    static std::unique_ptr<PointProbe> Make(Point at, double within);

    PointProbe() = default;
    PointProbe(const PointProbe &) = delete;
    PointProbe &operator=(const PointProbe &) = delete;
    virtual ~PointProbe() = default;

    virtual void Save() = 0;
    virtual void Restore() = 0;
    virtual void ClipPath(const Path &path) = 0;
    virtual bool IsFilled(const Path &path) = 0;
    virtual bool IsStroked(const Path &path, const StrokeStyle &style) = 0;
    virtual bool IsOutOfMemory() const = 0;
};

} // namespace vxhost
