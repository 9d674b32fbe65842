// Setting a string: where each of its characters stands and how far the pen has come.
//
// The clip records and the painters set text the same way; what they do differently is in their SettingPlan.
#pragma once

#include "plugin/Result.h"
#include "plugin/text/TextObject.h"

namespace vx
{

struct SettingPlan {
    bool vertical;
    bool swapsScales; // the vertical scale acts along the matrix's first axis
    FixedPoint rise;  // moves the text matrix while the string is set
    Fixed kerning;    // in font sizes
};

struct TextSetting {
    ParseContext *context;
    TextObject *text;
    int16_t script;
    SettingPlan plan;
    FixedMatrix upright;   // glyph matrices, with the font size in them
    FixedMatrix sideways;  // of one-byte characters that lie in a column
    FixedMatrix advance;   // takes lengths along the line to user space
    Fixed *widths;         // allocated, or null
    Fixed doubleByteWidth; // at the font size
    FixedPoint pen;
    Fixed length; // how far the pen has come along the line
};

// 1 or 2: the bytes of a character that begins with this one.
int32_t GetCharSize(uint8_t byte, int16_t script);

// Fetches the widths of the named font and moves the text matrix by the rise. End gives the widths back, and puts
// the text position where the pen is.
void BeginTextSetting(TextSetting *setting, ParseContext *context, TextObject *text, int16_t script,
                      const char *fontName, const SettingPlan &plan);
void EndTextSetting(TextSetting *setting);

// Moves the pen over a string, each character of its own size.
void PassString(TextSetting *setting, const uint8_t *bytes, int32_t length);

// Sets the string of the first record, length bytes, in one record a character, chaining new ones to the first.
// A size of 0 gives each character its own. last becomes the end of the chain. When memory runs out the chain is
// kept as far as it got.
Result SetCharByChar(TextSetting *setting, ZRKTextRecord *first, int32_t length, int32_t size,
                     ZRKTextRecord **last);

// The glyph matrix of a character of that size.
void ChooseGlyphMatrix(const TextSetting *setting, ZRKTextRecord *record, int32_t size);

void SetGlyphMatrix(ZRKTextRecord *record, const FixedMatrix &matrix);
FixedMatrix MakeGlyphMatrix(Fixed fontSize, const FixedMatrix &matrix);
FixedMatrix ScaledTextMatrix(const TextObject *text, bool swapsScales);

// Releases a chain of blocks from the host's memory.
void ReleaseTextRecords(const ParseContext *context, ZRKTextRecord *first);

} // namespace vx
