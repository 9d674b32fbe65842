#include "host/drawing/Shading.h"

#include "host/drawing/Device.h"
#include "host/drawing/Vectors.h"

namespace vxhost
{

namespace
{

// So much of the distance at which the circles touch.
constexpr double kMostOffCentre = 0.99;

Point Between(Point from, Point to, double t)
{
    return {from.x + (to.x - from.x) * t, from.y + (to.y - from.y) * t};
}

Path Strip(const Matrix &matrix, double from, double to)
{
    return {{Verb::Move, Verb::Line, Verb::Line, Verb::Line, Verb::Close},
            {matrix.Map({from, 0}), matrix.Map({to, 0}), matrix.Map({to, 1}), matrix.Map({from, 1})}};
}

Path Disc(const Matrix &matrix, Point centre, double radius)
{
    const auto at = [&](double x, double y) {
        return matrix.Map({centre.x + x * radius, centre.y + y * radius});
    };
    return {{Verb::Move, Verb::Curve, Verb::Curve, Verb::Curve, Verb::Curve, Verb::Close},
            {at(1, 0), at(1, kArcControl), at(kArcControl, 1), at(0, 1), at(-kArcControl, 1),
             at(-1, kArcControl), at(-1, 0), at(-1, -kArcControl), at(-kArcControl, -1), at(0, -1),
             at(kArcControl, -1), at(1, -kArcControl), at(1, 0)}};
}

} // namespace

bool AreNested(const Shading::Circle &outer, const Shading::Circle &inner)
{
    return inner.radius >= 0 && inner.radius < outer.radius &&
           Length(inner.centre - outer.centre) <= (outer.radius - inner.radius) * kMostOffCentre;
}

Path OutlineOf(const Shading &shading, double from, double to)
{
    if (shading.kind == ShadingKind::Axial)
        return Strip(shading.matrix, from, to);
    if (from == 0 && !shading.ground.IsEmpty())
        return shading.ground;
    const Shading::Circle &first = shading.first, &last = shading.last;
    return Disc(shading.matrix, Between(first.centre, last.centre, from),
                first.radius + (last.radius - first.radius) * from);
}

void PaintAsShapes(const Shading &shading, Device *device)
{
    for (const ColourSpan &span : shading.spans) {
        const size_t count = span.colours.size();
        const auto at = [&](size_t i) {
            const double part = static_cast<double>(i) / static_cast<double>(count);
            return i < count ? span.from + (span.to - span.from) * part : span.to;
        };
        for (size_t i = 0; i < count; ++i)
            device->FillPath(OutlineOf(shading, at(i), at(i + 1)), {span.colours[i], shading.overprint});
    }
}

} // namespace vxhost
