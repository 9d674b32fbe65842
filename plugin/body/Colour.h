// Process colours as operators take them: four inks, and the tint that lightens a custom colour.
#pragma once

#include "plugin/input/PostObjs.h"

namespace vx
{

// 0 none to 1.0 full; a document may say anything.
struct CMYKColour {
    Fixed cyan, magenta, yellow, black;
};

// What was popped before a failure stays.
bool PopCMYK(PostScriptObjectList *stack, CMYKColour *colour);

// Multiplies every ink by 1.0 - tint.
void LightenCMYK(CMYKColour *colour, Fixed tint);

} // namespace vx
