#include "plugin/gradients/BlendPreview.h"

#include "plugin/body/HostTable.h"
#include "plugin/gradients/LinearBlend.h"
#include "plugin/gradients/RadialBlend.h"

#include <algorithm>

namespace vx
{

namespace
{

// Stops beyond these are left out.
constexpr int32_t kMaxBlendStops = 50;

using StopArray = const BlendStopObject *[kMaxBlendStops];

// Takes as many stops as were declared, were read, and fit into the array.
BlendStops BuildArrayOfPointers(const GradientObject *gradient, StopArray &array)
{
    const int32_t wanted = std::min(gradient->stopCount, kMaxBlendStops);
    int32_t count = 0;
    for (const BlendStopObject *stop = gradient->firstStop; stop != nullptr && count < wanted;
         stop = stop->next)
        array[count++] = stop;
    return {array, static_cast<size_t>(count)};
}

} // namespace

Result AutoBlendPreview(ParseContext *context)
{
    CallSetOverprint(context, context->fillOverprint);
    const GradientState *state = context->gradientSetup;
    if (state == nullptr || state->instanceGradient == nullptr || context->refCon == nullptr)
        return kParserBadFormat;
    StopArray array;
    const BlendStops stops = BuildArrayOfPointers(state->instanceGradient, array);
    if (stops.empty())
        return kParserBadFormat;
    if (state->instanceGradient->gradientType == kLinearGradient)
        PaintLinearBlend(context, stops);
    else
        PaintRadialBlend(context, stops);
    context->loadedColour = kNoColour;
    return kOk;
}

} // namespace vx
