// Reads what a check goes by, as somebody writes it in JSON.
#pragma once

#include "devices/preflight/PreflightLimits.h"

#include <string_view>

namespace vxhost
{

// Throws OptionError. What the text does not name is as by default.
PreflightLimits ReadPreflightLimits(std::string_view text);

} // namespace vxhost
