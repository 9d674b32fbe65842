#include "devices/vector/XmlText.h"

#include "host/reading/Utf8.h"

#include <algorithm>
#include <string_view>

namespace vxhost
{

namespace
{

constexpr char32_t kReplacement = 0xFFFD;

// Returns what XML 1.0 calls a character.
char32_t Fit(char32_t character)
{
    const bool isAllowed = character == '\t' || character == '\n' || character == '\r' ||
                           (character >= 0x20 && character < 0xD800) ||
                           (character >= 0xE000 && character < 0xFFFE) ||
                           (character >= 0x10000 && character < 0x110000);
    return isAllowed ? character : kReplacement;
}

std::string_view MarkupOf(char32_t character)
{
    switch (character) {
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '&':
        return "&amp;";
    case '"':
        return "&quot;";
    case '\r': // a reader would take it for a line feed
        return "&#13;";
    default:
        return {};
    }
}

} // namespace

size_t WriteXmlCharacter(char32_t character, char *to)
{
    const std::string_view markup = MarkupOf(character);
    std::ranges::copy(markup, to);
    if (!markup.empty())
        return markup.size();
    return WriteUtf8(Fit(character), to);
}

std::string FitForXml(std::string_view utf8)
{
    std::string text;
    char bytes[4];
    while (!utf8.empty())
        text.append(bytes, WriteUtf8(Fit(TakeCharacter(&utf8)), bytes));
    return text;
}

} // namespace vxhost
