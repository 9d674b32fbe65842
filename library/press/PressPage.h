// Makes one page of HTML of a check, with the pictures in it: it needs nothing else, and can be sent or kept.
#pragma once

#include "devices/colour/ScreenOptions.h"
#include "host/ByteSink.h"

#include <nlohmann/json.hpp>

#include <deque>
#include <string>

namespace vxhost
{

// Holds a plate as a gray picture, and the ink's colour on a screen.
struct PagePlate {
    std::string ink;
    std::string png;
    Rgb colour;
};

struct PressPage {
    nlohmann::ordered_json facts; // as AddFindings makes them
    std::string picture;          // these are PNG files
    std::string heatMap;
    std::deque<PagePlate> plates; // each stays where it is: it is written to while others come
};

Failure WritePressPage(PressPage page, const ByteSink &sink);

} // namespace vxhost
