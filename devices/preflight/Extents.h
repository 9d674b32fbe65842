// Measures what shapes cover on the page: the boxes around them, and how thin a stroke is.
#pragma once

#include "host/drawing/Device.h"

#include <limits>

namespace vxhost
{

// This box holds nothing, and grows with what is added to it.
inline constexpr Box kNoBox = {
    std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity(),
    -std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};
// This one holds everything.
inline constexpr Box kEverywhere = {kNoBox.right, kNoBox.top, kNoBox.left, kNoBox.bottom};

// Returns whether nothing is in it. A line or a point has no area, and is something.
inline bool IsEmpty(const Box &box)
{
    return !(box.left <= box.right && box.bottom <= box.top);
}
Box Intersection(const Box &a, const Box &b);
Box Union(const Box &a, const Box &b);
Box Grown(const Box &box, double by);
void Include(Point point, Box *box);

// Returns the box around a path, curves where they are; lone moves do not count.
Box ExtentOf(const Path &path);
Box ExtentOf(const Shading &shading);

// The letters of a glyph are taken to stand between its baseline and seven tenths of an em above.
Box ExtentOf(const GlyphRun &run, const PlacedGlyph &glyph);

// Says how far a box goes beyond the page on the side where that is farthest, and which part of it lies there; 0: it does not.
struct Excess {
    double distance = 0;
    Box part;
};
Excess ExcessOf(const Box &box, const Box &page);

// Holds the narrower and the wider side of the pen that strokes, on the page.
struct PenWidths {
    double narrow = 0, wide = 0;
};
PenWidths WidthsOf(const StrokeStyle &style);

// Returns how wide the line is where it is thinnest, across its way: a pen that the matrix flattens makes a line of one width along
// its long side, of another across it.
double ThinnestWidth(const Path &path, const StrokeStyle &style);

} // namespace vxhost
