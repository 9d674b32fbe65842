#include "plugin/gradients/LinearBlend.h"

#include "plugin/gradients/BlendSteps.h"
#include "plugin/gradients/Fills.h"

#include <utility>

namespace vx
{

namespace
{

// The ramp from that stop to the next; from the last stop, to itself.
BlendRamp RampFromStop(BlendStops stops, size_t index)
{
    return AutoBlendCalcTwoColorRamp(stops[index], stops[std::min(index + 1, stops.size() - 1)]);
}

void FillUnitSquare(const ParseContext *context)
{
    StripFill(context, 0, kFixedOne);
}

void ConcatClipMatrix(const ParseContext *context, int which)
{
    const GradientState *state = context->gradientSetup;
    if (state->clipMatrixCount > 0)
        CallConcat(context, &state->clipMatrix[which]);
}

void PaintStartCap(const ParseContext *context, const BlendRamp *ramp)
{
    CallGSave(context);
    ConcatClipMatrix(context, 0);
    SetRampColour(context, ramp, 0);
    FillUnitSquare(context);
    CallGRestore(context);
}

void PaintEndCap(const ParseContext *context, const BlendRamp *ramp)
{
    CallGSave(context);
    SetRampColour(context, ramp, kFixedOne);
    ConcatClipMatrix(context, 1);
    FillUnitSquare(context);
    CallGRestore(context);
}

void PaintStrips(const ParseContext *context, const BlendRamp *ramp)
{
    const int32_t steps = ramp->steps;
    const Fixed colourStep = ColourStep(steps);
    const Fixed stripWidth = FixedDiv(1, steps);
    Fixed x = 0;
    for (int32_t i = 0; i < steps; ++i) {
        SetRampColour(context, ramp, ShapeParameter(ramp, ClampToUnit(i * colourStep)));
        // The last strip ends exactly where the square does, whatever the rounded widths add up to.
        const Fixed end = i + 1 < steps ? (i + 1) * stripWidth : kFixedOne;
        StripFill(context, x, end);
        x = end;
    }
}

void PaintSegment(const ParseContext *context, const BlendRamp *ramp, size_t segment)
{
    const GradientState *state = context->gradientSetup;
    CallGSave(context);
    SetRampColour(context, ramp, 0);
    if (std::cmp_less(segment, state->segmentMatrixCount))
        CallConcat(context, &state->segmentMatrix[segment]);
    if (HasNoChange(ramp))
        FillUnitSquare(context);
    else
        PaintStrips(context, ramp);
    CallGRestore(context);
}

} // namespace

void PaintLinearBlend(const ParseContext *context, BlendStops stops)
{
    BlendRamp ramp = RampFromStop(stops, 0);
    PaintStartCap(context, &ramp);
    for (size_t segment = 0; segment + 1 < stops.size(); ++segment) {
        ramp = RampFromStop(stops, segment);
        PaintSegment(context, &ramp, segment);
    }
    PaintEndCap(context, &ramp);
}

} // namespace vx
