// Text records for clipping: strings that are kept until their text object closes.
//
// A string's first record is one block with the font name and the text behind it; further records of the string,
// one a character, are bare and point into that block.
#pragma once

#include "plugin/Result.h"
#include "plugin/input/BigStrs.h"
#include "plugin/text/TextObject.h"

namespace vx
{

// The builders append a string to the clip chain. They fail when memory is short; then what was built stays.

// The whole string in one record. The text position stays: the host goes on from where its previous text ended.
Result MakeOneZRKTextRecord(ParseContext *context, TextObject *text, const BigString *string, int16_t script);
// A record a character, in a line.
Result MakeManyZRKTextRecords(ParseContext *context, TextObject *text, const BigString *string,
                              int16_t script);
// Runs one of these two: text with spacing takes a record for each character.
Result MakeALinkListOfZRKTextRecord(ParseContext *context, TextObject *text, const BigString *string,
                                    int16_t script);
// A record a character, in a column.
Result MakeALinkListOfZRKTextRecord2(ParseContext *context, TextObject *text, const BigString *string,
                                     int16_t script);

// Empties the clip chain without showing it.
void ReleaseClipRecords(const ParseContext *context, TextObject *text);

// The name of the host font for the font that is set. Where that is another font, the user is asked once a parse
// whether to go on.
const char *ChooseFontName(ParseContext *context, const TextObject *text, int16_t script);

} // namespace vx
