// The one interface that a new output implements.
//
// The drawing state (path, matrix, colour, line attributes, save and restore) is kept once, by Drawing; a
// device receives finished things in the order in which they are painted. Calls come from one thread. A
// device reports failure from EndPage only; after its own failure it ignores what else it is given.
#pragma once

#include "host/drawing/Path.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

namespace vxhost
{

enum class ColourSpace : uint8_t { Gray, Cmyk };

// As the document says it. Gray: ink[0] is the level, 0 black, 1.0 white. Cmyk: ink amounts, 0 none, 1.0 full.
// Components outside 0 to 1.0 have been clamped.
struct Colour {
    ColourSpace space = ColourSpace::Gray;
    double ink[4] = {0, 0, 0, 0};
    friend bool operator==(const Colour &, const Colour &) = default;
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

struct Box {
    double left = 0, bottom = 0, right = 0, top = 0;
    double Width() const { return right - left; }
    double Height() const { return top - bottom; }
    // The same corners, whichever way round they were written.
    Box Upright() const
    {
        return {std::min(left, right), std::min(bottom, top), std::max(left, right), std::max(bottom, top)};
    }
};

// What a device needs to know before the first paint.
struct Page {
    Box box;           // the part of page space to show, left < right and bottom < top
    std::string title; // from the document's header, UTF-8, may be empty
    std::string creator;
};

class Device
{
  public:
    Device() = default;
    Device(const Device &) = delete;
    Device &operator=(const Device &) = delete;
    virtual ~Device() = default;

    virtual void BeginPage(const Page &page) = 0;

    // Save and Restore bracket changes of the clip, the only state that a device keeps. They are always
    // balanced when EndPage comes.
    virtual void Save() = 0;
    virtual void Restore() = 0;
    virtual void
    ClipPath(const Path &path) = 0; // intersects; non-zero winding; an empty path clips everything

    virtual void FillPath(const Path &path, const Paint &paint) = 0; // non-zero winding
    virtual void StrokePath(const Path &path, const StrokeStyle &style, const Paint &paint) = 0;

    // Completes the output. Returns an empty string, or what went wrong as one line for a person.
    virtual std::string EndPage() = 0;
};

} // namespace vxhost
