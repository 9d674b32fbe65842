// Views of text and what is asked of them: character classes, trimming, words, prefixes, numbers.
//
// A BigString borrows its bytes, has no terminator, and counts as empty when its length is below 1. Where an
// operation yields a remainder, it may be written over the string that it came from.
#pragma once

#include <vx/Types.h>

#include <cstdint>

namespace vx
{

struct BigString {
    const uint8_t *text;
    int32_t length;
};

// Blank, tab, line feed, vertical tab, form feed, carriage return.
constexpr bool IsWhiteSpace(uint8_t byte)
{
    return byte == ' ' || (byte >= 9 && byte <= 13);
}
constexpr bool IsLineEnd(uint8_t byte)
{
    return byte == '\r' || byte == '\n';
}
// True for each byte that a number begins with, and few others.
constexpr bool MayBeginNumber(uint8_t byte)
{
    return byte >= '+' && byte <= '9';
}
constexpr bool IsDigit(uint8_t byte)
{
    return byte >= '0' && byte <= '9';
}

inline bool IsStringEmpty(const BigString *string)
{
    return string->length < 1;
}

// Drops the first byte of a string that has one.
inline void TrimFirstCharacter(BigString *string)
{
    if (!IsStringEmpty(string)) {
        ++string->text;
        --string->length;
    }
}

// Consumes all that is left.
inline void TrimToEnd(BigString *string)
{
    if (!IsStringEmpty(string)) {
        string->text += string->length;
        string->length = 0;
    }
}

// rest becomes string without its leading white space; returns where rest begins.
inline const uint8_t *SkipWhiteSpace(const BigString *string, BigString *rest)
{
    const uint8_t *text = string->text;
    int32_t length = string->length;
    while (length > 0 && IsWhiteSpace(*text)) {
        ++text;
        --length;
    }
    *rest = {text, length};
    return text;
}

// The first run of bytes that are not white space; false if there is none. rest keeps the separator.
bool SplitFirstWord(const BigString *string, BigString *word, BigString *rest);

bool AllWhiteSpace(const BigString *string);

// True if string begins with the NUL-terminated prefix; only then rest is what follows it.
bool TestPrefix(const char *prefix, const BigString *string, BigString *rest);

// True for a line of the prefix alone, trailing white space apart.
inline bool IsWholeLine(const char *prefix, const BigString *line)
{
    BigString rest;
    return TestPrefix(prefix, line, &rest) && AllWhiteSpace(&rest);
}

// TestPrefix that passes over blanks and tabs on both sides, and yields no rest.
bool PartialTestPrefix(const char *prefix, const BigString *string);

// A number as far as it goes: sign, digits, point, digits. The tokenizer and both conversions below share it, so
// that a word is looked at once.
struct NumberScan {
    const uint8_t *stop; // the first byte that is no part of the number
    uint32_t integer;    // the digits before the point, saturated at kIntegerOverflow
    uint32_t value;      // all digits taken, as one integer
    uint32_t divisor;    // 10 for each fraction digit taken; wraps
    int32_t decimals;    // the fraction digits taken
    bool negative, point, digits;
};

constexpr uint32_t kIntegerOverflow = 0x80000000u;
// Digits of the fraction are taken while the number so far is at most this; later ones are dropped.
constexpr uint32_t kFractionLimit = 214748362;
constexpr uint32_t kFixedIntegerLimit = 32767;

inline NumberScan ScanNumber(const uint8_t *text, const uint8_t *end)
{
    NumberScan scan = {text, 0, 0, 1, 0, false, false, false};
    if (text < end && (*text == '-' || *text == '+'))
        scan.negative = *text++ == '-';
    uint64_t integer = 0;
    const uint8_t *first = text;
    for (; text < end && IsDigit(*text); ++text) {
        integer = integer * 10 + (*text - uint32_t{'0'});
        if (integer > kIntegerOverflow)
            integer = kIntegerOverflow;
    }
    scan.digits = text != first;
    scan.integer = static_cast<uint32_t>(integer);
    if (text < end && *text == '.') {
        scan.point = true;
        ++text;
        uint32_t value = scan.integer;
        uint32_t divisor = 1;
        for (; text < end && IsDigit(*text); ++text) {
            scan.digits = true;
            if (value <= kFractionLimit) {
                value = value * 10 + (*text - uint32_t{'0'});
                divisor *= 10;
                ++scan.decimals;
            }
        }
        scan.value = value;
        scan.divisor = divisor;
    } else {
        scan.value = scan.integer;
    }
    scan.stop = text;
    return scan;
}

// Takes a number of so many fraction digits, written without its point, to 16.16.
constexpr double ScaleOfDecimals(int32_t digits)
{
    double divisor = 1;
    for (; digits > 0; --digits)
        divisor *= 10;
    return 65536 / divisor;
}

// number * scale to the nearest whole. With at most nine fraction digits the exact product never lies half way between two:
// it is 1 / (2 * 5^digits) away at least, and a double is wrong by less. So this is the host's FixDiv, up to where that
// saturates, without the call and without a division.
inline int64_t ScaleDecimal(int32_t number, double scale)
{
    // It is right for these products. NOLINTNEXTLINE(bugprone-incorrect-roundings)
    return static_cast<int64_t>(number * scale + 0.5);
}

// The scanned number as an integer (saturated at the 32-bit range) or as a Fixed (saturated at ±32767).
int32_t ScannedInteger(const NumberScan &scan);
Fixed ScannedFixed(const NumberScan &scan);

// The whole string as one decimal integer. An integer beyond 32 bits succeeds with 0x7FFFFFFF or 0x80000000 and
// is stored even when the text goes wrong after it; otherwise a failure leaves value alone.
bool BigStringAsInteger(const BigString *string, int32_t *value);

// The whole string as a decimal number with an optional fraction. An integer part above 32767 saturates, and is
// stored even when the text goes wrong after it; otherwise a failure leaves value alone.
bool BigStringAsFixed(const BigString *string, Fixed *value);

} // namespace vx
