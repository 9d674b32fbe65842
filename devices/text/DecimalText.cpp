// Doubles become integers of the last place at once; what is left is integer arithmetic, two digits a step.
#include "devices/text/DecimalText.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace vxhost
{

namespace
{

// As a coordinate it lies beyond any page; times 10^6 it still fits into 64 bits.
constexpr double kFarthest = 9e11;
constexpr double kFarthestWhole = 1e15;
constexpr double kHalf =
    0.5; // makes rounding of cutting off; a call of the library's would cost as much as the digits

constexpr std::array<char, 200> MakePairs()
{
    std::array<char, 200> pairs{};
    for (size_t i = 0; i < 100; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}
constexpr std::array<char, 200> kPairs = MakePairs();

void WritePair(uint64_t number, char *to)
{
    std::memcpy(to, &kPairs[2 * number], 2);
}

char *WriteWhole(uint64_t number, char *to)
{
    int digits = 1;
    for (uint64_t power = 10; number >= power && digits < 19; power *= 10)
        ++digits;
    char *const end = to + digits;
    char *at = end;
    for (; at - to >= 2; number /= 100)
        WritePair(number % 100, at -= 2);
    if (at > to)
        *to = static_cast<char>('0' + number);
    return end;
}

// kPlaces digits, even in number, not all of them 0.
template <int kPlaces>
char *WriteFraction(uint32_t fraction, char *to)
{
    *to++ = '.';
    for (int i = kPlaces; i > 0; fraction /= 100)
        WritePair(fraction % 100, to + (i -= 2));
    to += kPlaces;
    while (to[-1] == '0')
        --to;
    return to;
}

template <int kPlaces, uint32_t kPower>
char *Write(double value, char *to)
{
    const double magnitude = std::abs(value);
    if (!(magnitude <= kFarthest)) {
        if (std::isnan(value))
            return WriteWhole(0, to);
        if (value < 0)
            *to++ = '-';
        return WriteWhole(static_cast<uint64_t>(magnitude < kFarthestWhole ? magnitude : kFarthestWhole), to);
    }
    const auto number = static_cast<uint64_t>(magnitude * kPower + kHalf);
    *to = '-';
    to += value < 0 && number != 0 ? 1 : 0;
    const uint64_t whole = number / kPower;
    const auto fraction = static_cast<uint32_t>(number - whole * kPower);
    to = WriteWhole(whole, to);
    return fraction == 0 ? to : WriteFraction<kPlaces>(fraction, to);
}

} // namespace

char *WriteDecimal(double value, char *to)
{
    return Write<4, 10000>(value, to);
}

char *WriteFactor(double value, char *to)
{
    return Write<6, 1000000>(value, to);
}

} // namespace vxhost
