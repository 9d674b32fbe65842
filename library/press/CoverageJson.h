// Tells how much ink a page takes, as JSON.
#pragma once

#include "devices/raster/InkCoverage.h"

#include <nlohmann/json.hpp>

namespace vxhost
{

void AddCoverage(const InkCoverage &coverage, nlohmann::ordered_json *json);

} // namespace vxhost
