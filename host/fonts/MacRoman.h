// The Mac Roman character set, in which the bytes of Roman text stand.
#pragma once

#include <cstdint>

namespace vxhost
{

char32_t FromMacRoman(uint8_t byte);

} // namespace vxhost
