// Showing a string: every text-showing operator ends here.
//
// The string is copied, converted, kept for clipping and painted, as the render mode says.
#pragma once

#include "plugin/Result.h"
#include "plugin/input/BigStrs.h"
#include "plugin/text/TextObject.h"

namespace vx
{

// Fails before a font is set, outside an open text object, and when memory is short.
Result CallZRKShowCorrectly(ParseContext *context, TextObject *text, const BigString *string);

// The painters show the record of the text state and move the text position behind it. Text that is not visible
// is passed over without moving.
Result RasterTxtString(ParseContext *context, TextObject *text, int16_t script);
Result RasterTxtCharByChar(ParseContext *context, TextObject *text, int16_t script);
// Runs one of these two: text with spacing takes a record for each character.
Result RasterTxTCorrectly(ParseContext *context, TextObject *text, int16_t script);
// A record a character, in a column.
Result RasterVerticalTxTCorrectly(ParseContext *context, TextObject *text, int16_t script);

} // namespace vx
