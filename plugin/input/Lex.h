// Tokenizer: cuts the current line into PostScript tokens, one a call.
//
// Works strictly within the line. Tokens point into the line buffer; only strings with escapes and hex data are
// copied, into the string buffer. A hex string may span lines: it comes in pieces, joined by the interpreter.
#pragma once

#include "plugin/input/BigStrs.h"
#include "plugin/input/StrBuff.h"

namespace vx
{

struct ParseContext;

// Also the type codes of PostScriptObject, which is why 11 is here: the interpreter makes it at "]".
enum TokenKind : int32_t {
    kTokenError = 1,
    kTokenOverflow = 2, // the string buffer overflowed while a string was built
    kTokenEndOfLine = 3,
    kTokenComment = 4,
    kTokenInteger = 5,
    kTokenFixed = 6,
    kTokenString = 7,
    kTokenLiteralName = 8,
    kTokenImmediateName = 9,
    kTokenExecutableName = 10,
    kObjectArray = 11,
    kTokenArrayStart = 13,
    kTokenArrayEnd = 14,
    kTokenProcStart = 15,
    kTokenProcEnd = 16,
    kTokenHexStart = 17,
    kTokenHexData = 18,
    kTokenHexEnd = 19,
};

// Laid out as a BigString; a number stands in the pointer's place, and the length is its word's.
struct TokenValue {
    union {
        const uint8_t *text;
        int32_t number; // integer or Fixed
    };
    int32_t length;
};

// The hex state, kept by the caller from line to line.
enum HexState : int16_t { kOutsideHexString = 0, kInsideHexString = 1 };

// White space and / { } [ ] ( ) < > %
bool IsDelimiter(uint8_t byte);
bool IsHexChar(uint8_t byte);
uint8_t HexValue(uint8_t byte); // 0 for a byte that is no hex digit
constexpr bool IsOctalChar(uint8_t byte)
{
    return byte >= '0' && byte <= '7';
}

// Takes the next token from text. Of the context only setupEnded is read: until then "%_" hides an operator.
TokenKind LexOneToken(BigString *text, int16_t *hexState, TokenValue *result, StringBuffer *buffer,
                      const ParseContext *context);

// Reads a backslash escape. False if text does not begin with one, or it is cut off by the end of the line.
bool LexEscapedCharacter(BigString *text, uint8_t *byte);

// Takes bytes up to a backslash or the parenthesis that brings depth to 0, which is consumed but not counted in.
void LexPartialString(BigString *text, int32_t *depth, BigString *piece);

} // namespace vx
