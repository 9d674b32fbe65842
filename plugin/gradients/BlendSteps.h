// Steps of a blend: the parameter's values along a ramp and the colours that the host is given for them.
#pragma once

#include "plugin/body/HostTable.h"
#include "plugin/gradients/BlendRamp.h"

#include <algorithm>

namespace vx
{

inline Fixed ClampToUnit(Fixed x)
{
    return std::clamp(x, Fixed{0}, kFixedOne);
}

// The parameter goes from 0 to 1.0 in as many values as there are steps.
inline Fixed ColourStep(int32_t steps)
{
    return steps > 1 ? FixedDiv(1, steps - 1) : 0;
}

inline Fixed AddPart(Fixed start, Fixed part, Fixed delta)
{
    return AddFixed(start, FixedMul(part, delta));
}

// The colour after that part of the change: 0 is exactly the start, 1.0 exactly the end.
inline void SetRampColour(const ParseContext *context, const BlendRamp *ramp, Fixed part)
{
    if (ramp->grayOnly != 0) {
        CallSetGray(context, AddPart(ramp->grayStart, part, ramp->grayDelta));
        return;
    }
    const CMYKColour &start = ramp->startCMYK;
    const CMYKColour &delta = ramp->deltaCMYK;
    const CMYKColour colour = {
        AddPart(start.cyan, part, delta.cyan), AddPart(start.magenta, part, delta.magenta),
        AddPart(start.yellow, part, delta.yellow), AddPart(start.black, part, delta.black)};
    CallSetCMYKColor(context, &colour);
}

} // namespace vx
