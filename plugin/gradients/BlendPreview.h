// Blend preview: the current instance's gradient as the host can paint it, a run of shapes of flat colour.
#pragma once

#include "plugin/Result.h"

#include <span>

namespace vx
{

struct BlendStopObject;
struct ParseContext;

// Stops in the order of the gradient's list, at least one.
using BlendStops = std::span<const BlendStopObject *const>;

// Paints the gradient of the current instance. Fails, after the overprint call, when there is no gradient, no stop or
// no drawing.
Result AutoBlendPreview(ParseContext *context);

} // namespace vx
