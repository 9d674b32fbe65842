#include "plugin/gradients/RadialBlend.h"

#include "plugin/gradients/BlendSteps.h"
#include "plugin/gradients/Fills.h"

namespace vx
{

namespace
{

// Where the discs of one pair of stops lie: from the inner radius outwards, and, with a highlight, moved towards it
// the more the smaller they are.
struct Rings {
    Fixed innerRadius;
    Fixed thickness;
    FixedPoint innerShift;
    FixedPoint shiftChange;
};

bool HasHighlight(const GradientState *state)
{
    return state->highlight[2] != 0 || state->highlight[3] != 0;
}

Rings MakeRings(const GradientState *state, const BlendStopObject *inner, const BlendStopObject *outer)
{
    const FixedPoint highlight = {state->highlight[2], state->highlight[3]};
    const Fixed innerRadius = FixedDiv(inner->rampPoint, kHundredPercent);
    const Fixed thickness = SubtractFixed(FixedDiv(outer->rampPoint, kHundredPercent), innerRadius);
    const Fixed towards = SubtractFixed(kFixedOne, innerRadius);
    return {innerRadius,
            thickness,
            {FixedMul(highlight.x, towards), FixedMul(highlight.y, towards)},
            {FixedMul(highlight.x, thickness), FixedMul(highlight.y, thickness)}};
}

void PaintDisc(const ParseContext *context, const Rings *rings, Fixed t, Fixed part)
{
    const GradientState *state = context->gradientSetup;
    const bool shifted = HasHighlight(state);
    const bool placed = state->segmentMatrixCount > 0;
    if (shifted) {
        CallGSave(context);
        CallTranslate(context, SubtractFixed(rings->innerShift.x, FixedMul(rings->shiftChange.x, t)),
                      SubtractFixed(rings->innerShift.y, FixedMul(rings->shiftChange.y, t)));
    }
    if (placed) {
        CallGSave(context);
        // All discs share the first matrix, unlike the segments of a linear gradient, on purpose.
        CallConcat(context, &state->segmentMatrix[0]);
    }
    RadialFill(context, AddPart(rings->innerRadius, part, rings->thickness));
    if (placed)
        CallGRestore(context);
    if (shifted)
        CallGRestore(context);
}

void PaintDiscs(const ParseContext *context, const BlendStopObject *inner, const BlendStopObject *outer)
{
    const BlendRamp ramp = AutoBlendCalcTwoColorRamp(inner, outer);
    const Rings rings = MakeRings(context->gradientSetup, inner, outer);
    const int32_t steps = ramp.steps;
    const Fixed colourStep = ColourStep(steps);
    const Fixed ringStep = FixedDiv(1, steps);
    for (int32_t i = steps - 1; i >= 0; --i) {
        const Fixed t = ClampToUnit(i * colourStep);
        SetRampColour(context, &ramp, ShapeParameter(&ramp, t));
        PaintDisc(context, &rings, t, ClampToUnit((i + 1) * ringStep));
    }
}

// Paints what lies outside the largest disc. Kinds without a colour of their own are white here, not the gray of a
// ramp.
void FillWithOutermostColour(const ParseContext *context, const BlendStopObject *stop)
{
    CMYKColour colour = stop->colour.process;
    if (stop->colorKind == kStopCustom)
        LightenCMYK(&colour, stop->colour.tint);
    if (stop->colorKind == kStopGray)
        CallSetGray(context, stop->colour.gray);
    else
        CallSetCMYKColor(context, &colour);
    CallFill(context);
}

} // namespace

void PaintRadialBlend(const ParseContext *context, BlendStops stops)
{
    FillWithOutermostColour(context, stops.back());
    CallGSave(context);
    for (size_t outer = stops.size() - 1; outer > 0; --outer)
        PaintDiscs(context, stops[outer - 1], stops[outer]);
    CallGRestore(context);
}

} // namespace vx
