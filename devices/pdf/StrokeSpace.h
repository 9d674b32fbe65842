// In which space a stroke is to be described, so that its pen comes out as its matrix says.
//
// Paths are on the page already. A pen that stays round there needs nothing but its width; any other needs the page's
// matrix changed around the stroke, and the path mapped back.
#pragma once

#include "host/drawing/Path.h"

namespace vxhost::pdf
{

struct StrokeSpace {
    double scale = 1;    // of lengths, from the stroke's user space to this one
    bool isPage = true;  // the next two are identity then
    Matrix toPage;       // without translation, no factor above 1
    Matrix fromPage;     // its inverse
    bool isFlat = false; // the pen has no breadth: nothing but the thinnest line can be drawn
};

StrokeSpace FindStrokeSpace(const Matrix &userToPage);

} // namespace vxhost::pdf
