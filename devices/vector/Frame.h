// The space of an element, above all of a stroke: how a matrix that distorts becomes a transform with sensible numbers
// in it. Shapes are on the page already; but a pen that its matrix makes an ellipse needs a space in which it is round,
// and the path mapped back to there.
#pragma once

#include "host/drawing/Path.h"

namespace vxhost
{

// A space between a matrix's own and the picture. What is a circle in the matrix's own space is a circle here, `scale`
// times as large; on its way to the picture it may become an ellipse.
struct Frame {
    Matrix toPicture; // linear; no vector becomes longer
    Matrix fromPicture;
    double scale = 1;    // 0: the matrix makes a point of everything
    bool isPlain = true; // the matrix keeps circles, so this is the picture's own space
    bool isFlat = false; // the matrix flattens, or nearly so
};

// matrix maps some space to the picture. One that flattens is taken for one that leaves a thousandth of the height, so
// that there is an inverse. How it turns and mirrors is not kept: circles do not show it.
Frame FindFrame(const Matrix &matrix);

} // namespace vxhost
