#include "library/Decimal.h"

#include <array>
#include <charconv>
#include <limits>

namespace vxhost
{

std::string Decimal(double value, int digits)
{
    std::array<char, std::numeric_limits<double>::max_exponent10 + 64>
        buffer; // the longest there is, with its decimals
    const auto [end, failure] =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed, digits);
    std::string text(buffer.data(), failure == std::errc() ? end : buffer.data());
    if (text.find('.') != std::string::npos) {
        text.erase(text.find_last_not_of('0') + 1);
        if (text.back() == '.')
            text.pop_back();
    }
    return text == "-0" ? "0" : text;
}

} // namespace vxhost
