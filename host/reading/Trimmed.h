// Text without the blanks around it.
#pragma once

#include <string_view>

namespace vxhost
{

inline std::string_view Trimmed(std::string_view text, std::string_view blanks = " \t")
{
    const size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

} // namespace vxhost
