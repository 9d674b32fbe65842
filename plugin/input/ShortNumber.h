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

struct ShortNumber {
    int64_t value; // an integer or a Fixed
    bool valid;
    bool point; // a Fixed
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

// By the place of the point among the eight characters; the last row is for none.
constexpr auto kShortScales = [] {
    std::array<double, kMostShortDigits + 1> scales = {};
    for (int32_t place = 0; place < kMostShortDigits; ++place)
        scales[static_cast<size_t>(place)] = ScaleOfDecimals(kMostShortDigits - 1 - place);
    scales[kMostShortDigits] = 1;
    return scales;
}();

// Reads a number of so many characters after its sign, 1 to kMostShortDigits. Eight bytes of text can be read. A number
// that does not fit its type is not valid either: it is rare enough for the plain way.
inline ShortNumber ReadShortNumber(const uint8_t *text, int32_t length, bool negative)
{
    // The last character comes to stand in the highest byte, and zeros before the first.
    const uint64_t word = (LoadBytes(text) ^ (kBytesOfOne * '0')) << (64 - 8 * length);
    // No digit has this bit and the point has. The first byte that has it must be one.
    constexpr uint64_t kPoint = '.' ^ '0', kBit = 0x10;
    const uint64_t points = word & (kBytesOfOne * kBit);
    const uint64_t isPoint = points != 0;
    const uint64_t first = points & (0 - points);
    const uint64_t characters = word ^ (first / kBit * kPoint);
    const uint64_t most = kBytesOfOne * 9 - first / kBit * 9;
    // What stands before the point goes up by its byte, and takes its place. Without one everything stays.
    const uint64_t moved = (first << 4) - isPoint;
    const uint64_t digits = characters ^ ((characters ^ characters << 8) & moved);
    const auto place = static_cast<size_t>(std::countr_zero(points | uint64_t{1} << 63)) / 8 + 1 -
                       static_cast<size_t>(isPoint);
    const int64_t magnitude = ScaleDecimal(static_cast<int32_t>(JoinDigits(digits)), kShortScales[place]);
    const int64_t sign = -static_cast<int64_t>(negative);
    const bool valid =
        !HasByteAbove(characters, most) && length > static_cast<int32_t>(isPoint) && magnitude <= INT32_MAX;
    return {(magnitude ^ sign) - sign, valid, isPoint != 0};
}

} // namespace vx
