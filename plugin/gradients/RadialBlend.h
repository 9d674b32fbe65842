// Radial blend: a gradient in nested discs about the origin.
#pragma once

#include "plugin/gradients/BlendPreview.h"

namespace vx
{

// The current path in the last stop's colour, then the discs, the largest first, so that each leaves a ring of the
// one before it. With one stop there are no discs.
void PaintRadialBlend(const ParseContext *context, BlendStops stops);

} // namespace vx
