// Conversions between the plug-in's borrowed text and the standard library's.
#pragma once

#include "plugin/input/BigStrs.h"

#include <string_view>

namespace vxtest
{

inline vx::BigString View(std::string_view text)
{
    return {reinterpret_cast<const uint8_t *>(text.data()), static_cast<int32_t>(text.size())};
}

inline std::string_view Text(const uint8_t *text, int32_t length)
{
    return length < 1 ? std::string_view()
                      : std::string_view(reinterpret_cast<const char *>(text), static_cast<size_t>(length));
}

inline std::string_view Text(const vx::BigString &string)
{
    return Text(string.text, string.length);
}

} // namespace vxtest
