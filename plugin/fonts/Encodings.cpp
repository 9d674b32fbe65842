#include "plugin/fonts/Encodings.h"

#include "plugin/text/TextObject.h"

namespace vx
{

namespace
{

constexpr bool IsBetween(uint8_t byte, uint8_t first, uint8_t last)
{
    return byte >= first && byte <= last;
}

// The first byte that a character gets.
using FirstByteProc = uint8_t (*)(uint8_t first, uint8_t second);

struct VerticalRow {
    uint8_t pc;
    uint8_t mac;
};

constexpr VerticalRow kVerticalRows[] = {{0x81, 0xEB}, {0x82, 0xEC}, {0x83, 0xED}, {0x87, 0xEE}};

uint8_t MacFirstByte(uint8_t first, uint8_t /*second*/)
{
    for (const VerticalRow &row : kVerticalRows)
        if (row.pc == first)
            return row.mac;
    return first;
}

uint8_t PCFirstByte(uint8_t first, uint8_t /*second*/)
{
    for (const VerticalRow &row : kVerticalRows)
        if (row.mac == first)
            return row.pc;
    return first;
}

// Punctuation, dashes and brackets.
bool IsVerticalPunctuation(uint8_t second)
{
    switch (second) {
    case 0x41:
    case 0x42:
    case 0x50:
    case 0x51:
    case 0x5B:
    case 0x5C:
    case 0x5D:
    case 0x81:
        return true;
    default:
        return IsBetween(second, 0x60, 0x64) || IsBetween(second, 0x69, 0x7A);
    }
}

// Small hiragana.
bool IsVerticalHiragana(uint8_t second)
{
    switch (second) {
    case 0x9F:
    case 0xA1:
    case 0xA3:
    case 0xA5:
    case 0xA7:
    case 0xC1:
    case 0xE1:
    case 0xE3:
    case 0xE5:
    case 0xEC:
        return true;
    default:
        return false;
    }
}

// Small katakana.
bool IsVerticalKatakana(uint8_t second)
{
    switch (second) {
    case 0x40:
    case 0x42:
    case 0x44:
    case 0x46:
    case 0x48:
    case 0x62:
    case 0x83:
    case 0x85:
    case 0x87:
    case 0x8E:
    case 0x95:
    case 0x96:
        return true;
    default:
        return false;
    }
}

bool HasVerticalForm(uint8_t macFirst, uint8_t second)
{
    switch (macFirst) {
    case 0xEB:
        return IsVerticalPunctuation(second);
    case 0xEC:
        return IsVerticalHiragana(second);
    case 0xED:
        return IsVerticalKatakana(second);
    default:
        return false;
    }
}

uint8_t NewerMacFirstByte(uint8_t first, uint8_t second)
{
    return HasVerticalForm(first, second) ? first : PCFirstByte(first, second);
}

void RewriteFirstBytes(uint8_t *bytes, int32_t length, int16_t script, FirstByteProc rewrite)
{
    if (script != kScriptJapanese)
        return;
    for (int32_t i = 0; i < length; ++i) {
        if (!IsDBCSFirstByte(bytes[i], script))
            continue;
        // A character cut off at the end of the string has no second byte.
        const uint8_t second = i + 1 < length ? bytes[i + 1] : 0;
        bytes[i] = rewrite(bytes[i], second);
        ++i;
    }
}

} // namespace

int16_t GetDefaultScript()
{
    return MacScript2VXParserScript(GetEnvirons(kVXSystemScript));
}

int16_t MacScript2VXParserScript(int32_t macScript)
{
    const bool known = macScript >= kScriptJapanese && macScript <= kScriptKorean;
    return known ? static_cast<int16_t>(macScript) : int16_t{kScriptRoman};
}

bool IsDBCSFont(int16_t script)
{
    return script >= kScriptJapanese && script <= kScriptKorean;
}

bool IsDBCSFirstByte(uint8_t byte, int16_t script)
{
    switch (script) {
    case kScriptJapanese:
        return IsBetween(byte, 0x81, 0x9F) || IsBetween(byte, 0xE0, 0xFC);
    case kScriptTraditionalChinese:
        return IsBetween(byte, 0xA1, 0xF9);
    case kScriptKorean:
        return IsBetween(byte, 0xA1, 0xFE);
    default:
        return false;
    }
}

Fixed GetDBCSWidth(const TextAndFontState *state, int16_t script)
{
    return script == kScriptJapanese ? state->doubleByteWidth : 0;
}

void PCToMacVerticalEncoding(uint8_t *bytes, int32_t length, int16_t script)
{
    RewriteFirstBytes(bytes, length, script, MacFirstByte);
}

void MacToPCVerticalEncoding(uint8_t *bytes, int32_t length, int16_t script)
{
    RewriteFirstBytes(bytes, length, script, PCFirstByte);
}

void Mac3JToMac5JVerticalEncoding(uint8_t *bytes, int32_t length, int16_t script)
{
    RewriteFirstBytes(bytes, length, script, NewerMacFirstByte);
}

} // namespace vx
