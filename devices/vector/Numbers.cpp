#include "devices/vector/Numbers.h"

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

// Rounded; the value lies in a range that fits.
int64_t Nearest(double value)
{
    return static_cast<int64_t>(value < 0 ? value - 0.5 : value + 0.5);
}

char *WriteWhole(uint64_t value, char *to)
{
    char digits[20];
    int count = 0;
    do {
        digits[count++] = static_cast<char>('0' + value % 10);
        value /= 10;
    } while (value != 0);
    while (count > 0)
        *to++ = digits[--count];
    return to;
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

// fraction / 65536, which is not 0. Five places always tell neighbours apart.
char *WriteFraction(uint32_t fraction, char *to)
{
    for (int places = 1;; ++places) {
        const uint64_t power = kPowersOfTen[places];
        const uint64_t exact = fraction * power;
        const uint64_t decimal = (exact + 0x8000) >> 16;
        const auto error = static_cast<int64_t>(decimal << 16) - static_cast<int64_t>(exact);
        if (static_cast<uint64_t>(2 * std::abs(error)) < power)
            return WriteDecimals(decimal, places, to);
    }
}

} // namespace

char *WriteNumber(double value, char *to)
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
