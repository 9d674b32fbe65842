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

// How many points follow each verb: 1, 1, 3, 0.
enum class Verb : uint8_t { Move, Line, Curve, Close };

// Every subpath starts with Move; after Close a new Move follows, or the path ends. A lone Move is kept.
struct Path {
    std::vector<Verb> verbs;
    std::vector<Point> points;

    bool IsEmpty() const { return verbs.empty(); }
    // Keeps the storage, so that a path of the same size costs no allocation.
    void Clear()
    {
        verbs.clear();
        points.clear();
    }
};

} // namespace vxhost
