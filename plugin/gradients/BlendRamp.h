// Blend ramp: how the colour goes from one stop to the next, and in how many steps that is shown.
#pragma once

#include "plugin/gradients/gradient.h"

namespace vx
{

// Which custom colours a ramp runs through. Recorded only: ramps are painted in process colours.
enum CustomRampMode : int32_t { kOneCustomColour = 1, kTwoCustomColours = 2 };

struct CustomTintRamp {
    Fixed start, end, difference;
};

struct CustomRamp {
    int32_t involved; // 1, or 0 where nothing else is set
    int32_t mode;
    CustomTintRamp tint[2];
};

struct BlendRamp {
    const BlendStopObject *firstStop;
    int16_t levels; // steps for a full unit of colour change
    uint8_t reserved;
    CMYKColour startCMYK;
    CMYKColour endCMYK;
    CMYKColour deltaCMYK;                // 0 when grayOnly
    uint8_t grayOnly;                    // neither stop has a process or custom colour
    Fixed grayStart, grayEnd, grayDelta; // 0 unless grayOnly
    CustomRamp custom;
    double exponent; // the shape of the ramp; 1.0 is even
    uint8_t midpointHigh;
    int16_t steps; // at least 1
};

// The ramp from stop a to stop b.
BlendRamp AutoBlendCalcTwoColorRamp(const BlendStopObject *a, const BlendStopObject *b);

// Whether both stops have one colour.
bool HasNoChange(const BlendRamp *ramp);

// How far the colour has come at parameter t, both 0 to 1.0. Half of the way lies at the first stop's midpoint.
Fixed ShapeParameter(const BlendRamp *ramp, Fixed t);

// The inks of a stop's colour; true if it is a process or a custom colour. The two flags override the colour.
bool ColorStyleToCMYK(int32_t kind, bool forceBlack, bool forceNone, CMYKColour *out,
                      const StopColour *colour);

// Whether the stop is taken for white where custom colours meet. Looks at all inks, whatever the kind; a custom
// colour of tint 0 counts, although it is painted at full strength: both on purpose.
bool IsWhite(int32_t kind, const StopColour *colour);

void GetCustomColorParms(BlendRamp *ramp, const BlendStopObject *a, const BlendStopObject *b);

} // namespace vx
