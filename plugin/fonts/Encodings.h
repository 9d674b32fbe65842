// Scripts and double-byte text: which script the system uses, which bytes begin a character of two, and how vertical
// Japanese is coded on a PC and in two generations of the Mac.
#pragma once

#include <vx/Types.h>

#include <cstdint>

namespace vx
{

struct TextAndFontState;

enum Script : int16_t {
    kScriptRoman = 0, // and every script that is not listed
    kScriptJapanese = 1,
    kScriptTraditionalChinese = 2,
    kScriptKorean = 3
};
constexpr int16_t kScriptCount = 4;

// The script that the system is set to.
int16_t GetDefaultScript();

// A Mac script number as a Script: 1 to 3 are passed through, all others count as Roman.
int16_t MacScript2VXParserScript(int32_t macScript);

bool IsDBCSFont(int16_t script);
bool IsDBCSFirstByte(uint8_t byte, int16_t script);

// The width of a double-byte character in ems: known for Japanese, 0 for every other script.
Fixed GetDBCSWidth(const TextAndFontState *state, int16_t script);

// These rewrite first bytes of double-byte Japanese text in place; text of any other script stays. Vertical forms
// have rows of their own on a Mac. In the newer Mac encoding these rows hold only what has a vertical form.
void PCToMacVerticalEncoding(uint8_t *bytes, int32_t length, int16_t script);
void MacToPCVerticalEncoding(uint8_t *bytes, int32_t length, int16_t script);
void Mac3JToMac5JVerticalEncoding(uint8_t *bytes, int32_t length, int16_t script);

} // namespace vx
