// Numbers of content streams, as short as they can be.
//
// A page of paths is made of little else, so they are formatted by hand.
#pragma once

#include <string>

namespace vxhost::pdf
{

inline constexpr int kMaxNumber = 24; // characters of a number, at most

// Writes the fewest decimals that tell the nearest 1/65536 from its neighbours, which is how documents write their
// own numbers, and returns the end. What lies beyond 1,000,000,000 becomes that; what is no number becomes 0.
char *WriteNumber(double value, char *to);

// With up to nine decimals: factors of a matrix, which are multiplied by whatever they map.
char *WriteFactor(double value, char *to);

std::string NumberText(double value);
std::string FactorText(double value);

} // namespace vxhost::pdf
