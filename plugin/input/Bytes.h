// Eight bytes of text as one word, and what can be asked of all of them at once.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace vx
{

constexpr uint64_t kBytesOfOne = 0x0101010101010101u;
constexpr uint64_t kHighBits = kBytesOfOne << 7;

// The first byte is the lowest one.
inline uint64_t LoadBytes(const uint8_t *text)
{
    uint64_t word;
    memcpy(&word, text, sizeof word);
    if constexpr (std::endian::native == std::endian::big)
        word = __builtin_bswap64(word);
    return word;
}

// The highest bit of the lowest byte that is zero, and maybe those of bytes above it; 0 when there is none.
constexpr uint64_t ZeroBytes(uint64_t word)
{
    return (word - kBytesOfOne) & ~word & kHighBits;
}

// The highest bit of each byte from least to most, which are below 128.
constexpr uint64_t BytesBetween(uint64_t word, uint8_t least, uint8_t most)
{
    const uint64_t low = word & ~kHighBits; // so that no sum carries
    const uint64_t notBelow = low + kBytesOfOne * (0x80u - least);
    const uint64_t above = low + kBytesOfOne * (0x7Fu - most);
    return notBelow & ~above & ~word & kHighBits;
}

// The highest bits of the eight bytes side by side, that of the first byte lowest. The word has no others.
constexpr uint64_t GatherHighBits(uint64_t word)
{
    return (word >> 7) * 0x0102040810204080u >> 56;
}

// True when a byte is larger than the one of most in its place, which is below 128.
constexpr bool HasByteAbove(uint64_t word, uint64_t most)
{
    // A carry out of a byte does not matter: that byte is above 127 itself.
    return (((word + (kBytesOfOne * 0x7F - most)) | word) & kHighBits) != 0;
}

} // namespace vx
