// The floor under reading a document, and the unit in which times are given: a loop that only finds lines, splits words
// and converts numbers.
#pragma once

#include <cstdint>
#include <string_view>

namespace vxbench
{

// The sum of all numbers in 16.16, which keeps the loop alive.
int64_t SumOfTokens(std::string_view text);

} // namespace vxbench
