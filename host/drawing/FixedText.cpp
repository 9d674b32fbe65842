#include "host/drawing/FixedText.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <string_view>

namespace vxhost
{

namespace
{

// Neighbours are 1/65536 apart, so five decimals always tell them from each other.
constexpr std::array<uint64_t, 6> kPowersOfTen = {1, 10, 100, 1000, 10000, 100000};

constexpr uint64_t ToNearestFixed(uint64_t decimal, uint64_t power)
{
    return (decimal * 65536 + power / 2) / power;
}

} // namespace

void AppendFixedText(std::string *text, Fixed value)
{
    const auto magnitude = static_cast<uint64_t>(value < 0 ? -int64_t{value} : int64_t{value});
    size_t places = 0;
    uint64_t decimal = 0;
    for (; places < kPowersOfTen.size(); ++places) {
        decimal = (magnitude * kPowersOfTen[places] + 32768) >> 16;
        if (ToNearestFixed(decimal, kPowersOfTen[places]) == magnitude)
            break;
    }

    std::array<char, 16> digits;
    const char *end = std::to_chars(digits.data(), digits.data() + digits.size(), decimal).ptr;
    const std::string_view all(digits.data(), static_cast<size_t>(end - digits.data()));
    if (value < 0)
        *text += '-';
    const size_t whole = all.size() > places ? all.size() - places : 0;
    *text += whole > 0 ? all.substr(0, whole) : "0";
    if (places == 0)
        return;
    *text += '.';
    if (whole == 0)
        text->append(places - all.size(), '0');
    *text += all.substr(whole);
}

std::string FixedText(Fixed value)
{
    std::string text;
    AppendFixedText(&text, value);
    return text;
}

} // namespace vxhost
