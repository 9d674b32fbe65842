// Blends as the shadings of PDF: along a line, and from a point to a circle around it; and as patterns of those.
//
// Knows the shadings and patterns of a page by number; they are written when they are first used. Each shading is made in a space of its own
// (the unit square, the unit circle), and its colours are kept apart from its place: instances of one gradient differ in their places alone.
//
// The forms are those that editors read too: functions of straight pieces, and circles that begin at a point. Some have but one clip
// for a shading that is painted by itself, so where that would need two a pattern is filled with.
#pragma once

#include "devices/pdf/InkSpaces.h"
#include "host/drawing/Device.h"
#include "host/drawing/Shading.h"

#include <optional>
#include <string>
#include <vector>

namespace vxhost::pdf
{

// Says how a shading is to be painted: by itself under the matrix, or by filling the square or the circle of its space with its pattern.
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
    std::optional<ShadingUse> Use(const Shading &shading, bool asPattern, PdfFile *file, InkSpaces *inks);

    // Adds those that were used, by their names.
    void AddTo(PdfFile *file, Dictionary *resources) const;

  private:
    std::vector<Reference> shadings_,
        patterns_; // by number, which is in the name; objects number in the same order
};

// Returns whether it paints all of the box.
bool Covers(const Shading &shading, const Box &box);

} // namespace vxhost::pdf
