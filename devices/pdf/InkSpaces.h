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

// The space of black ink alone; 0 none, 1 full.
QPDFObjectHandle BlackInkSpace();

// The space of some of the four inks, by their numbers in ascending order.
QPDFObjectHandle InkSpace(PdfFile *file, const std::vector<int> &inks);

} // namespace vxhost::pdf
