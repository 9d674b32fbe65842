#include "host/fonts/GlyphChoice.h"

#include <algorithm>
#include <iterator>

namespace vxhost
{

namespace
{

// Pairs of characters that look the same: fonts have the one or the other.
constexpr struct {
    char32_t character;
    char32_t instead;
} kAlternates[] = {
    {0x00A0, 0x0020}, {0x00AF, 0x02C9}, {0x00B5, 0x03BC}, {0x00B7, 0x2219}, {0x0394, 0x2206},
    {0x03A9, 0x2126}, {0x03BC, 0x00B5}, {0x2014, 0x2015}, {0x2015, 0x2014}, {0x2016, 0x2225},
    {0x2044, 0x2215}, {0x2206, 0x0394}, {0x2212, 0xFF0D}, {0x2329, 0x27E8}, {0x232A, 0x27E9},
    {0x23AF, 0xF8E7}, {0x23D0, 0xF8E6}, {0x301C, 0xFF5E}, {0xFFE0, 0x00A2}, {0xFFE1, 0x00A3},
    {0xFFE2, 0x00AC}, {0xFFE3, 0x00AF},
};

// Pieces of tall brackets and of the integral. Before Unicode took them in, fonts had them from here on.
constexpr char32_t kOldPieces = 0xF8EB;
constexpr char32_t kPieces[] = {0x239B, 0x239C, 0x239D, 0x23A1, 0x23A2, 0x23A3, 0x23A7,
                                0x23A8, 0x23A9, 0x23AA, 0x23AE, 0x239E, 0x239F, 0x23A0,
                                0x23A4, 0x23A5, 0x23A6, 0x23AB, 0x23AC, 0x23AD};

// 0: there is none.
char32_t AlternateOf(char32_t character)
{
    const auto *piece = std::ranges::find(kPieces, character);
    if (piece != std::end(kPieces))
        return kOldPieces + static_cast<char32_t>(piece - std::begin(kPieces));
    const auto *found =
        std::ranges::find(kAlternates, character, [](const auto &row) { return row.character; });
    return found == std::end(kAlternates) ? 0 : found->instead;
}

} // namespace

uint32_t ChooseGlyph(const FontFile &file, char32_t character, bool isUpright)
{
    for (const char32_t each : {character, AlternateOf(character)}) {
        const uint32_t glyph = each == 0   ? 0
                               : isUpright ? file.FindVerticalGlyph(each)
                                           : file.FindGlyph(each);
        if (glyph != 0)
            return glyph;
    }
    return 0;
}

} // namespace vxhost
