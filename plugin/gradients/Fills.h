// Fills of a gradient's unit space: the strips and discs that a blend is made of.
#pragma once

#include "plugin/body/ParseContext.h"

namespace vx
{

// Fills the unit square from x0 to x1.
void StripFill(const ParseContext *context, Fixed x0, Fixed x1);

// Fills the disc of that radius about the origin.
void RadialFill(const ParseContext *context, Fixed radius);

} // namespace vx
