// Prints how much ink a page takes.
#pragma once

#include "devices/raster/InkCoverage.h"

#include <string>

namespace vxhost
{

// Each begins with the input's name.
std::string CoverageText(const std::string &input, const InkCoverage &coverage);
std::string CoverageJson(const std::string &input, const InkCoverage &coverage); // one line

} // namespace vxhost
