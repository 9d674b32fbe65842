// Numbers as page descriptions want them: short decimals without exponents, whatever the locale.
#pragma once

#include <cstddef>

namespace vxhost
{

inline constexpr size_t kMaxDecimalText = 24;

// Writes the number, rounded and without trailing zeros, and returns its end, at most kMaxDecimalText bytes on. Neither
// "-0" nor an exponent; what lies beyond 10^15, or is no number, becomes the nearest that does not, or 0.
//
// Coordinates, lengths and inks have four places. Documents write no more, and their 16.16 numbers keep four, so the
// document's own digits come out again.
char *WriteDecimal(double value, char *to);
// What coordinates are multiplied by has six.
char *WriteFactor(double value, char *to);

} // namespace vxhost
