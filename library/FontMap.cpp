#include "library/FontMap.h"

#include "host/reading/Utf8.h"
#include "library/Options.h"

#include <algorithm>

namespace vxhost
{

namespace
{

std::string_view Trimmed(std::string_view text)
{
    constexpr std::string_view kBlanks = " \t\r";
    const size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

} // namespace

FontMap ReadFontMap(std::string_view text, const std::string &file)
{
    FontMap served;
    for (size_t number = 1; !text.empty(); ++number) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        const std::string_view row = Trimmed(line.substr(0, line.find('#')));
        if (row.empty())
            continue;
        const size_t equals = row.find('=');
        const std::string_view asked = Trimmed(row.substr(0, equals));
        const std::string_view font = equals == std::string_view::npos ? "" : Trimmed(row.substr(equals + 1));
        if (asked.empty() || font.empty() || line.size() > kMaxMapLine || number > kMaxMapRows)
            throw OptionError(file + ": line " + std::to_string(number) + " is \"" + Printable(row, 60) +
                              "\": write ASKED = FONT, both PostScript names");
        served[std::string(asked)] = font;
    }
    return served;
}

} // namespace vxhost
