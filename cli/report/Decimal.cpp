#include "cli/report/Decimal.h"

#include <fmt/format.h>

namespace vxhost
{

std::string Decimal(double value, int digits)
{
    std::string text = fmt::format("{:.{}f}", value, digits);
    if (text.find('.') != std::string::npos) {
        text.erase(text.find_last_not_of('0') + 1);
        if (text.back() == '.')
            text.pop_back();
    }
    return text == "-0" ? "0" : text;
}

} // namespace vxhost
