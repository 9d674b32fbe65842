// The press profile that is built in: coated offset paper. See profiles/README.md for where it comes from.
#pragma once

#include <cstddef>
#include <span>

namespace vxhost
{

// An ICC profile of class output, CMYK to Lab.
std::span<const std::byte> Fogra39Profile();

} // namespace vxhost
