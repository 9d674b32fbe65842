// Length-prefixed strings, the text form of the Toolbox: one length byte, then that many bytes.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace vxhost
{

constexpr size_t kMaxPascalLength = 255;

inline std::string_view PascalView(const uint8_t *string)
{
    return {reinterpret_cast<const char *>(string) + 1, string[0]};
}

// to has room for 256 bytes; a longer text is cut.
inline void StorePascal(std::string_view text, uint8_t *to)
{
    const size_t length = std::min(text.size(), kMaxPascalLength);
    to[0] = static_cast<uint8_t>(length);
    std::copy_n(text.begin(), length, to + 1); // an empty text may have no bytes to point at
}

} // namespace vxhost
