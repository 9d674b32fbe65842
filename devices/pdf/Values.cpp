#include "devices/pdf/Values.h"

#include "devices/pdf/ToUnicode.h"
#include "devices/vector/Numbers.h"
#include "host/reading/Utf8.h"

#include <algorithm>

namespace vxhost::pdf
{

namespace
{

constexpr std::string_view kDelimiters = "()<>[]{}/%";

bool IsPrintable(char character)
{
    return character >= ' ' && character <= '~';
}

// Whether a value ends what stands before it by itself.
bool BeginsWithDelimiter(std::string_view value)
{
    return value.empty() || kDelimiters.find(value.front()) != std::string_view::npos;
}

template <typename Values>
std::string ArrayOf(const Values &values)
{
    std::string elements;
    for (const auto value : values)
        elements.append(elements.empty() ? "" : " ").append(ValueOf(value));
    return ArrayValue(elements);
}

} // namespace

std::string ValueOf(Reference reference)
{
    return std::to_string(reference.number).append(" 0 R");
}

std::string ValueOf(double number)
{
    return FactorText(number);
}

std::string NameValue(std::string_view name)
{
    std::string value = "/";
    for (const char character : name) {
        if (character > ' ' && character <= '~' && character != '#' &&
            kDelimiters.find(character) == std::string_view::npos) {
            value += character;
            continue;
        }
        value += '#';
        AppendHex(static_cast<uint8_t>(character), 1, &value);
    }
    return value;
}

std::string TextValue(std::string_view utf8)
{
    if (!std::ranges::all_of(utf8, IsPrintable)) {
        std::string value = "<FEFF";
        while (!utf8.empty())
            value += Utf16Hex(TakeCharacter(&utf8));
        return value + ">";
    }
    std::string value = "(";
    for (const char character : utf8) {
        if (character == '(' || character == ')' || character == '\\')
            value += '\\';
        value += character;
    }
    return value + ")";
}

std::string ArrayValue(std::string_view elements)
{
    return std::string("[").append(elements).append("]");
}

std::string ArrayValue(std::initializer_list<double> numbers)
{
    return ArrayOf(numbers);
}

std::string ArrayValue(std::span<const Reference> references)
{
    return ArrayOf(references);
}

Dictionary &Dictionary::Add(std::string_view key, std::string_view value)
{
    entries_.append(NameValue(key)).append(BeginsWithDelimiter(value) ? "" : " ").append(value);
    return *this;
}

} // namespace vxhost::pdf
