// Numbers as a person reads them.
#pragma once

#include <string>

namespace vxhost
{

inline double Millimetres(double points)
{
    return points * (25.4 / 72);
}

// At most digits decimals, no zeros at the end.
std::string Decimal(double value, int digits = 5);

} // namespace vxhost
