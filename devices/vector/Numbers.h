// Numbers of content streams and path data, as short as they can be, without exponents, whatever the locale.
//
// A page of paths is made of little else, so they are formatted by hand.
#pragma once

#include <string>

namespace vxhost
{

inline constexpr int kMaxNumber = 24;                  // characters of a number, at most
inline constexpr double kSmallestNumber = 1.0 / 65536; // what is much less is written as 0

// Writes the fewest decimals that tell the nearest 1/65536 from its neighbours, and returns the end. Documents' own
// numbers are as fine as that, so their digits come out again. What lies beyond 1,000,000,000 becomes that; what is no
// number becomes 0.
char *WriteNumber(double value, char *to);

// Does the same, without the shortcut for numbers as documents have them.
char *WriteNumberPlainly(double value, char *to);

// Writes up to nine decimals: a factor of a matrix is multiplied by whatever it maps.
char *WriteFactor(double value, char *to);

std::string NumberText(double value);
std::string FactorText(double value);

} // namespace vxhost
