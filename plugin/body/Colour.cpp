#include "plugin/body/Colour.h"

namespace vx
{

bool PopCMYK(PostScriptObjectList *stack, CMYKColour *colour)
{
    return PopFixed(stack, &colour->black) && PopFixed(stack, &colour->yellow) &&
           PopFixed(stack, &colour->magenta) && PopFixed(stack, &colour->cyan);
}

void LightenCMYK(CMYKColour *colour, Fixed tint)
{
    const Fixed strength = SubtractFixed(kFixedOne, tint);
    colour->cyan = FixedMul(strength, colour->cyan);
    colour->magenta = FixedMul(strength, colour->magenta);
    colour->yellow = FixedMul(strength, colour->yellow);
    colour->black = FixedMul(strength, colour->black);
}

} // namespace vx
