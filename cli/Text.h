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

// Valid UTF-8: what is not becomes U+FFFD.
std::string ToUtf8(std::string_view bytes);

inline double Millimetres(double points)
{
    return points * (25.4 / 72);
}

// A number for a person: at most digits decimals, no zeros at the end.
std::string Decimal(double value, int digits = 5);

} // namespace vxhost
