#include "cli/FontChoice.h"

#include "cli/CommonOptions.h"
#include "host/reading/Utf8.h"

#include <fmt/format.h>

#include <fstream>
#include <string_view>

namespace vxhost
{

namespace
{

constexpr size_t kMaxLine = 1024;
constexpr size_t kMaxRows = 10000;

std::string_view Trimmed(std::string_view text)
{
    constexpr std::string_view kBlanks = " \t\r";
    const size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

} // namespace

std::map<std::string, std::string> ReadFontMap(const std::string &path)
{
    std::ifstream file(path);
    if (!file)
        throw UsageError(fmt::format("{}: cannot be read: check the name after --font-map", path));
    std::map<std::string, std::string> served;
    std::string line;
    for (size_t number = 1; std::getline(file, line); ++number) {
        const std::string_view text = Trimmed(std::string_view(line).substr(0, line.find('#')));
        if (text.empty())
            continue;
        const size_t equals = text.find('=');
        const std::string_view asked = Trimmed(text.substr(0, equals));
        const std::string_view font =
            equals == std::string_view::npos ? "" : Trimmed(text.substr(equals + 1));
        if (asked.empty() || font.empty() || line.size() > kMaxLine || number > kMaxRows)
            throw UsageError(fmt::format("{}: line {} is \"{}\": write ASKED = FONT, both PostScript names",
                                         path, number, Printable(text, 60)));
        served[std::string(asked)] = font;
    }
    return served;
}

} // namespace vxhost
