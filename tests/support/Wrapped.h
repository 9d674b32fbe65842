// Puts around bytes what archives put around a file, for tests.
#pragma once

#include <cstdint>
#include <string>

namespace vxtest
{

inline std::string Big(uint32_t value, int bytes = 4)
{
    std::string text;
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8)
        text += static_cast<char>(value >> shift);
    return text;
}

// Byte 1 is the length of the name, bytes 83 to 86 the size of the data; 74 and 82 are zero.
inline std::string MacBinary(const std::string &data)
{
    std::string header(128, '\0');
    header.replace(1, 5, "\4harp");
    header.replace(83, 4, Big(static_cast<uint32_t>(data.size())));
    return header + data + std::string(128 - data.size() % 128, '\0');
}

// Two entries: finder information, then the data.
inline std::string AppleRecord(uint32_t magic, const std::string &data)
{
    return Big(magic) + Big(0x20000) + std::string(16, '\0') + Big(2, 2) + Big(9) + Big(50) + Big(32) +
           Big(1) + Big(82) + Big(static_cast<uint32_t>(data.size())) + std::string(32, '\0') + data;
}

} // namespace vxtest
