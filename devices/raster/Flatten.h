// Paths as straight lines in sample space.
//
// A curve becomes lines that stay within kFlatness of it at every size, with the same points whether it is
// walked from its start or from its end.
#pragma once

#include "devices/raster/Samples.h"

#include <array>

namespace vxhost::raster
{

struct CurvePoints {
    Point p0, p1, p2, p3;
    int Lines() const;
    Point At(double t) const;
    // These have any length, and 0 where the curve is a point.
    Point DirectionAtStart() const { return FirstVector({p1 - p0, p2 - p0, p3 - p0}); }
    Point DirectionAtEnd() const { return FirstVector({p3 - p2, p3 - p1, p3 - p0}); }

  private:
    static Point FirstVector(const std::array<Point, 3> &vectors)
    {
        for (const Point vector : vectors) {
            if (vector != Point{})
                return vector;
        }
        return {};
    }
};

// Calls sink.Move(p), Line(p), Smooth(p) and Close(); Smooth is a line to a point in the middle of a curve. Each curve is
// between sink.Leave(direction) and sink.Arrive(direction), since its lines have other directions than the curve.
// A curve that stays outside of bounds grown by reach is given as the line to its end.
template <class Sink>
void Flatten(const Path &path, const Matrix &toSamples, const Bounds &bounds, double reach, Sink &&sink)
{
    auto map = [&](const Point &p) {
        const Point q = toSamples.Map(p);
        return Point{ClampFar(q.x), ClampFar(q.y)};
    };
    const Point *next = path.points.data();
    Point current = map({0, 0});
    for (const Verb verb : path.verbs) {
        switch (verb) {
        case Verb::Move:
            current = map(*next++);
            sink.Move(current);
            break;
        case Verb::Line:
            current = map(*next++);
            sink.Line(current);
            break;
        case Verb::Curve: {
            const CurvePoints curve = {current, map(next[0]), map(next[1]), map(next[2])};
            next += 3;
            Extent extent;
            for (const Point p : {curve.p0, curve.p1, curve.p2, curve.p3})
                extent.Add(p);
            const int lines = extent.Misses(bounds, reach) ? 1 : curve.Lines();
            const double step = 1.0 / lines;
            sink.Leave(curve.DirectionAtStart());
            for (int i = 1; i < lines; ++i)
                sink.Smooth(curve.At(i * step));
            current = curve.p3;
            sink.Line(current);
            sink.Arrive(curve.DirectionAtEnd());
            break;
        }
        case Verb::Close:
            sink.Close();
            break;
        }
    }
}

// A sink that closes every subpath, as fills and clips do, and gives its sides to edges->AddEdge(from, to).
template <class Edges>
struct ClosedOutline {
    Edges *edges;
    Point start, current;

    void Move(Point p)
    {
        Close();
        start = current = p;
    }
    void Line(Point p)
    {
        edges->AddEdge(current, p);
        current = p;
    }
    void Smooth(Point p) { Line(p); }
    void Leave(Point) {}
    void Arrive(Point) {}
    void Close()
    {
        if (current != start)
            Line(start);
    }
};

// The box around every point of the path, control points of curves included.
Extent FindExtent(const Path &path, const Matrix &toSamples);

} // namespace vxhost::raster
