// The bytes of a press profile that a user names.
#pragma once

#include "host/FileReading.h"

#include <cstddef>
#include <string>

namespace vxhost
{

constexpr size_t kMaxProfileBytes = size_t{32} << 20;

// False when there is no such file, when it is none that can be read again, as a pipe, and when it is too long for a
// profile.
bool ReadProfileFile(const std::string &name, HeldBytes *bytes);

} // namespace vxhost
