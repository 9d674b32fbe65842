#include "host/drawing/Shading.h"

#include "host/drawing/Device.h"

namespace vxhost
{

namespace
{

// Control points of a quarter of the unit circle lie this far along its tangents.
constexpr double kQuarter = 0.5522847498307936;

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
            {at(1, 0), at(1, kQuarter), at(kQuarter, 1), at(0, 1), at(-kQuarter, 1), at(-1, kQuarter),
             at(-1, 0), at(-1, -kQuarter), at(-kQuarter, -1), at(0, -1), at(kQuarter, -1), at(1, -kQuarter),
             at(1, 0)}};
}

} // namespace

void PaintAsShapes(const Shading &shading, Device *device)
{
    for (const ColourSpan &span : shading.spans) {
        const double step = (span.to - span.from) / static_cast<double>(span.colours.size());
        for (size_t i = 0; i < span.colours.size(); ++i) {
            const double from = span.from + step * static_cast<double>(i);
            const bool isLast = i + 1 == span.colours.size();
            const double to = isLast ? span.to : span.from + step * static_cast<double>(i + 1);
            const double radius = Between({shading.first.radius, 0}, {shading.last.radius, 0}, from).x;
            const Path shape =
                shading.kind == ShadingKind::Axial
                    ? Strip(shading.matrix, from, to)
                    : Disc(shading.matrix, Between(shading.first.centre, shading.last.centre, from), radius);
            device->FillPath(shape, {span.colours[i], shading.overprint});
        }
    }
}

} // namespace vxhost
