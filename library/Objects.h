// Tells what is painted at a point of a drawing, as JSON.
#pragma once

#include "host/reading/Reading.h"

#include <nlohmann/json.hpp>

namespace vxhost
{

// Finds the topmost object at the point, and paints nothing. Lines are found up to half of within, points, beside their middle.
// json: null where there is paper.
Outcome FindObject(Reading &reading, Point at, double within, nlohmann::ordered_json *json);

} // namespace vxhost
