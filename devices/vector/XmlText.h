// Characters as text of an XML file.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vxhost
{

constexpr size_t kMaxXmlCharacter = 6; // bytes

// Writes the bytes that stand for a character in text and in the values of attributes; returns how many. What XML forbids
// becomes U+FFFD.
size_t WriteXmlCharacter(char32_t character, char *to);

// Returns the text with U+FFFD in place of what XML forbids.
std::string FitForXml(std::string_view utf8);

} // namespace vxhost
