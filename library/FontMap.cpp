#include "library/FontMap.h"

#include "host/reading/Trimmed.h"
#include "host/reading/Utf8.h"
#include "library/Options.h"

#include <algorithm>
#include <set>

namespace vxhost
{

namespace
{

constexpr std::string_view kBlanks = " \t\r";

} // namespace

FontMap ReadFontMap(std::string_view text, const std::string &file)
{
    FontMap served;
    for (size_t number = 1; !text.empty(); ++number) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        const std::string_view row = Trimmed(line.substr(0, line.find('#')), kBlanks);
        if (row.empty())
            continue;
        const size_t equals = row.find('=');
        const std::string_view asked = Trimmed(row.substr(0, equals), kBlanks);
        const std::string_view font =
            equals == std::string_view::npos ? "" : Trimmed(row.substr(equals + 1), kBlanks);
        if (asked.empty() || font.empty() || line.size() > kMaxMapLine || number > kMaxMapRows)
            throw OptionError(file + ": line " + std::to_string(number) + " is \"" + Printable(row, 60) +
                              "\": write ASKED = FONT, both PostScript names");
        served[std::string(asked)] = font;
    }
    return served;
}

const FontMap::value_type *FindRowWithoutFont(const FontMap &map, const FontList &fonts)
{
    std::set<std::string_view> names;
    for (int32_t i = 0; i < fonts.Count(); ++i)
        names.insert(fonts.At(i).postScriptName);
    for (const FontMap::value_type &row : map) {
        if (!names.contains(row.second))
            return &row;
    }
    return nullptr;
}

} // namespace vxhost
