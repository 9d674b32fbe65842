// Writes numbers as a person reads them.
#pragma once

#include <string>

namespace vxhost
{

// Writes at most so many decimals, and no zeros at the end.
std::string Decimal(double value, int digits = 5);

} // namespace vxhost
