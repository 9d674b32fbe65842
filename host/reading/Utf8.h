// Bytes of documents and file names made fit for a terminal or for JSON.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vxhost
{

// One line that a terminal shows as it is: control and malformed bytes become \xNN, and what is longer than
// most bytes ends in "...".
std::string Printable(std::string_view bytes, size_t most = 200);

bool IsUtf8(std::string_view bytes);

// The bytes as valid UTF-8: what is not becomes U+FFFD.
std::string ToUtf8(std::string_view bytes);

// Takes the first character off the text, which is not empty. A byte that is not well formed becomes U+FFFD.
char32_t TakeCharacter(std::string_view *utf8);

// Writes the bytes of a character, at most four; returns how many.
size_t WriteUtf8(char32_t character, char *to);

} // namespace vxhost
