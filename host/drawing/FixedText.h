// 16.16 numbers as text: the shortest decimal that gives the same number again.
#pragma once

#include <vx/Types.h>

#include <string>

namespace vxhost
{

// -3.25, 12, 0.33333: at most five decimals, no exponent, no trailing zeros.
void AppendFixedText(std::string *text, Fixed value);
std::string FixedText(Fixed value);

} // namespace vxhost
