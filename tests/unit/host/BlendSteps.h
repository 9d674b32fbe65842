// Runs of strips and discs as a plug-in paints a blend: places in 16.16, flat colour by flat colour.
#pragma once

#include "host/drawing/Device.h"

#include <algorithm>
#include <cmath>

namespace vxtest
{

constexpr double kUnits = 65536;

inline double ToUnits(double value)
{
    return std::floor(value * kUnits + 0.5) / kUnits;
}

inline vxhost::Paint Gray(double level, bool overprint = false)
{
    return {{vxhost::ColourSpace::Gray, {level, 0, 0, 0}}, overprint};
}
inline vxhost::Paint Cmyk(double c, double m, double y, double k, bool overprint = false)
{
    return {{vxhost::ColourSpace::Cmyk, {c, m, y, k}}, overprint};
}

// Step i of n from the first paint to the second. Powers above 1 make the change slow at first.
inline vxhost::Paint Step(const vxhost::Paint &from, const vxhost::Paint &to, int i, int n, double power = 1)
{
    const double t = std::min(1.0, i * ToUnits(1.0 / std::max(n - 1, 1)));
    vxhost::Paint paint = from;
    for (int k = 0; k < 4; ++k)
        paint.colour.ink[k] += std::pow(t, power) * (to.colour.ink[k] - from.colour.ink[k]);
    return paint;
}

// The part of the unit square from x0 to x1.
inline vxhost::Path Strip(const vxhost::Matrix &m, double x0, double x1)
{
    using vxhost::Verb;
    return {{Verb::Move, Verb::Line, Verb::Line, Verb::Line, Verb::Close},
            {m.Map({x0, 0}), m.Map({x1, 0}), m.Map({x1, 1}), m.Map({x0, 1})}};
}

inline vxhost::Path Disc(const vxhost::Matrix &m, double r)
{
    using vxhost::Verb;
    const double k = ToUnits(r * 36194 / kUnits);
    return {{Verb::Move, Verb::Curve, Verb::Curve, Verb::Curve, Verb::Curve},
            {m.Map({r, 0}), m.Map({r, k}), m.Map({k, r}), m.Map({0, r}), m.Map({-k, r}), m.Map({-r, k}),
             m.Map({-r, 0}), m.Map({-r, -k}), m.Map({-k, -r}), m.Map({0, -r}), m.Map({k, -r}), m.Map({r, -k}),
             m.Map({r, 0})}};
}

inline void FillStrips(vxhost::Device *device, const vxhost::Matrix &m, int n, const vxhost::Paint &from,
                       const vxhost::Paint &to, double power = 1)
{
    const double width = ToUnits(1.0 / n);
    for (int i = 0; i < n; ++i)
        device->FillPath(Strip(m, i * width, i + 1 < n ? (i + 1) * width : 1), Step(from, to, i, n, power));
}

// Paints rings from outside, with radii and colours from outer to inner. The centre of each is moved by shift times 1
// less the place of its colour.
inline void FillDiscs(vxhost::Device *device, const vxhost::Matrix &m, int n, double innerRadius,
                      const vxhost::Paint &inner, double outerRadius, const vxhost::Paint &outer,
                      vxhost::Point shift = {})
{
    const double ring = ToUnits(1.0 / n), thickness = outerRadius - innerRadius;
    for (int i = n - 1; i >= 0; --i) {
        const double t = std::min(1.0, i * ToUnits(1.0 / std::max(n - 1, 1)));
        const double part = std::min(1.0, (i + 1) * ring), place = innerRadius + t * thickness;
        vxhost::Matrix moved = m;
        moved.tx += ToUnits(shift.x * (1 - place));
        moved.ty += ToUnits(shift.y * (1 - place));
        device->FillPath(Disc(moved, innerRadius + ToUnits(part * thickness)), Step(inner, outer, i, n));
    }
}

} // namespace vxtest
