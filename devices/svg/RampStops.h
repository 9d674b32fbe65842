// The colours of a blend as stops between which screens may go straight.
//
// Inks do not mix as screen colours do, so a way that is straight in inks is a bent one on the screen.
#pragma once

#include "devices/colour/ScreenOptions.h"
#include "host/drawing/Shading.h"

#include <functional>
#include <span>
#include <vector>

namespace vxhost::svg
{

struct RampStop {
    double at = 0; // parameter of the shading
    Colour colour;
};

// The stops ascend from 0 to 1, at most 256 for a span. Between two of them no level that a screen shows is further
// than 1 of 255 from what convert says of the inks.
std::vector<RampStop> FindRampStops(std::span<const ColourSpan> spans,
                                    const std::function<Rgb(const Colour &)> &convert);

} // namespace vxhost::svg
