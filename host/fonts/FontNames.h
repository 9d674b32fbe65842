// Names that the host gives to what no font file serves.
#pragma once

#include <string_view>

namespace vxhost
{

// The one font of a machine without fonts: every character is a box.
constexpr std::string_view kBoxFontName = "VXBoxes";
constexpr std::string_view kBoxFontFamily = "VX Boxes";
constexpr int kBoxFontWidth = 0x8000; // of every character; ems, 16.16

} // namespace vxhost
