// The bytes of a press profile that a user names.
#pragma once

#include "host/FileReading.h"

#include <string>

namespace vxhost
{

// False when there is no such file, when it cannot be read again, as a pipe cannot, and when it is too long for a
// profile.
bool ReadProfileFile(const std::string &name, HeldBytes *bytes);

} // namespace vxhost
