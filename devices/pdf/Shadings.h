// Blends as the shadings of PDF: along a line, and from circle to circle.
//
// Knows the shading resources of a page by number; they are written when they are first used. Each is made in a space of its own
// (the unit square, the unit circle), and its colours are kept apart from its place: instances of one gradient differ in their places alone.
#pragma once

#include "devices/pdf/InkSpaces.h"
#include "host/drawing/Shading.h"

#include <optional>
#include <string>
#include <vector>

namespace vxhost::pdf
{

// How a shading is to be painted: its resource, under the matrix, clipped to the square or the circle of that space.
struct ShadingUse {
    std::string name;
    Matrix matrix; // from the shading's space to the page
};

// A blend paints with gray, with black ink alone, or with inks.
struct PaintSpace {
    bool isBlackInk = false;
    Inks inks; // empty: gray
};

class Shadings
{
  public:
    // Nothing when PDF has no shading that looks like it; it is to be painted as shapes then. That is so for circles
    // that do not lie one inside the other, and for blends that overprint and have an ink at some steps alone: at the
    // others that ink stays as it is on the page, which no shading can say. It is also so when they have more inks than a
    // space should.
    std::optional<ShadingUse> Use(const Shading &shading, PdfFile *file, InkSpaces *inks);

    bool IsEmpty() const { return blends_.empty(); }
    // Names those that were used.
    Reference AddResources(PdfFile *file) const;

  private:
    std::vector<Reference> blends_; // by number, which is in the name; objects number in the same order
};

} // namespace vxhost::pdf
