// Scripts and double-byte text: which script the system uses, which bytes begin a character of two, and how vertical
// Japanese is coded on a PC and in two generations of the Mac.
#pragma once

#include <vx/Toolbox.h>

#include <cstdint>

namespace vx
{

struct TextAndFontState;

enum Script : int16_t {
    kScriptRoman = kVXScriptRoman, // and every script that is not listed
    kScriptJapanese = kVXScriptJapanese,
    kScriptTraditionalChinese = kVXScriptTraditionalChinese,
    kScriptKorean = kVXScriptKorean
};
constexpr int16_t kScriptCount = kScriptKorean + 1;

// The script that the system is set to.
int16_t GetDefaultScript();

// A Mac script number as a Script: those that are not listed count as Roman.
int16_t MacScript2VXParserScript(int32_t macScript);

bool IsDBCSFont(int16_t script); // nothing calls it
bool IsDBCSFirstByte(uint8_t byte, int16_t script);

// The width of a double-byte character in ems: known for Japanese, 0 for every other script.
Fixed GetDBCSWidth(const TextAndFontState *state, int16_t script);

// These rewrite first bytes of double-byte Japanese text in place; text of any other script stays. Vertical forms
// have rows of their own on a Mac. In the newer Mac encoding these rows hold only what has a vertical form.
void PCToMacVerticalEncoding(uint8_t *bytes, int32_t length, int16_t script);
void MacToPCVerticalEncoding(uint8_t *bytes, int32_t length, int16_t script);
void Mac3JToMac5JVerticalEncoding(uint8_t *bytes, int32_t length, int16_t script);

} // namespace vx
