#include "devices/vector/Numbers.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>

namespace vxhost
{

namespace
{

constexpr double kLimit = 1e9;
constexpr uint32_t kPowersOfTen[] = {1, 10, 100, 1000, 10000, 100000};
constexpr uint64_t kFactorUnit = 1000000000;
constexpr int kFactorPlaces = 9;

double InRange(double value)
{
    if (std::abs(value) <= kLimit)
        return value;
    return value > 0 ? kLimit : value < 0 ? -kLimit : 0;
}

// The value, which must lie in a range that fits, rounded.
int64_t Nearest(double value)
{
    return static_cast<int64_t>(value < 0 ? value - 0.5 : value + 0.5);
}

// The digits of each value below 10,000, a byte each, the first in the lowest.
constexpr auto kDigits = [] {
    std::array<uint32_t, 10000> digits = {};
    for (uint32_t value = 0; value < digits.size(); ++value)
        digits[value] = value / 1000 | value / 100 % 10 << 8 | value / 10 % 10 << 16 | value % 10 << 24;
    return digits;
}();

// Four characters, of which the caller may want fewer.
void Put(uint32_t digits, char *to)
{
    digits |= 0x30303030;
    to[0] = static_cast<char>(digits);
    to[1] = static_cast<char>(digits >> 8);
    to[2] = static_cast<char>(digits >> 16);
    to[3] = static_cast<char>(digits >> 24);
}

char *WriteWhole(uint64_t value, char *to)
{
    constexpr uint64_t kBeyondFour = 10000;
    if (value >= kBeyondFour) {
        to = WriteWhole(value / kBeyondFour, to);
        Put(kDigits[static_cast<size_t>(value % kBeyondFour)], to);
        return to + 4;
    }
    const uint32_t digits = kDigits[static_cast<size_t>(value)];
    const int zeros = std::countr_zero(digits | 1U << 24) / 8; // leading ones; the last digit is not counted
    Put(digits >> (8 * zeros), to);
    return to + 4 - zeros;
}

char *WriteDecimals(uint64_t value, int places, char *to)
{
    *to++ = '.';
    for (int i = places; i-- > 0;) {
        to[i] = static_cast<char>('0' + value % 10);
        value /= 10;
    }
    return to + places;
}

// The fewest decimals that tell fraction / 65536 from its neighbours: with them the nearest decimal is less than half
// of 1/65536 away. Five always do.
int PlacesOf(uint32_t fraction)
{
    uint32_t enough = 1U << 5;
    for (int places = 1; places < 5; ++places) {
        const uint32_t power = kPowersOfTen[places];
        enough |= static_cast<uint32_t>(((fraction * power + power / 2 - 1) & 0xFFFF) < power - 1) << places;
    }
    return std::countr_zero(enough);
}

// Writes fraction / 65536, which is not 0.
char *WriteFraction(uint32_t fraction, char *to)
{
    const int places = PlacesOf(fraction);
    const uint64_t decimal = (uint64_t{fraction} * kPowersOfTen[places] + 0x8000) >> 16;
    if (places == 5)
        return WriteDecimals(decimal, places, to);
    *to++ = '.';
    Put(kDigits[static_cast<size_t>(decimal * kPowersOfTen[4 - places])], to);
    return to + places;
}

constexpr double kShort = kDigits.size() - 1; // whole parts of four digits, rounded or not

} // namespace

// All digits are made, and those that a number does not have are left behind: branches would go another way with each number. Where
// fewer decimals than four do, the nearest four are the same and zeros.
char *WriteNumber(double value, char *to)
{
    if (!(std::abs(value) < kShort))
        return WriteNumberPlainly(value, to);
    const auto raw = static_cast<int32_t>(value * 65536 + std::copysign(0.5, value));
    const auto magnitude = static_cast<uint32_t>(std::abs(raw));
    const uint32_t fraction = magnitude & 0xFFFF;
    constexpr uint32_t kPower = kPowersOfTen[4];
    const uint32_t scaled = fraction * kPower;
    if (((scaled + kPower / 2 - 1) & 0xFFFF) >= kPower - 1) // five decimals
        return WriteNumberPlainly(value, to);
    *to = '-';
    to += raw < 0 ? 1 : 0;
    const uint64_t digits = kDigits[magnitude >> 16];
    // A whole part of 0 has one digit where there is no fraction, else none.
    const int zeros = std::countr_zero(digits | uint64_t{1} << (fraction == 0 ? 24 : 32)) / 8;
    Put(static_cast<uint32_t>(digits >> (8 * zeros)), to);
    to += 4 - zeros;
    const uint32_t decimals = kDigits[(scaled + 0x8000) >> 16];
    *to = '.';
    Put(decimals, to + 1);
    const int places =
        static_cast<int>(std::bit_width(uint64_t{decimals} << 8 | 1)) / 8; // the last that is not 0
    return to + places + (places > 0 ? 1 : 0);
}

char *WriteNumberPlainly(double value, char *to)
{
    const int64_t raw = Nearest(InRange(value) * 65536);
    if (raw < 0)
        *to++ = '-';
    const auto magnitude = static_cast<uint64_t>(raw < 0 ? -raw : raw);
    const auto fraction = static_cast<uint32_t>(magnitude & 0xFFFF);
    if (magnitude >= 0x10000 || fraction == 0)
        to = WriteWhole(magnitude >> 16, to);
    return fraction == 0 ? to : WriteFraction(fraction, to);
}

char *WriteFactor(double value, char *to)
{
    const int64_t raw = Nearest(InRange(value) * static_cast<double>(kFactorUnit));
    if (raw < 0)
        *to++ = '-';
    const auto magnitude = static_cast<uint64_t>(raw < 0 ? -raw : raw);
    uint64_t fraction = magnitude % kFactorUnit;
    if (magnitude >= kFactorUnit || fraction == 0)
        to = WriteWhole(magnitude / kFactorUnit, to);
    if (fraction == 0)
        return to;
    int places = kFactorPlaces;
    for (; fraction % 10 == 0; --places)
        fraction /= 10;
    return WriteDecimals(fraction, places, to);
}

std::string NumberText(double value)
{
    char text[kMaxNumber];
    return {text, WriteNumber(value, text)};
}

std::string FactorText(double value)
{
    char text[kMaxNumber];
    return {text, WriteFactor(value, text)};
}

} // namespace vxhost
