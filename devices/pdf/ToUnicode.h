// The table by which a reader of a PDF turns the codes of a font into characters again.
#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace vxhost::pdf
{

// A character map with these entries, for codes of one or two bytes.
std::string ToUnicodeMap(const std::map<uint32_t, char32_t> &characterOfCode, int codeBytes);

// UTF-16, big end first, in hexadecimal.
std::string Utf16Hex(char32_t character);

// Appends the digits of the lower bytes.
void AppendHex(uint32_t value, int bytes, std::string *to);

} // namespace vxhost::pdf
