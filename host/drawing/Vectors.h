// Arithmetic of points, of the differences between them, and of circles.
#pragma once

#include "host/drawing/Path.h"

#include <cmath>

namespace vxhost
{

// The control points of a quarter of the unit circle lie this far along its tangents.
inline constexpr double kArcControl = 0.5522847498307936;

inline Point operator+(Point a, Point b)
{
    return {a.x + b.x, a.y + b.y};
}
inline Point operator-(Point a, Point b)
{
    return {a.x - b.x, a.y - b.y};
}
inline Point operator*(Point a, double f)
{
    return {a.x * f, a.y * f};
}
inline double Dot(Point a, Point b)
{
    return a.x * b.x + a.y * b.y;
}
inline double Cross(Point a, Point b)
{
    return a.x * b.y - a.y * b.x;
}
inline double Length(Point a)
{
    return std::sqrt(Dot(a, a));
}
inline bool AreNear(Point a, Point b, double distance)
{
    return std::abs(a.x - b.x) <= distance && std::abs(a.y - b.y) <= distance;
}

} // namespace vxhost
