// The widths of a font file's characters.
#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace vxhost
{

// Of each byte of Roman text; ems, 16.16.
using CharWidths = std::array<int32_t, 256>;

// A character that the font lacks is as wide as what is drawn for it; control characters have no width. A file that
// cannot be read gives the width of a box for all.
CharWidths ReadCharWidths(const std::string &file, int faceIndex);

} // namespace vxhost
