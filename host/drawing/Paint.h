// What shapes are painted with: colours and strokes as the document says them.
#pragma once

#include "host/drawing/Path.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vxhost
{

enum class ColourSpace : uint8_t { Gray, Cmyk };

// An ink of its own, mixed before it comes to the press, and the process inks that stand in for it.
struct SpotInk {
    std::string name; // UTF-8
    double alternate[4] = {0, 0, 0, 0};
};

// Returns whether PDF can have a plate for an ink of that name. Two names mean all plates and none.
inline bool CanHavePlate(std::string_view ink)
{
    return !ink.empty() && ink != "All" && ink != "None";
}

struct SpotShare {
    const SpotInk *ink = nullptr; // outlives the drawing; null: none
    double amount = 0;            // of it, 0 none, 1.0 full
    friend bool operator==(const SpotShare &, const SpotShare &) = default;
};

// A colour as the document says it. Gray: ink[0] is the level, 0 black, 1.0 white. Cmyk: ink amounts, 0 none, 1.0 full.
// Components outside 0 to 1.0 have been clamped.
struct Colour {
    ColourSpace space = ColourSpace::Gray;
    double ink[4] = {0, 0, 0, 0};
    // Spot inks that it is mixed of, two where one ink blends into another. The four amounts are what stands in for the
    // mixture; what the spot inks do not stand for is process ink.
    std::array<SpotShare, 2> spots = {};
    friend bool operator==(const Colour &, const Colour &) = default;
};

// An ink as a document chooses it for what it paints next.
struct SpotColour {
    SpotShare share = {};
    double process[4] = {0, 0, 0, 0}; // what is sent for it
};

// With overprint, a CMYK component of 0 leaves that ink as it is and gray touches black alone; without it every
// paint replaces all inks.
struct Paint {
    Colour colour;
    bool overprint = false;
    friend bool operator==(const Paint &, const Paint &) = default;
};

enum class LineCap : uint8_t { Butt, Round, Square };
enum class LineJoin : uint8_t { Miter, Round, Bevel };

// Lengths are in the user space of the stroke; matrix maps that space to the page (the path is already there).
struct StrokeStyle {
    double width = 1; // 0: the thinnest line that can be seen
    LineCap cap = LineCap::Butt;
    LineJoin join = LineJoin::Miter;
    double miterLimit = 10;
    double dashPhase = 0;
    std::vector<double> dashes; // on and off in turn; empty: solid. Never negative, never all zero
    Matrix matrix;
    friend bool operator==(const StrokeStyle &, const StrokeStyle &) = default;
};

} // namespace vxhost
