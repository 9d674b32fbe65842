// Paths as devices receive them: points of the page, the matrix already applied.
//
// Page space is the document's own: points of 1/72 inch, y up. Coordinates are doubles, which hold every
// 16.16 number exactly, so a device may still print the document's own digits.
#pragma once

#include <cstdint>
#include <vector>

namespace vxhost
{

struct Point {
    double x = 0;
    double y = 0;
    friend bool operator==(const Point &, const Point &) = default;
};

// Maps (x, y) to (a·x + c·y + tx, b·x + d·y + ty).
struct Matrix {
    double a = 1, b = 0, c = 0, d = 1, tx = 0, ty = 0;

    Point Map(Point p) const { return {a * p.x + c * p.y + tx, b * p.x + d * p.y + ty}; }
    friend bool operator==(const Matrix &, const Matrix &) = default;
};

// The matrix that maps by first, then by second.
inline Matrix Product(const Matrix &first, const Matrix &second)
{
    return {first.a * second.a + first.b * second.c,
            first.a * second.b + first.b * second.d,
            first.c * second.a + first.d * second.c,
            first.c * second.b + first.d * second.d,
            first.tx * second.a + first.ty * second.c + second.tx,
            first.tx * second.b + first.ty * second.d + second.ty};
}

// What the matrix makes of a difference between two points.
inline Point MapVector(const Matrix &matrix, Point vector)
{
    return {matrix.a * vector.x + matrix.c * vector.y, matrix.b * vector.x + matrix.d * vector.y};
}

// The area of what the matrix makes of the unit square, below 0 where it mirrors.
inline double Determinant(const Matrix &m)
{
    return m.a * m.d - m.b * m.c;
}

// The way back. The determinant may not be 0.
inline Matrix Inverse(const Matrix &m)
{
    const double area = Determinant(m);
    return {m.d / area,
            -m.b / area,
            -m.c / area,
            m.a / area,
            (m.c * m.ty - m.d * m.tx) / area,
            (m.b * m.tx - m.a * m.ty) / area};
}

// How many points follow each verb: 1, 1, 3, 0.
enum class Verb : uint8_t { Move, Line, Curve, Close };

// Every subpath starts with Move; after Close a new Move follows, or the path ends. A lone Move is kept.
struct Path {
    std::vector<Verb> verbs;
    std::vector<Point> points;

    friend bool operator==(const Path &, const Path &) = default;
    bool IsEmpty() const { return verbs.empty(); }
    // Keeps the storage, so that a path of the same size costs no allocation.
    void Clear()
    {
        verbs.clear();
        points.clear();
    }
};

// Appends an outline of a glyph. One that the matrix mirrors keeps the direction of its contours all the same, so that
// glyphs unite.
void AppendOutline(const Path &outline, const Matrix &matrix, Path *to);

// Appends the path with each subpath closed and drawn from its other end.
void AppendReversed(const Path &from, const Matrix &matrix, Path *to);

} // namespace vxhost
