#include "host/reading/Utf8.h"

#include <cstdint>

namespace vxhost
{

namespace
{

constexpr char32_t kUnknown = 0xFFFD;

// The length of the UTF-8 sequence that text begins with; 0: none that is well formed.
size_t SequenceLength(std::string_view text)
{
    const auto byteAt = [&](size_t i) { return static_cast<uint8_t>(text[i]); };
    const uint8_t lead = byteAt(0);
    if (lead < 0x80)
        return 1;
    const size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || text.size() < length)
        return 0;
    for (size_t i = 1; i < length; ++i) {
        if ((byteAt(i) & 0xC0) != 0x80)
            return 0;
    }
    // Overlong forms, surrogates, and what lies past U+10FFFF.
    const uint8_t second = byteAt(1);
    if ((lead == 0xE0 && second < 0xA0) || (lead == 0xED && second > 0x9F) ||
        (lead == 0xF0 && second < 0x90) || (lead == 0xF4 && second > 0x8F))
        return 0;
    return length;
}

// Controls, and the marks that turn the direction of a line round: a hostile name must not rewrite a message.
bool IsShown(std::string_view sequence)
{
    const auto lead = static_cast<uint8_t>(sequence[0]);
    if (sequence.size() == 1)
        return lead >= 0x20 && lead != 0x7F;
    const auto second = static_cast<uint8_t>(sequence[1]);
    if (sequence.size() == 2)
        return lead != 0xC2 || second >= 0xA0;
    const auto third = static_cast<uint8_t>(sequence[2]);
    const bool isFormat =
        lead == 0xE2 &&
        ((second == 0x80 && ((third >= 0x8B && third <= 0x8F) || (third >= 0xA8 && third <= 0xAE))) ||
         (second == 0x81 && third >= 0xA6 && third <= 0xA9));
    return !isFormat;
}

void AppendEscaped(uint8_t byte, std::string *text)
{
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    *text += "\\x";
    *text += kDigits[byte >> 4];
    *text += kDigits[byte & 15];
}

} // namespace

std::string Printable(std::string_view bytes, size_t most)
{
    std::string shown;
    while (!bytes.empty()) {
        const size_t length = SequenceLength(bytes);
        const std::string_view sequence = bytes.substr(0, length == 0 ? 1 : length);
        std::string next;
        if (length > 0 && IsShown(sequence)) {
            next = sequence;
        } else {
            for (const char character : sequence)
                AppendEscaped(static_cast<uint8_t>(character), &next);
        }
        if (shown.size() + next.size() > most)
            return shown + "...";
        shown += next;
        bytes.remove_prefix(sequence.size());
    }
    return shown;
}

bool IsUtf8(std::string_view bytes)
{
    while (!bytes.empty()) {
        const size_t length = SequenceLength(bytes);
        if (length == 0)
            return false;
        bytes.remove_prefix(length);
    }
    return true;
}

std::string ToUtf8(std::string_view bytes)
{
    std::string text;
    while (!bytes.empty()) {
        const size_t length = SequenceLength(bytes);
        if (length == 0)
            text += "\xEF\xBF\xBD";
        else
            text += bytes.substr(0, length);
        bytes.remove_prefix(length == 0 ? 1 : length);
    }
    return text;
}

char32_t TakeCharacter(std::string_view *utf8)
{
    const auto at = [&](size_t i) { return static_cast<uint8_t>((*utf8)[i]); };
    const uint8_t lead = at(0);
    const size_t length = lead < 0x80   ? 1
                          : lead < 0xC2 ? 0
                          : lead < 0xE0 ? 2
                          : lead < 0xF0 ? 3
                          : lead < 0xF5 ? 4
                                        : 0;
    char32_t character = length == 1 ? lead : lead & (0x7FU >> length);
    bool isWhole = length != 0 && length <= utf8->size();
    for (size_t i = 1; isWhole && i < length; ++i) {
        isWhole = (at(i) & 0xC0) == 0x80;
        character = character << 6 | (at(i) & 0x3FU);
    }
    constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    isWhole = isWhole && character >= kLeast[length];
    utf8->remove_prefix(isWhole ? length : 1);
    return isWhole ? character : kUnknown;
}

size_t WriteUtf8(char32_t character, char *to)
{
    const auto tail = [&](int shift) { return static_cast<char>(0x80 | (character >> shift & 0x3F)); };
    if (character < 0x80) {
        to[0] = static_cast<char>(character);
        return 1;
    }
    if (character < 0x800) {
        to[0] = static_cast<char>(0xC0 | character >> 6);
        to[1] = tail(0);
        return 2;
    }
    if (character < 0x10000) {
        to[0] = static_cast<char>(0xE0 | character >> 12);
        to[1] = tail(6);
        to[2] = tail(0);
        return 3;
    }
    to[0] = static_cast<char>(0xF0 | character >> 18);
    to[1] = tail(12);
    to[2] = tail(6);
    to[3] = tail(0);
    return 4;
}

} // namespace vxhost
