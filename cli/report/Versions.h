// Says what this program is made of: what somebody has to know who looks for the reason why two machines draw otherwise.
#pragma once

#include <string>

namespace vxhost
{

// Returns lines: the version, the plug-in and the press profile that are used where none is named, and the libraries as they are
// loaded here. One that is not there is named all the same.
std::string VersionText();

} // namespace vxhost
