// Numbers as a person reads them.
#pragma once

#include <string>

namespace vxhost
{

// At most digits decimals, no zeros at the end.
std::string Decimal(double value, int digits = 5);

} // namespace vxhost
