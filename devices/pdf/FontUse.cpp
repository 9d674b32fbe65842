#include "devices/pdf/FontUse.h"

#include "devices/pdf/PdfText.h"
#include "devices/pdf/ToUnicode.h"
#include "devices/pdf/Values.h"

#include <algorithm>
#include <charconv>
#include <system_error>

namespace vxhost::pdf
{

namespace
{

constexpr std::string_view kDown = "true";

std::string HexValue(const std::string &bytes)
{
    std::string value = "<";
    for (const char byte : bytes)
        AppendHex(static_cast<unsigned char>(byte), 1, &value);
    return value + ">";
}

// Takes a number off the beginning of the text, with the white space before it.
template <typename Number>
bool TakeNumber(std::string_view *text, Number *number, int base = 10)
{
    text->remove_prefix(std::min(text->find_first_not_of(' '), text->size()));
    const auto [end, error] = std::from_chars(text->data(), text->data() + text->size(), *number, base);
    text->remove_prefix(static_cast<size_t>(end - text->data()));
    return error == std::errc();
}

bool ReadHex(std::string_view value, std::string *bytes)
{
    if (value.size() < 2 || value.size() % 2 != 0 || value.front() != '<' || value.back() != '>')
        return false;
    for (size_t i = 1; i + 1 < value.size(); i += 2) {
        std::string_view digits = value.substr(i, 2);
        uint8_t byte = 0;
        if (!TakeNumber(&digits, &byte, 16) || !digits.empty())
            return false;
        bytes->push_back(static_cast<char>(byte));
    }
    return true;
}

bool ReadCharacters(std::string_view value, std::map<uint32_t, char32_t> *characters)
{
    if (value.size() < 2 || value.front() != '[' || value.back() != ']')
        return false;
    value = value.substr(1, value.size() - 2);
    while (!value.empty()) {
        uint32_t glyph = 0, character = 0;
        if (!TakeNumber(&value, &glyph) || !TakeNumber(&value, &character))
            return false;
        characters->emplace(glyph, character);
    }
    return true;
}

} // namespace

std::string ValueOf(const FontUse &use)
{
    std::string characters;
    for (const auto &[glyph, character] : use.characters)
        characters.append(std::to_string(glyph))
            .append(" ")
            .append(std::to_string(static_cast<uint32_t>(character)))
            .append(" ");
    if (!characters.empty())
        characters.pop_back();
    Dictionary value;
    value.Add("Type", kFontUse).Add("File", HexValue(use.file)).Add("Face", use.face);
    value.Add("Asked", HexValue(use.asked)).Add("Own", HexValue(use.own));
    value.Add("RunsDown", use.runsDown ? kDown : "false").Add("Characters", ArrayValue(characters));
    return value.Value();
}

std::optional<FontUse> ReadFontUse(std::string_view value)
{
    const std::optional<Entries> entries = EntriesOf(value);
    if (!entries || ValueOf(*entries, "Type") != kFontUse)
        return std::nullopt;
    FontUse use;
    std::string_view face = ValueOf(*entries, "Face");
    const bool isWhole = ReadHex(ValueOf(*entries, "File"), &use.file) && TakeNumber(&face, &use.face) &&
                         face.empty() && ReadHex(ValueOf(*entries, "Asked"), &use.asked) &&
                         ReadHex(ValueOf(*entries, "Own"), &use.own) &&
                         ReadCharacters(ValueOf(*entries, "Characters"), &use.characters);
    if (!isWhole)
        return std::nullopt;
    use.runsDown = ValueOf(*entries, "RunsDown") == kDown;
    return use;
}

} // namespace vxhost::pdf
