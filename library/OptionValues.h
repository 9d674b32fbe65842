// Reads the values of options strictly: each takes all of the text, or returns none.
#pragma once

#include "devices/raster/RasterOptions.h"
#include "host/drawing/Device.h"
#include "library/PageLayout.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vxhost
{

std::optional<double> ReadNumber(std::string_view text);   // a finite decimal: 300, 0.5
std::optional<int32_t> ReadInteger(std::string_view text); // a whole number, which may be negative
std::optional<int64_t> ReadSeconds(std::string_view text); // digits, without a sign

// Reads a day as 2026-11-22, with or without a time behind it as T10:30 or 10:30:15, in UTC: seconds since 1970.
std::optional<int64_t> ReadDay(std::string_view text);

// Reads a number of bytes, in which K, M, G and T are powers of 1024: 512M, 1GiB.
std::optional<int64_t> ReadSize(std::string_view text);
std::string SizeText(int64_t bytes);

// Reads #rgb, #rrggbb, or a basic colour name of CSS.
std::optional<Rgb> ReadColour(std::string_view text);

// Reads a length in points, or with a unit behind it: 9, 9pt, 3mm, 0.125in. It may be negative.
std::optional<double> ReadLength(std::string_view text);

// Reads the name of a size, as a4 or letter-landscape, or a width and a height: 210x297mm, 8.5inx11in. A width without a unit has
// that of the height.
std::optional<PageSize> ReadPageSize(std::string_view text);

// Reads L,B,R,T in points, and neither turns nor refuses a box that is inverted or empty.
std::optional<Box> ReadBox(std::string_view text);

} // namespace vxhost
