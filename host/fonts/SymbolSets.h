// The character sets of the two classic symbol fonts, in which the bytes of their text stand.
#pragma once

#include <cstdint>

namespace vxhost
{

// What a byte of text means in Unicode; 0: nothing.
char32_t FromSymbol(uint8_t byte);
char32_t FromDingbats(uint8_t byte);

} // namespace vxhost
