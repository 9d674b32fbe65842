// String encoding: brings the bytes of a string into the encoding in which it is shown.
//
// Only text in fonts that the document re-encodes is converted.
#pragma once

#include "plugin/text/FontEncoding.h"
#include "plugin/text/TextObject.h"

namespace vx
{

// Converts length bytes in place, for the font that is set.
void PrepareStringTobeRasterize(const ParseContext *context, uint8_t *bytes, int32_t length,
                                const TextObject *text);

// Replaces each byte by the code of the same character in another table. Tabs and line ends stay, and so do bytes
// that the first table lacks; a character that the second lacks becomes 0xFF. bytes has room for a terminator.
void TranslateStringtoDefaultEncoding(uint8_t *bytes, int32_t length, const uint32_t *fromTable,
                                      const uint32_t *toTable);

// The first entry that is this byte, or -1.
int32_t Pull_Index(uint8_t byte, const uint32_t *table);

} // namespace vx
