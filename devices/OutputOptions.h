// What a person may choose about every output that is not made of pixels.
#pragma once

#include <cstdint>

namespace vxhost
{

enum class TextOutput : uint8_t {
    Text,     // characters in embedded fonts, outlines where a font does not allow it
    Editable, // SVG: lines of characters in installed fonts
    Outlines  // shapes alone
};

} // namespace vxhost
