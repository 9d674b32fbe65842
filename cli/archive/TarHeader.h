// Makes what stands before a member of a tar: a header that old programs read too, and before it what has no room in that, a
// long name or a size from 8 GiB, as pax writes it. The same member has the same header on every machine.
#pragma once

#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>

namespace vxhost
{

constexpr uint64_t kTarBlock = 512; // bytes; each member begins with a block
constexpr size_t kTarEnd = 1024;    // zeros behind the last member

// The member is a file of root that all may read. Throws std::runtime_error when the library is missing, or has no header for it.
std::string TarHeaderOf(const std::string &name, uint64_t size, std::time_t at);

// Returns how many zeros follow a member of that size, up to the next block.
constexpr uint64_t TarPaddingOf(uint64_t size)
{
    return (kTarBlock - size % kTarBlock) % kTarBlock;
}

} // namespace vxhost
