// Writes what a diff found, for a person and as JSON.
#pragma once

#include "cli/difference/Difference.h"

#include <string>

namespace vxhost
{

std::string DifferenceText(const DifferenceTask &task, const Difference &difference);
std::string DifferenceJson(const DifferenceTask &task, const Difference &difference);

} // namespace vxhost
