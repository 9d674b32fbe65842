// How far a picture may be from what the document says. PrecisionTest holds each of these to its word.
//
// Lengths are in samples. What is not in this table is exact: which samples lie inside of lines, how overprint mixes, how
// clips intersect.
#pragma once

#include <cstdint>

namespace vxhost::raster
{

// Flatness: the largest distance between a curve and its lines. A curve that needs more lines is a thousand times larger
// than the page.
constexpr double kFlatness = 0.2;
constexpr int kMaxCurveLines = 4096;

// Pen: the largest distance between round joins or caps and their lines; the angles between two points of them. A dot is
// still round, and the largest circle has some 600 points, which is within kPenFlatness up to a radius of 10,000.
constexpr double kPenFlatness = 0.125;
constexpr double kMaxPenAngle = 1.6;
constexpr double kMinPenAngle = 0.01;

// Pen: points of a stroke that are closer than this have no direction worth keeping.
constexpr double kDistinct = 1.0 / 32;

// Placement: every point is rounded to a multiple of this. Points that were computed along two ways differ in their last
// bits, and must be one point all the same. Of a glyph both the origin and the points are rounded, which are counted from it.
constexpr double kPlacement = 1.0 / 65536;

// Steps: the inks of a shading for a pixel of its length, and the most that it has.
constexpr double kInksPerPixel = 2;
constexpr double kMaxInks = 1024;

// Steps: spans of a shading whose inks meet within so many of 255 run on, since the last step of a blend falls a little short
// of its end.
constexpr int kRunsOn = 1;

} // namespace vxhost::raster
