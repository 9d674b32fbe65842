// The values of options, read strictly: all of the text, or nothing.
#pragma once

#include "devices/raster/RasterOptions.h"
#include "host/drawing/Device.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vxhost
{

std::optional<double> ReadNumber(std::string_view text);   // finite decimal: 300, 0.5
std::optional<int32_t> ReadInteger(std::string_view text); // decimal
std::optional<int64_t> ReadSeconds(std::string_view text); // digits alone

// Bytes, with K, M, G or T as powers of 1024: 512M, 1GiB.
std::optional<int64_t> ReadSize(std::string_view text);
std::string SizeText(int64_t bytes);

// #rgb, #rrggbb, or a basic colour name of CSS.
std::optional<Rgb> ReadColour(std::string_view text);

// L,B,R,T in points, as written: neither turned nor refused when it is inverted or empty.
std::optional<Box> ReadBox(std::string_view text);

} // namespace vxhost
