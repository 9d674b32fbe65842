#include "devices/preflight/Extents.h"

#include "host/drawing/Vectors.h"

#include <algorithm>
#include <cmath>

namespace vxhost
{

namespace
{

// Adds where a curve turns in one direction, the ends of which are in the box.
template <typename Add>
void AddTurns(double p0, double p1, double p2, double p3, Add &&add)
{
    // The derivative is a t² + b t + c, but for a factor.
    const double a = p3 - 3 * p2 + 3 * p1 - p0, b = 2 * (p2 - 2 * p1 + p0), c = p1 - p0;
    const auto addAt = [&](double t) {
        if (!(t > 0 && t < 1))
            return;
        const double s = 1 - t;
        add(s * s * s * p0 + 3 * s * s * t * p1 + 3 * s * t * t * p2 + t * t * t * p3);
    };
    const double root = b * b - 4 * a * c;
    if (root < 0)
        return;
    // One of the two quotients stays exact where the other loses its digits.
    const double q = -(b + std::copysign(std::sqrt(root), b)) / 2;
    if (a != 0)
        addAt(q / a);
    if (q != 0)
        addAt(c / q);
}

void IncludeCurve(Point p0, const Point *to, Box *box)
{
    Include(to[2], box);
    AddTurns(p0.x, to[0].x, to[1].x, to[2].x, [box](double x) {
        box->left = std::min(box->left, x);
        box->right = std::max(box->right, x);
    });
    AddTurns(p0.y, to[0].y, to[1].y, to[2].y, [box](double y) {
        box->bottom = std::min(box->bottom, y);
        box->top = std::max(box->top, y);
    });
}

// Calls use(verb, from, points) for each line and curve; the line that closes a subpath is one.
template <typename Use>
void ForSegments(const Path &path, Use &&use)
{
    const Point *next = path.points.data();
    Point start, current;
    for (const Verb verb : path.verbs) {
        switch (verb) {
        case Verb::Move:
            start = current = *next++;
            break;
        case Verb::Line:
            use(verb, current, next);
            current = *next++;
            break;
        case Verb::Curve:
            use(verb, current, next);
            current = next[2];
            next += 3;
            break;
        case Verb::Close:
            use(Verb::Line, current, &start);
            current = start;
            break;
        }
    }
}

} // namespace

Box Intersection(const Box &a, const Box &b)
{
    return {std::max(a.left, b.left), std::max(a.bottom, b.bottom), std::min(a.right, b.right),
            std::min(a.top, b.top)};
}

Box Union(const Box &a, const Box &b)
{
    return {std::min(a.left, b.left), std::min(a.bottom, b.bottom), std::max(a.right, b.right),
            std::max(a.top, b.top)};
}

Box Grown(const Box &box, double by)
{
    return {box.left - by, box.bottom - by, box.right + by, box.top + by};
}

void Include(Point point, Box *box)
{
    *box = Union(*box, {point.x, point.y, point.x, point.y});
}

Box ExtentOf(const Path &path)
{
    Box box = kNoBox;
    ForSegments(path, [&box](Verb verb, Point from, const Point *to) {
        Include(from, &box);
        if (verb == Verb::Curve)
            IncludeCurve(from, to, &box);
        else
            Include(*to, &box);
    });
    return box;
}

// The last circle may lie beyond the first one.
Box ExtentOf(const Shading &shading)
{
    return Union(ExtentOf(OutlineOf(shading, 0, 1)), ExtentOf(OutlineOf(shading, 1, 1)));
}

Box ExtentOf(const GlyphRun &run, const PlacedGlyph &glyph)
{
    constexpr double kHeight = 0.7; // ems
    const double width = run.isColumn ? 1 : glyph.advance;
    Box box = kNoBox;
    for (const Point corner : {Point{0, 0}, Point{width, 0}, Point{width, kHeight}, Point{0, kHeight}})
        Include(glyph.origin + MapVector(run.matrix, corner), &box);
    return box;
}

Excess ExcessOf(const Box &box, const Box &page)
{
    const Excess sides[] = {{page.left - box.left, {box.left, box.bottom, page.left, box.top}},
                            {page.bottom - box.bottom, {box.left, box.bottom, box.right, page.bottom}},
                            {box.right - page.right, {page.right, box.bottom, box.right, box.top}},
                            {box.top - page.top, {box.left, page.top, box.right, box.top}}};
    const Excess most = *std::ranges::max_element(sides, {}, &Excess::distance);
    return most.distance > 0 ? most : Excess();
}

PenWidths WidthsOf(const StrokeStyle &style)
{
    // The matrix turns the unit circle into an ellipse, whose half axes are its singular values.
    const Matrix &m = style.matrix;
    const double sum = Length({m.a + m.d, m.b - m.c}), difference = Length({m.a - m.d, m.b + m.c});
    return {style.width * std::abs(sum - difference) / 2, style.width * (sum + difference) / 2};
}

double ThinnestWidth(const Path &path, const StrokeStyle &style)
{
    const PenWidths pen = WidthsOf(style);
    double thinnest = pen.wide;
    bool isAny = false;
    const auto take = [&](Point way) {
        const double length = Length(way);
        if (length == 0)
            return;
        isAny = true;
        const Point across = Point{-way.y, way.x} * (1 / length);
        const Matrix &m = style.matrix;
        const Point inUser = {Dot({m.a, m.b}, across), Dot({m.c, m.d}, across)};
        thinnest = std::min(thinnest, style.width * Length(inUser));
    };
    // A curve takes no other directions than those between the legs of its control points.
    ForSegments(path, [&](Verb verb, Point from, const Point *to) {
        take(to[0] - from);
        if (verb != Verb::Curve)
            return;
        take(to[1] - to[0]);
        take(to[2] - to[1]);
    });
    return isAny ? thinnest : pen.narrow;
}

} // namespace vxhost
