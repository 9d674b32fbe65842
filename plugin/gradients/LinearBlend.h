// Linear blend: a gradient in strips of the unit square.
#pragma once

#include "plugin/gradients/BlendPreview.h"

namespace vx
{

// A cap in the first stop's colour, the strips of each pair of neighbouring stops, and a cap in the last one's. The
// matrices of the instance place them; where a document places none, all lie on the unit square. With one stop there
// are only the caps.
void PaintLinearBlend(const ParseContext *context, BlendStops stops);

} // namespace vx
