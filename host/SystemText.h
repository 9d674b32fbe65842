// What the system says of an error, for a person.
#pragma once

#include <string>

namespace vxhost
{

// The system's words for an errno, in lower case.
std::string SystemText(int error);

} // namespace vxhost
