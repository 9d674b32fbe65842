// Says with what outputs are made, in the one line that preservation systems keep with an event.
#pragma once

#include <string>

namespace vxhost
{

// Returns: program="vx"; version="…"; plugin="sha256:…"; profile="sha256:…". The plug-in is built into the program, so the
// digest is that of the program's file.
const std::string &EventDetail();

} // namespace vxhost
