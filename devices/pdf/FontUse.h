// Says, in the file of a page that is to be joined to others, what that uses of a font, in the place of the font itself.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace vxhost::pdf
{

struct FontUse {
    std::string file;       // that the font is in
    int face = 0;           // of it
    std::string asked, own; // the font's name in the document and in the file
    bool runsDown = false;
    std::map<uint32_t, char32_t> characters = {}; // by glyph
};

constexpr std::string_view kFontUse = "/VXFontUse"; // the type of the dictionary

std::string ValueOf(const FontUse &use);
// Nothing: it is none, or not whole.
std::optional<FontUse> ReadFontUse(std::string_view value);

} // namespace vxhost::pdf
