#include "host/reading/LineTokens.h"

#include <vx/Toolbox.h>

#include <algorithm>
#include <array>

namespace vxhost
{

namespace
{

constexpr std::string_view kSpace = " \t\n\v\f\r";
constexpr std::string_view kHexDigits = "0123456789ABCDEFabcdef";
constexpr size_t kHiddenLength = 2; // of an operator behind "%_", whatever its bytes are

constexpr std::array<bool, 256> kDelimiters = [] {
    std::array<bool, 256> table = {};
    for (const char character : std::string_view(" \t\n\v\f\r()<>[]{}/%"))
        table[static_cast<uint8_t>(character)] = true;
    return table;
}();

bool IsDigit(char character)
{
    return character >= '0' && character <= '9';
}

bool IsOctal(char character)
{
    return character >= '0' && character <= '7';
}

// A number as the interpreter takes it apart: digits of a fraction are taken as long as 31 bits hold them.
struct Number {
    bool isNegative = false, hasPoint = false;
    uint32_t integer = 0; // before the point, at most kTooLarge
    uint32_t digits = 0;  // all that were taken, as one integer
    uint32_t divisor = 1; // wraps
};

constexpr uint32_t kTooLarge = 0x80000000U;
constexpr uint32_t kMostForDigit = 214748362;
constexpr uint32_t kMostFixed = 32767;

std::optional<Number> ReadNumber(std::string_view text)
{
    Number number;
    size_t at = 0;
    if (!text.empty() && (text[0] == '-' || text[0] == '+'))
        number.isNegative = text[at++] == '-';
    bool hasDigits = false;
    uint64_t integer = 0;
    for (; at < text.size() && IsDigit(text[at]); ++at) {
        hasDigits = true;
        integer = std::min<uint64_t>(integer * 10 + static_cast<uint64_t>(text[at] - '0'), kTooLarge);
    }
    number.integer = number.digits = static_cast<uint32_t>(integer);
    if (at < text.size() && text[at] == '.') {
        number.hasPoint = true;
        for (++at; at < text.size() && IsDigit(text[at]); ++at) {
            hasDigits = true;
            if (number.digits <= kMostForDigit) {
                number.digits = number.digits * 10 + static_cast<uint32_t>(text[at] - '0');
                number.divisor *= 10;
            }
        }
    }
    return hasDigits && at == text.size() ? std::optional(number) : std::nullopt;
}

int32_t Saturated(bool isNegative)
{
    return isNegative ? INT32_MIN : INT32_MAX;
}

int32_t IntegerOf(const Number &number)
{
    if (number.integer >= kTooLarge)
        return Saturated(number.isNegative);
    const auto value = static_cast<int32_t>(number.integer);
    return number.isNegative ? -value : value;
}

} // namespace

bool IsTokenDelimiter(char character)
{
    return kDelimiters[static_cast<uint8_t>(character)];
}

bool IsTokenSpace(char character)
{
    return kSpace.find(character) != std::string_view::npos;
}

std::optional<int32_t> IntegerOfToken(std::string_view text)
{
    const std::optional<Number> number = ReadNumber(text);
    if (!number || number->hasPoint)
        return std::nullopt;
    return IntegerOf(*number);
}

std::optional<Fixed> FixedOfToken(std::string_view text)
{
    const std::optional<Number> number = ReadNumber(text);
    if (!number)
        return std::nullopt;
    if (!number->hasPoint)
        return static_cast<Fixed>(static_cast<uint32_t>(IntegerOf(*number)) << 16);
    if (number->integer > kMostFixed)
        return Saturated(number->isNegative);
    const Fixed value = number->divisor == 1 ? static_cast<Fixed>(number->digits << 16)
                                             : FixDiv(static_cast<int32_t>(number->digits),
                                                      static_cast<int32_t>(number->divisor));
    return number->isNegative ? static_cast<Fixed>(0U - static_cast<uint32_t>(value)) : value;
}

std::string StringBytes(std::string_view token)
{
    std::string bytes;
    if (token.size() < 2)
        return bytes;
    const std::string_view text = token.substr(1, token.size() - 2);
    for (size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '\\' || at + 1 == text.size()) {
            bytes += text[at];
            continue;
        }
        const char escaped = text[++at];
        if (IsOctal(escaped)) {
            unsigned value = 0;
            const size_t first = at;
            for (; at < text.size() && at < first + 3 && IsOctal(text[at]); ++at)
                value = value * 8 + static_cast<unsigned>(text[at] - '0');
            --at;
            bytes += static_cast<char>(value); // a larger value wraps
            continue;
        }
        constexpr std::string_view kLetters = "nrtbf", kMeanings = "\n\r\t\b\f";
        const size_t letter = kLetters.find(escaped);
        bytes += letter == std::string_view::npos ? escaped : kMeanings[letter];
    }
    return bytes;
}

