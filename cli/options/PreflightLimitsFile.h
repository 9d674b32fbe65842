// Reads the limits of a check from a JSON file: {"limits": {"hairline": 0.2}, "severities": {"hairline": "error"}}.
#pragma once

#include "devices/preflight/PreflightLimits.h"

#include <string>
#include <string_view>

namespace vxhost
{

// Limits that a text does not name stay as they are by default. Throws UsageError, which names the path.
PreflightLimits ReadPreflightLimits(std::string_view text, const std::string &path);
PreflightLimits ReadPreflightLimitsFile(const std::string &path, double seconds);

} // namespace vxhost
