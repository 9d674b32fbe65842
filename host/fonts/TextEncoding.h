// The character sets in which the bytes of text stand, and what they mean in Unicode.
#pragma once

#include <vx/Toolbox.h>

#include <cstddef>
#include <cstdint>
#include <span>

namespace vxhost
{

// The numbers are those of the boundary.
enum class Script : uint8_t {
    Roman = kVXScriptRoman,
    Japanese = kVXScriptJapanese,
    TraditionalChinese = kVXScriptTraditionalChinese,
    Korean = kVXScriptKorean
};

enum class TextEncoding : uint8_t {
    MacRoman,
    CodePage1252,
    MacJapanese,
    MacChinese,
    MacKorean,
    Symbol,  // the set of the font of that name, and its like
    Dingbats // the set of Zapf's font of that name
};

// The Mac set of a script.
TextEncoding MacEncoding(Script script);

Script ScriptOf(TextEncoding encoding);

struct DecodedCharacter {
    char32_t character = 0;      // 0: the code means nothing
    size_t bytes = 1;            // how many it takes, 1 or 2
    bool isVerticalForm = false; // a code of its own for the form in a column
};

// The first character of text, which is not empty. A first byte of two that stands alone means nothing.
DecodedCharacter DecodeCharacter(TextEncoding encoding, std::span<const uint8_t> text);

// Whether a byte begins a character of two bytes.
bool IsLeadByte(TextEncoding encoding, uint8_t byte);

} // namespace vxhost
