// Sixteen bytes at a time: what searches the whole of a document for few things is written with these, so that the compiler
// needs no luck to do it fast on any processor.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace vxhost
{

// A comparison gives all bits of a byte, or none.
using ByteBlock [[gnu::vector_size(16)]] = uint8_t;

inline ByteBlock LoadBlock(const uint8_t *from)
{
    ByteBlock bytes;
    std::memcpy(&bytes, from, sizeof bytes);
    return bytes;
}

inline ByteBlock Is(ByteBlock bytes, char character)
{
    return reinterpret_cast<ByteBlock>(bytes == static_cast<uint8_t>(character));
}

inline bool IsAny(ByteBlock marks)
{
    uint64_t halves[2];
    std::memcpy(halves, &marks, sizeof halves);
    return (halves[0] | halves[1]) != 0;
}

// The next one, for processors that cannot do it in one step.
inline uint64_t BitsOfMarks(ByteBlock marks)
{
    marks &= static_cast<uint8_t>(1);
    uint64_t halves[2];
    std::memcpy(halves, &marks, sizeof halves);
    uint64_t bits = 0;
    for (size_t half = 0; half < 2; ++half) {
        if constexpr (std::endian::native == std::endian::big)
            halves[half] = __builtin_bswap64(halves[half]);
        // The product gathers the lowest bits of eight bytes in its highest byte.
        bits |= (halves[half] * 0x0102040810204080U) >> 56 << (half * 8);
    }
    return bits;
}

// Returns a bit for each byte that is marked, the lowest for the first.
inline uint64_t BitsOf(ByteBlock marks)
{
#ifdef __SSE2__
    return static_cast<uint64_t>(_mm_movemask_epi8(reinterpret_cast<__m128i>(marks)));
#else
    return BitsOfMarks(marks);
#endif
}

inline uint64_t SumOf(ByteBlock bytes)
{
    constexpr uint64_t kEven = 0x00FF00FF00FF00FF;
    uint64_t halves[2], sum = 0;
    std::memcpy(halves, &bytes, sizeof halves);
    // Pairs of bytes have room for the sums, which the product gathers in the highest.
    for (const uint64_t half : halves)
        sum += (((half & kEven) + (half >> 8 & kEven)) * 0x0001000100010001U) >> 48;
    return sum;
}

inline ByteBlock IsLineEnd(ByteBlock bytes)
{
    return Is(bytes, '\r') | Is(bytes, '\n');
}

} // namespace vxhost
