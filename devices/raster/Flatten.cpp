// How many lines a curve needs follows from its second differences, which bound how far a cubic leaves a
// chord; no recursion, hence nothing for a document to make deep.
#include "devices/raster/Flatten.h"

#include "devices/raster/Precision.h"

namespace vxhost::raster
{

int CurvePoints::Lines() const
{
    // Written so that the curve walked backwards gives the same number, to the last bit.
    const Point first = p0 + p2 - p1 * 2;
    const Point second = p1 + p3 - p2 * 2;
    const double bend = std::sqrt(std::max(Dot(first, first), Dot(second, second)));
    const double lines = std::ceil(std::sqrt(bend * (0.75 / kFlatness)));
    return static_cast<int>(std::clamp(lines, 1.0, double{kMaxCurveLines}));
}

Point CurvePoints::At(double t) const
{
    const double s = 1 - t;
    const double a = s * s * s, b = 3 * s * s * t, c = 3 * s * t * t, d = t * t * t;
    return {(a * p0.x + d * p3.x) + (b * p1.x + c * p2.x), (a * p0.y + d * p3.y) + (b * p1.y + c * p2.y)};
}

Extent FindExtent(const Path &path, const Matrix &toSamples)
{
    Extent extent;
    for (const Point p : path.points) {
        const Point q = toSamples.Map(p);
        extent.Add({ClampFar(q.x), ClampFar(q.y)});
    }
    return extent;
}

} // namespace vxhost::raster
