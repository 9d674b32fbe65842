// Reads what another run, perhaps one that was killed, wrote line by line.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

namespace vxhost
{

// Calls take for each line of a descriptor's file that has its end, with the place where it begins. Returns how many bytes
// these are.
uint64_t ReadWholeLines(int descriptor, const std::function<void(uint64_t at, std::string_view line)> &take);

} // namespace vxhost
