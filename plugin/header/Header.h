// Header comments: is this a VX document, of which version, how large, in colour?
#pragma once

#include "plugin/Result.h"
#include "plugin/input/LnStream.h"

namespace vx
{

// 2, 3, 4 (written on a PC) or 5.
using FileVersion = int16_t;

// Reads from the start of the document to the end of its header comments. box is filled number by number as left,
// bottom, right, top, so a failure may leave it half written. Fails with kParserBadFormat alone.
Result ParseHeader(LineStream *stream, Fixed box[4], uint8_t *monochrome, FileVersion *version);

// The first line, which nothing may precede.
Result ParseHeaderLine(LineStream *stream);

// The comments after it. Stops before the first line that is none.
Result ParseComments(LineStream *stream, Fixed box[4], uint8_t *monochrome, FileVersion *version);

// The first word of text as a number; rest is what follows it.
bool ParseFixed(const BigString *text, Fixed *value, BigString *rest);

// Four numbers. NUL bytes are replaced by blanks first, in place: text must lie in memory that may be written.
bool ParseFixedRect(const BigString *text, Fixed values[4], BigString *rest);

} // namespace vx
