#include "plugin/input/BigStrs.h"

#include "plugin/input/Fixed.h"

#include <algorithm>
#include <array>

namespace vx
{

namespace
{

constexpr int32_t Saturated(bool negative)
{
    return negative ? INT32_MIN : INT32_MAX;
}

// By the number of fraction digits, as long as the divisor does not wrap.
constexpr auto kDecimalScales = [] {
    std::array<double, 10> scales = {};
    int32_t digits = 0;
    for (double &scale : scales)
        scale = ScaleOfDecimals(digits++);
    return scales;
}();

Fixed DivideDecimal(const NumberScan &scan)
{
    const auto value = static_cast<int32_t>(scan.value);
    const auto decimals = static_cast<size_t>(scan.decimals);
    // A divisor that wrapped is handed on as it is: the host's division decides what becomes of it.
    if (decimals >= kDecimalScales.size())
        return FixedDiv(value, static_cast<int32_t>(scan.divisor));
    return static_cast<Fixed>(std::min<int64_t>(ScaleDecimal(value, kDecimalScales[decimals]), INT32_MAX));
}

constexpr bool IsBlank(uint8_t byte)
{
    return byte == ' ' || byte == '\t';
}

} // namespace

bool SplitFirstWord(const BigString *string, BigString *word, BigString *rest)
{
    BigString left;
    SkipWhiteSpace(string, &left);
    if (IsStringEmpty(&left))
        return false;
    int32_t length = 0;
    while (length < left.length && !IsWhiteSpace(left.text[length]))
        ++length;
    *word = {left.text, length};
    *rest = {left.text + length, left.length - length};
    return true;
}

bool AllWhiteSpace(const BigString *string)
{
    BigString left;
    SkipWhiteSpace(string, &left);
    return IsStringEmpty(&left);
}

bool TestPrefix(const char *prefix, const BigString *string, BigString *rest)
{
    const uint8_t *text = string->text;
    int32_t length = string->length;
    for (; *prefix != 0; ++prefix, ++text, --length)
        if (length < 1 || *text != static_cast<uint8_t>(*prefix))
            return false;
    *rest = {text, length};
    return true;
}

bool PartialTestPrefix(const char *prefix, const BigString *string)
{
    const uint8_t *text = string->text;
    const uint8_t *end = text + (string->length > 0 ? string->length : 0);
    while (text < end) {
        const auto wanted = static_cast<uint8_t>(*prefix);
        if (wanted == 0)
            return true;
        if (IsBlank(*text)) {
            ++text;
        } else if (IsBlank(wanted)) {
            ++prefix;
        } else if (*text == wanted) {
            ++text;
            ++prefix;
        } else {
            return false;
        }
    }
    return *prefix == 0;
}

int32_t ScannedInteger(const NumberScan &scan)
{
    if (scan.integer > INT32_MAX)
        return Saturated(scan.negative);
    const auto value = static_cast<int32_t>(scan.integer);
    return scan.negative ? -value : value;
}

Fixed ScannedFixed(const NumberScan &scan)
{
    if (scan.integer > kFixedIntegerLimit)
        return Saturated(scan.negative);
    const Fixed result = DivideDecimal(scan);
    return scan.negative ? NegateFixed(result) : result;
}

bool BigStringAsInteger(const BigString *string, int32_t *value)
{
    if (IsStringEmpty(string))
        return false;
    const uint8_t *end = string->text + string->length;
    const NumberScan scan = ScanNumber(string->text, end);
    const bool valid = scan.digits && !scan.point && scan.stop == end;
    if (valid || scan.integer > INT32_MAX)
        *value = ScannedInteger(scan);
    return valid;
}

bool BigStringAsFixed(const BigString *string, Fixed *value)
{
    if (IsStringEmpty(string))
        return false;
    const uint8_t *end = string->text + string->length;
    const NumberScan scan = ScanNumber(string->text, end);
    const bool valid = scan.digits && scan.stop == end;
    if (valid || scan.integer > kFixedIntegerLimit)
        *value = ScannedFixed(scan);
    return valid;
}

} // namespace vx
