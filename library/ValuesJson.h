// Writes what drawings are made of as JSON: places, boxes and colours, with the same names wherever they are told.
#pragma once

#include "host/drawing/Device.h"

#include <nlohmann/json.hpp>

namespace vxhost
{

// Three decimals of a point, or of a percent, are finer than any press.
double Rounded(double value);
nlohmann::ordered_json PointJson(Point point);
nlohmann::ordered_json BoxJson(const Box &box);
// Angles are degrees against the clock, from the right.
double AngleOf(Point along);
nlohmann::ordered_json ColourJson(const Colour &colour);

} // namespace vxhost
