// Short numbers: those of at most eight characters, which most numbers of a drawing are, read without a branch on their
// digits or their point.
//
// The eight characters are one word, and each step works on all of them. ScanNumber is the plain twin.
#pragma once

#include "plugin/input/BigStrs.h"
#include "plugin/input/Bytes.h"

#include <array>
#include <bit>

namespace vx
{

constexpr int32_t kMostShortDigits = 8;

// Flags are numbers, 0 or 1: they are reckoned with.
struct ShortNumber {
    int64_t value; // an integer or a Fixed
    bool valid;
    int32_t point; // it has one, and is a Fixed
};

// The eight digits of a word as a number, the first of them its lowest byte.
constexpr uint32_t JoinDigits(uint64_t digits)
{
    constexpr uint64_t kPairs = 0x000000FF000000FFu;
    const uint64_t pairs = digits * 10 + (digits >> 8); // in the even bytes
    const uint64_t joined = (pairs & kPairs) * (100 + (uint64_t{1000000} << 32)) +
                            (pairs >> 16 & kPairs) * (1 + (uint64_t{10000} << 32));
    return static_cast<uint32_t>(joined >> 32);
}

// A bit that a point has and no digit has, both less '0'.
constexpr int32_t kPointBit = 4;

// By the bit that tells where the point is; by the last bit where there is none.
constexpr auto kShortScales = [] {
    std::array<double, 64> scales = {};
    size_t bit = kPointBit;
    for (int32_t decimals = kMostShortDigits - 1; decimals >= 0; --decimals, bit += 8)
        scales[bit] = ScaleOfDecimals(decimals);
    scales[63] = 1;
    return scales;
}();

// Reads a number of so many characters after its sign, 1 to kMostShortDigits; below is 1 for one below 0. Eight bytes of
// text can be read. A number that does not fit its type is not valid either: it is rare enough for the plain way.
inline ShortNumber ReadShortNumber(const uint8_t *text, int32_t length, int32_t below)
{
    // The last character comes to stand in the highest byte, and zeros before the first.
    const uint64_t word = (LoadBytes(text) ^ (kBytesOfOne * '0')) << (64 - 8 * length);
    // The first byte that may be a point must be one; the others are digits.
    const uint64_t points = word & (kBytesOfOne << kPointBit);
    const int32_t isPoint = points != 0;
    const uint64_t first = points & (0 - points);
    const uint64_t characters = word ^ ((first >> kPointBit) * ('.' ^ '0'));
    const uint64_t most = kBytesOfOne * 9 - (first >> kPointBit) * 9;
    // The digits before the point move up by one byte, over the point. A number without a point stays as it is.
    const uint64_t moved = (first << (8 - kPointBit)) - static_cast<uint64_t>(isPoint);
    const uint64_t digits = characters ^ ((characters ^ characters << 8) & moved);
    const auto place = static_cast<size_t>(std::countr_zero(points | uint64_t{1} << 63));
    const int64_t magnitude = ScaleDecimal(static_cast<int32_t>(JoinDigits(digits)), kShortScales[place]);
    // All of this is cheaper than a branch that is wrong now and then.
    const int64_t sign = -static_cast<int64_t>(below);
    return {(magnitude ^ sign) - sign,
            !HasByteAbove(characters, most) && length > isPoint && magnitude <= INT32_MAX, isPoint};
}

} // namespace vx
