// Prints how much ink a page takes.
#pragma once

#include "devices/raster/InkCoverage.h"

#include <string>

namespace vxhost
{

// Begins with the input's name.
std::string CoverageText(const std::string &input, const InkCoverage &coverage);

} // namespace vxhost
