// The host's string lists: the texts that the plug-in reads by list number and index from 1. The numbers, and what
// each list is for, are in vx/Toolbox.h.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace vxhost
{

// Empty when there is no such list.
std::span<const std::string_view> FindStringList(int16_t list);

// The bytes of a 'STR#' resource: a 16-bit count in the machine's order, then length-prefixed strings.
// A string over 255 bytes is cut.
std::vector<char> PackStringList(const std::vector<std::string_view> &strings);

// The number of the problem with that title, or 0.
int FindProblem(std::string_view title);

} // namespace vxhost
