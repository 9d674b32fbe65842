// Colour spaces that are press inks: what is painted in one leaves the other inks as they are, under overprint.
#pragma once

#include "devices/pdf/PdfFile.h"

#include <cstddef>
#include <string_view>
#include <vector>

namespace vxhost::pdf
{

inline constexpr int kInkCount = 4;
inline constexpr std::string_view kInkNames[kInkCount] = {"Cyan", "Magenta", "Yellow", "Black"};

// Black alone; 0 none, 1 full.
QPDFObjectHandle BlackInkSpace();

// Some of the four, by number in ascending order.
QPDFObjectHandle InkSpace(PdfFile *file, const std::vector<int> &inks);

} // namespace vxhost::pdf
