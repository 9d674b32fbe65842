#include "plugin/gradients/BlendRamp.h"

#include <algorithm>
#include <cmath>

namespace vx
{

namespace
{

constexpr int16_t kStepsPerUnit = 100; // one for each percent
constexpr Fixed kHalf = kFixedOne / 2;

CMYKColour SubtractCMYK(const CMYKColour *x, const CMYKColour *y)
{
    return {SubtractFixed(x->cyan, y->cyan), SubtractFixed(x->magenta, y->magenta),
            SubtractFixed(x->yellow, y->yellow), SubtractFixed(x->black, y->black)};
}

// The most negative number has no opposite and stays below 0: like every such number it makes one step.
Fixed AbsoluteFixed(Fixed x)
{
    return x < 0 ? NegateFixed(x) : x;
}

Fixed LargestChange(const CMYKColour *delta)
{
    return std::max({AbsoluteFixed(delta->cyan), AbsoluteFixed(delta->magenta), AbsoluteFixed(delta->yellow),
                     AbsoluteFixed(delta->black)});
}

// Rounded, halves up. What does not fit wraps below 0, so a ramp has 32767 steps at the most.
int16_t CountSteps(int16_t levels, Fixed change)
{
    const Fixed rounded = AddFixed(FixedMul(IntegerToFixed(levels), change), kHalf);
    return rounded > kFixedOne ? static_cast<int16_t>(rounded / kFixedOne) : int16_t{1};
}

// x is how far the midpoint lies from the farther end, 0.5 to 1.0.
double ShapeExponent(Fixed x)
{
    // Even ramps are exactly that, whatever the library makes of the quotient of two equal logarithms.
    if (x == kHalf)
        return 1.0;
    // The logarithm is 0: the ramp jumps at its end.
    if (x == kFixedOne)
        return HUGE_VAL;
    return log10(0.5) / log10(Fixed2Double(x));
}

void ShapeRamp(BlendRamp *ramp, Fixed midPoint)
{
    const Fixed midpoint = FixedDiv(std::clamp(midPoint, Fixed{0}, kHundredPercent), kHundredPercent);
    ramp->midpointHigh = midpoint > kHalf ? 1 : 0;
    ramp->exponent = ShapeExponent(ramp->midpointHigh != 0 ? midpoint : kFixedOne - midpoint);
}

void SetTintRamp(CustomTintRamp *tint, Fixed start, Fixed end)
{
    *tint = {start, end, SubtractFixed(end, start)};
}

} // namespace

BlendRamp AutoBlendCalcTwoColorRamp(const BlendStopObject *a, const BlendStopObject *b)
{
    BlendRamp ramp = {};
    ramp.firstStop = a;
    ramp.levels = kStepsPerUnit;
    ShapeRamp(&ramp, a->midPoint);
    const bool startsInColour = ColorStyleToCMYK(a->colorKind, false, false, &ramp.startCMYK, &a->colour);
    const bool endsInColour = ColorStyleToCMYK(b->colorKind, false, false, &ramp.endCMYK, &b->colour);
    ramp.grayOnly = startsInColour || endsInColour ? 0 : 1;
    GetCustomColorParms(&ramp, a, b);
    Fixed change;
    if (ramp.grayOnly != 0) {
        ramp.grayStart = SubtractFixed(kFixedOne, ramp.startCMYK.black);
        ramp.grayEnd = SubtractFixed(kFixedOne, ramp.endCMYK.black);
        ramp.grayDelta = SubtractFixed(ramp.grayEnd, ramp.grayStart);
        change = AbsoluteFixed(ramp.grayDelta);
    } else {
        ramp.deltaCMYK = SubtractCMYK(&ramp.endCMYK, &ramp.startCMYK);
        change = LargestChange(&ramp.deltaCMYK);
    }
    ramp.steps = CountSteps(ramp.levels, change);
    return ramp;
}

bool HasNoChange(const BlendRamp *ramp)
{
    // A gray ramp has no differences of inks, any other none of gray: those are 0.
    const CMYKColour &delta = ramp->deltaCMYK;
    return ramp->grayDelta == 0 && delta.cyan == 0 && delta.magenta == 0 && delta.yellow == 0 &&
           delta.black == 0;
}

Fixed ShapeParameter(const BlendRamp *ramp, Fixed t)
{
    // The ends stay where they are, also where the exponent is infinite.
    if (ramp->exponent == 1.0 || t == 0 || t == kFixedOne)
        return t;
    if (ramp->midpointHigh != 0)
        return Double2Fixed(exp(ramp->exponent * log(Fixed2Double(t))));
    return Double2Fixed(1.0 - exp(ramp->exponent * log(1.0 - Fixed2Double(t))));
}

bool ColorStyleToCMYK(int32_t kind, bool forceBlack, bool forceNone, CMYKColour *out,
                      const StopColour *colour)
{
    *out = {};
    if (forceBlack) {
        out->black = kFixedOne;
        return false;
    }
    if (forceNone)
        return false;
    switch (kind) {
    case kStopGray:
        out->black = SubtractFixed(kFixedOne, colour->gray);
        return false;
    case kStopCMYK:
        *out = colour->process;
        return true;
    case kStopCustom:
        *out = colour->process;
        LightenCMYK(out, colour->tint);
        return true;
    case kStopBlank:
        return false;
    default:
        out->black = kHalf;
        return false;
    }
}

bool IsWhite(int32_t kind, const StopColour *colour)
{
    if (kind == kStopGray && colour->gray == kFixedOne)
        return true;
    if (kind == kStopCustom && colour->tint == 0)
        return true;
    const CMYKColour *inks = &colour->process;
    return inks->cyan == 0 && inks->magenta == 0 && inks->yellow == 0 && inks->black == 0;
}

void GetCustomColorParms(BlendRamp *ramp, const BlendStopObject *a, const BlendStopObject *b)
{
    CustomRamp *custom = &ramp->custom;
    *custom = {};
    const bool startsCustom = a->colorKind == kStopCustom;
    const bool endsCustom = b->colorKind == kStopCustom;
    if (startsCustom && endsCustom) {
        // Two records are two colours, even under one name.
        custom->involved = 1;
        custom->mode = a == b ? kOneCustomColour : kTwoCustomColours;
        SetTintRamp(&custom->tint[0], a->colour.tint, a == b ? b->colour.tint : kFixedOne);
        if (a != b)
            SetTintRamp(&custom->tint[1], kFixedOne, b->colour.tint);
        return;
    }
    const bool startsWhite = IsWhite(a->colorKind, &a->colour);
    const bool endsWhite = IsWhite(b->colorKind, &b->colour);
    if ((startsWhite && endsCustom) || (endsWhite && startsCustom)) {
        custom->involved = 1;
        custom->mode = kOneCustomColour;
        SetTintRamp(&custom->tint[0], startsWhite ? kFixedOne : a->colour.tint,
                    endsWhite ? kFixedOne : b->colour.tint);
    }
}

} // namespace vx
