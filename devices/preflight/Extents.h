// Measures what shapes cover on the page: the boxes around them, and how thin a stroke is.
#pragma once

#include "host/drawing/Device.h"

#include <limits>

namespace vxhost
{

// A box that holds nothing, and grows with what is added to it.
inline constexpr Box kNoBox = {
    std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity(),
    -std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};
// A box that holds everything.
inline constexpr Box kEverywhere = {kNoBox.right, kNoBox.top, kNoBox.left, kNoBox.bottom};

// Nothing is in it. A line or a point has no area, and is something.
inline bool IsEmpty(const Box &box)
{
    return !(box.left <= box.right && box.bottom <= box.top);
}
Box Intersection(const Box &a, const Box &b);
Box Union(const Box &a, const Box &b);
Box Grown(const Box &box, double by);
void Include(Point point, Box *box);

// The box around a path, curves where they are; lone moves do not count.
Box ExtentOf(const Path &path);
Box ExtentOf(const Shading &shading);

// The letters of a glyph are taken to stand between its baseline and seven tenths of an em above.
Box ExtentOf(const GlyphRun &run, const PlacedGlyph &glyph);

// How far a box goes beyond the page on the side where that is farthest, and the part of it that lies there; 0: it does not.
struct Excess {
    double distance = 0;
    Box part;
};
Excess ExcessOf(const Box &box, const Box &page);

// The narrower and the wider side of the pen that strokes, on the page.
struct PenWidths {
    double narrow = 0, wide = 0;
};
PenWidths WidthsOf(const StrokeStyle &style);

// How wide the line is where it is thinnest, across its way: a pen that the matrix flattens makes a line of one width along
// its long side, of another across it.
double ThinnestWidth(const Path &path, const StrokeStyle &style);

} // namespace vxhost
