// Reads the limits of a check from a JSON file: {"limits": {"hairline": 0.2}, "severities": {"hairline": "error"}}.
#pragma once

#include "devices/preflight/PreflightLimits.h"

#include <string>

namespace vxhost
{

// Limits that a text does not name stay as they are by default. Throws UsageError, which names the path.
PreflightLimits ReadPreflightLimitsFile(const std::string &path, double seconds);

} // namespace vxhost