std::string HexBytes(std::string_view token)
{
    std::string bytes;
    unsigned value = 0;
    bool hasHigh = false;
    for (const char character : token) {
        const size_t digit = kHexDigits.find(character);
        if (digit == std::string_view::npos)
            continue;
        value = value * 16 + static_cast<unsigned>(digit < 16 ? digit : digit - 6);
        if (hasHigh)
            bytes += static_cast<char>(value);
        hasHigh = !hasHigh;
        value = hasHigh ? value : 0;
    }
    return bytes;
}

Token LineTokens::Take(TokenKind kind, size_t end)
{
    const Token token = {kind, at_, end};
    at_ = end;
    return token;
}

size_t LineTokens::FindDelimiter(size_t from) const
{
    while (from < line_.size() && !IsTokenDelimiter(line_[from]))
        ++from;
    return from;
}

Token LineTokens::TakeComment()
{
    if (!showsHidden_ || line_.size() - at_ < 2 + kHiddenLength || line_[at_ + 1] != '_')
        return TakeRest(TokenKind::Comment);
    const Token token = {TokenKind::Operator, at_ + 2, at_ + 2 + kHiddenLength};
    at_ = line_.size();
    return token;
}

Token LineTokens::TakeString()
{
    int depth = 1;
    for (size_t at = at_ + 1; at < line_.size(); ++at) {
        const char character = line_[at];
        if (character == '\\') {
            // A line end cannot be escaped: the string has no end in this line.
            if (at + 1 == line_.size() || line_[at + 1] == '\r' || line_[at + 1] == '\n')
                break;
            ++at;
        }
        depth += character == '(' ? 1 : character == ')' ? -1 : 0;
        if (depth == 0)
            return Take(TokenKind::String, at + 1);
    }
    return TakeRest(TokenKind::Malformed);
}

// The two digits of a byte stand on one line; white space may stand between any.
Token LineTokens::TakeHexData()
{
    size_t digits = 0;
    size_t end = at_;
    for (; end < line_.size(); ++end) {
        if (kHexDigits.find(line_[end]) != std::string_view::npos)
            ++digits;
        else if (!IsTokenSpace(line_[end]))
            break;
    }
    return digits == 0 || digits % 2 != 0 ? TakeRest(TokenKind::Malformed) : Take(TokenKind::HexData, end);
}

Token LineTokens::TakeWord()
{
    const size_t end = FindDelimiter(at_);
    const std::optional<Number> number = ReadNumber(line_.substr(at_, end - at_));
    if (!number)
        return Take(TokenKind::Operator, end);
    return Take(number->hasPoint ? TokenKind::Fixed : TokenKind::Integer, end);
}

Token LineTokens::Next()
{
    while (at_ < line_.size() && IsTokenSpace(line_[at_]))
        ++at_;
    if (at_ == line_.size())
        return {TokenKind::End, at_, at_};
    const char first = line_[at_];
    if (!isInHex_ && !IsTokenDelimiter(first))
        return TakeWord();
    if (first == '%')
        return TakeComment();
    if (first == '<' || first == '>') {
        if (isInHex_ == (first == '<'))
            return TakeRest(TokenKind::Malformed);
        isInHex_ = first == '<';
        return Take(isInHex_ ? TokenKind::HexBegin : TokenKind::HexEnd, at_ + 1);
    }
    if (isInHex_)
        return TakeHexData();
    switch (first) {
    case '(':
        return TakeString();
    case '[':
        return Take(TokenKind::ArrayBegin, at_ + 1);
    case ']':
        return Take(TokenKind::ArrayEnd, at_ + 1);
    case '{':
    case '}':
        return Take(TokenKind::Brace, at_ + 1);
    case '/': {
        if (at_ + 1 == line_.size())
            return TakeRest(TokenKind::Malformed);
        const bool isImmediate = line_[at_ + 1] == '/';
        return Take(TokenKind::Name, FindDelimiter(at_ + (isImmediate ? 2 : 1)));
    }
    default:
        return TakeRest(TokenKind::Malformed); // ")": nothing is open
    }
}

} // namespace vxhost
