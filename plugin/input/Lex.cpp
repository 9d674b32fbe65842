#include "plugin/input/Lex.h"

#include "plugin/body/ParseContext.h"
#include "plugin/input/Bytes.h"

#include <array>
#include <bit>

namespace vx
{

namespace
{

constexpr int32_t kHiddenOperatorLength = 2;

constexpr std::array<bool, 256> MakeDelimiters()
{
    std::array<bool, 256> table = {};
    for (unsigned byte = 0; byte < table.size(); ++byte)
        table[byte] = IsWhiteSpace(static_cast<uint8_t>(byte));
    for (const char sign : {'/', '{', '}', '[', ']', '(', ')', '<', '>', '%'})
        table[static_cast<uint8_t>(sign)] = true;
    return table;
}

constexpr std::array<bool, 256> kDelimiters = MakeDelimiters();

TokenKind TakeByte(BigString *text, TokenKind kind)
{
    TrimFirstCharacter(text);
    return kind;
}

void TakeText(TokenValue *result, const BigString *string)
{
    result->text = string->text;
    result->length = string->length;
}

// The run of bytes up to the next delimiter.
void TakeRun(BigString *text, TokenValue *result)
{
    int32_t length = 0;
    while (length < text->length && !kDelimiters[text->text[length]])
        ++length;
    result->text = text->text;
    result->length = length;
    text->text += length;
    text->length -= length;
}

bool IsHiddenOperator(const BigString *text, const ParseContext *context)
{
    return !context->setupEnded && text->length >= 2 + kHiddenOperatorLength && text->text[1] == '_';
}

TokenKind LexComment(BigString *text, TokenValue *result, const ParseContext *context)
{
    TakeText(result, text);
    TokenKind kind = kTokenComment;
    if (IsHiddenOperator(text, context)) {
        // Exactly two bytes, even if one of them is the line end.
        result->text += 2;
        result->length = kHiddenOperatorLength;
        kind = kTokenExecutableName;
    }
    TrimToEnd(text);
    return kind;
}

TokenKind LexHexData(BigString *text, TokenValue *result, StringBuffer *buffer)
{
    if (!IsHexChar(*text->text))
        return kTokenError;
    BigString data;
    BufferNewBigString(buffer, &data);
    do {
        const uint8_t high = HexValue(*text->text);
        TrimFirstCharacter(text);
        SkipWhiteSpace(text, text);
        // The two digits of a pair stand on one line.
        if (IsStringEmpty(text) || !IsHexChar(*text->text))
            return kTokenError;
        const auto byte = static_cast<uint8_t>(high * 16 + HexValue(*text->text));
        BufferAppendStringAndCharacter(buffer, &data, byte, &data);
        TrimFirstCharacter(text);
        SkipWhiteSpace(text, text);
    } while (!IsStringEmpty(text) && IsHexChar(*text->text));
    TakeText(result, &data);
    return OverflowedStringBuffer(buffer) ? kTokenOverflow : kTokenHexData;
}

TokenKind LexString(BigString *text, TokenValue *result, StringBuffer *buffer)
{
    int32_t depth = 1;
    BigString piece;
    TrimFirstCharacter(text);
    LexPartialString(text, &depth, &piece);
    if (depth == 0) {
        TakeText(result, &piece);
        return kTokenString;
    }
    BigString built;
    BufferNewBigString(buffer, &built);
    BufferAppendStringAndString(buffer, &built, &piece, &built);
    while (depth > 0) {
        if (IsStringEmpty(text))
            return kTokenError;
        uint8_t byte;
        if (LexEscapedCharacter(text, &byte)) {
            BufferAppendStringAndCharacter(buffer, &built, byte, &built);
            continue;
        }
        LexPartialString(text, &depth, &piece);
        if (!IsStringEmpty(&piece))
            BufferAppendStringAndString(buffer, &built, &piece, &built);
    }
    TakeText(result, &built);
    return OverflowedStringBuffer(buffer) ? kTokenOverflow : kTokenString;
}

TokenKind LexName(BigString *text, TokenValue *result)
{
    TokenKind kind = kTokenLiteralName;
    TrimFirstCharacter(text);
    if (IsStringEmpty(text))
        return kTokenError;
    if (*text->text == '/') {
        TrimFirstCharacter(text);
        kind = kTokenImmediateName;
    }
    TakeRun(text, result);
    return kind;
}

TokenKind LexWord(BigString *text, TokenValue *result)
{
    if (!MayBeginNumber(*text->text)) {
        TakeRun(text, result);
        return kTokenExecutableName;
    }
    // Most words are numbers: one pass reads the number, and only a word that goes on after it is walked again.
    const uint8_t *end = text->text + text->length;
    const NumberScan scan = ScanNumber(text->text, end);
    if (!scan.digits || (scan.stop < end && !kDelimiters[*scan.stop])) {
        TakeRun(text, result);
        return kTokenExecutableName;
    }
    result->number = scan.point ? ScannedFixed(scan) : ScannedInteger(scan);
    result->length = static_cast<int32_t>(scan.stop - text->text);
    text->text = scan.stop;
    text->length -= result->length;
    return scan.point ? kTokenFixed : kTokenInteger;
}

// Counts bytes before the first parenthesis or backslash, eight at a time: the last few may be left out.
int32_t CountPlainBytes(const uint8_t *text, int32_t length)
{
    int32_t count = 0;
    for (; length - count >= 8; count += 8) {
        const uint64_t word = LoadBytes(text + count);
        const uint64_t marks =
            ZeroBytes((word | kBytesOfOne) ^ (kBytesOfOne * ')')) | // and the one before it
            ZeroBytes(word ^ (kBytesOfOne * '\\'));
        if (marks != 0)
            return count + std::countr_zero(marks) / 8;
    }
    return count;
}

} // namespace

bool IsDelimiter(uint8_t byte)
{
    return kDelimiters[byte];
}

bool IsHexChar(uint8_t byte)
{
    return IsDigit(byte) || (byte >= 'A' && byte <= 'F') || (byte >= 'a' && byte <= 'f');
}

uint8_t HexValue(uint8_t byte)
{
    if (!IsHexChar(byte))
        return 0;
    // The letters' low nibble counts from 1 in both cases.
    return static_cast<uint8_t>(IsDigit(byte) ? byte - '0' : (byte & 0x0F) + 9);
}

void LexPartialString(BigString *text, int32_t *depth, BigString *piece)
{
    const uint8_t *start = text->text;
    int32_t taken = 0; // bytes consumed
    int32_t count = 0; // and those of them that belong to the piece
    int32_t open = *depth;
    while (open > 0 && taken < text->length && start[taken] != '\\') {
        const int32_t plain = CountPlainBytes(start + taken, text->length - taken);
        if (plain > 0) {
            taken += plain;
            count += plain;
            continue;
        }
        const uint8_t byte = start[taken++];
        open += (byte == '(') - (byte == ')');
        count += open > 0;
    }
    *depth = open;
    *piece = {start, count};
    *text = {start + taken, text->length - taken};
}

bool LexEscapedCharacter(BigString *text, uint8_t *byte)
{
    if (IsStringEmpty(text) || *text->text != '\\')
        return false;
    TrimFirstCharacter(text);
    if (IsStringEmpty(text))
        return false;
    const uint8_t escaped = *text->text;
    if (IsOctalChar(escaped)) {
        uint8_t value = 0; // of one byte: larger values wrap
        for (int digit = 0; digit < 3 && !IsStringEmpty(text) && IsOctalChar(*text->text); ++digit) {
            value = static_cast<uint8_t>(value * 8 + (*text->text - '0'));
            TrimFirstCharacter(text);
        }
        *byte = value;
        return true;
    }
    TrimFirstCharacter(text);
    switch (escaped) {
    case '\r':
    case '\n':
        return false; // the pair is dropped, and the string fails at the end of the line
    case 'n':
        *byte = 10;
        break;
    case 'r':
        *byte = 13;
        break;
    case 't':
        *byte = 9;
        break;
    case 'b':
        *byte = 8;
        break;
    case 'f':
        *byte = 12;
        break;
    default:
        *byte = escaped;
        break;
    }
    return true;
}

TokenKind LexOneToken(BigString *text, int16_t *hexState, TokenValue *result, StringBuffer *buffer,
                      const ParseContext *context)
{
    SkipWhiteSpace(text, text);
    if (IsStringEmpty(text))
        return kTokenEndOfLine;
    const uint8_t byte = *text->text;
    // A word outside a hex string is by far the most common token; all others begin with a delimiter.
    if (*hexState == kOutsideHexString && !kDelimiters[byte])
        return LexWord(text, result);
    // A comment may follow even inside a hex string.
    if (byte == '%')
        return LexComment(text, result, context);
    if (byte == '>') {
        if (*hexState != kInsideHexString)
            return kTokenError;
        *hexState = kOutsideHexString;
        return TakeByte(text, kTokenHexEnd);
    }
    if (byte == '<') {
        // There are no dictionaries: a second "<" is an error.
        if (*hexState != kOutsideHexString)
            return kTokenError;
        *hexState = kInsideHexString;
        return TakeByte(text, kTokenHexStart);
    }
    if (*hexState == kInsideHexString)
        return LexHexData(text, result, buffer);
    switch (byte) {
    case '(':
        return LexString(text, result, buffer);
    case '[':
        return TakeByte(text, kTokenArrayStart);
    case ']':
        return TakeByte(text, kTokenArrayEnd);
    case '{':
        return TakeByte(text, kTokenProcStart);
    case '}':
        return TakeByte(text, kTokenProcEnd);
    case '/':
        return LexName(text, result);
    default:
        return kTokenError; // ")": nothing is open here
    }
}

} // namespace vx
