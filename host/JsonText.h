// JSON that a terminal may be shown.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vxhost
{

// JSON may hold the control characters U+007F to U+009F as they are, and there are terminals that obey them. They can
// only stand in strings, where they are escaped here. json is UTF-8.
inline std::string EscapeControls(std::string_view json)
{
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    text.reserve(json.size());
    for (size_t i = 0; i < json.size(); ++i) {
        const auto byteAt = [json](size_t at) { return static_cast<uint8_t>(json[at]); };
        const bool isLead = byteAt(i) == 0xC2 && i + 1 < json.size() && byteAt(i + 1) < 0xA0;
        if (byteAt(i) != 0x7F && !isLead) {
            text += json[i];
            continue;
        }
        i += isLead ? 1 : 0;
        (text += "\\u00").append({kDigits[byteAt(i) >> 4], kDigits[byteAt(i) & 15]});
    }
    return text;
}

} // namespace vxhost
