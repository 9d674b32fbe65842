#include "devices/raster/Scanner.h"

#include "devices/raster/Precision.h"

namespace vxhost::raster
{

namespace
{

// Adding this leaves no room for the bits below kPlacement; taking it away again brings the rest back.
constexpr double kRounder = 1.5 * (uint64_t{1} << 52) * kPlacement;

double Snap(double v)
{
    return (v + kRounder) - kRounder;
}

} // namespace

void Scanner::Begin(const Bounds &bounds, uint64_t maxBytes)
{
    bounds_ = bounds;
    maxEdges_ = static_cast<size_t>(maxBytes / sizeof(Edge));
    edges_.clear();
    first_ = bounds.bottom;
    last_ = bounds.top;
}

void Scanner::AddEdge(Point from, Point to)
{
    const double fromY = Snap(from.y), toY = Snap(to.y);
    const bool up = toY < fromY;
    const double top = up ? toY : fromY, bottom = up ? fromY : toY;
    const int32_t begin = FirstCentre(top, bounds_.top, bounds_.bottom);
    const int32_t end = FirstCentre(bottom, bounds_.top, bounds_.bottom);
    if (begin >= end || IsOverfull())
        return;
    const double fromX = Snap(from.x), toX = Snap(to.x);
    const double x = up ? toX : fromX;
    const double slope = ((up ? fromX : toX) - x) / (bottom - top);
    edges_.push_back({x, top, slope, begin, end, up ? 1 : 0});
    first_ = std::min(first_, begin);
    last_ = std::max(last_, end);
}

} // namespace vxhost::raster
