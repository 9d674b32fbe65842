#include "devices/pdf/ToUnicode.h"

#include <algorithm>
#include <string_view>

namespace vxhost::pdf
{

namespace
{

constexpr size_t kMaxEntries = 100; // in one block of a character map
constexpr char32_t kFirstPair = 0x10000, kLastCharacter = 0x10FFFF, kReplacement = 0xFFFD;

constexpr std::string_view kStart =
    "/CIDInit /ProcSet findresource begin\n"
    "12 dict begin\n"
    "begincmap\n"
    "/CIDSystemInfo << /Registry (Adobe) /Ordering (UCS) /Supplement 0 >> def\n"
    "/CMapName /Adobe-Identity-UCS def\n"
    "/CMapType 2 def\n"
    "1 begincodespacerange\n";
constexpr std::string_view kEnd = "endcmap\n"
                                  "CMapName currentdict /CMap defineresource pop\n"
                                  "end\n"
                                  "end\n";

// The mark of byte order, and its mirror, mean no character to readers.
char32_t WithoutMarks(char32_t character)
{
    return character == 0 || character == 0xFEFF || character == 0xFFFE ? kReplacement : character;
}

bool IsCharacter(char32_t character)
{
    return character <= kLastCharacter && (character < 0xD800 || character > 0xDFFF);
}

} // namespace

void AppendHex(uint32_t value, int bytes, std::string *to)
{
    for (int shift = 8 * bytes - 4; shift >= 0; shift -= 4)
        *to += "0123456789ABCDEF"[value >> shift & 0xF];
}

std::string Utf16Hex(char32_t character)
{
    std::string text;
    if (!IsCharacter(character))
        character = kReplacement;
    if (character < kFirstPair) {
        AppendHex(character, 2, &text);
        return text;
    }
    AppendHex(0xD800 + ((character - kFirstPair) >> 10), 2, &text);
    AppendHex(0xDC00 + ((character - kFirstPair) & 0x3FF), 2, &text);
    return text;
}

std::string ToUnicodeMap(const std::map<uint32_t, char32_t> &characterOfCode, int codeBytes)
{
    std::string map(kStart);
    map += codeBytes == 1 ? "<00> <FF>\n" : "<0000> <FFFF>\n";
    map += "endcodespacerange\n";
    size_t left = characterOfCode.size();
    auto entry = characterOfCode.begin();
    while (left > 0) {
        const size_t block = std::min(left, kMaxEntries);
        map += std::to_string(block) + " beginbfchar\n";
        for (size_t i = 0; i < block; ++i, ++entry) {
            map += "<";
            AppendHex(entry->first, codeBytes, &map);
            map += "> <" + Utf16Hex(WithoutMarks(entry->second)) + ">\n";
        }
        map += "endbfchar\n";
        left -= block;
    }
    map += kEnd;
    return map;
}

} // namespace vxhost::pdf
