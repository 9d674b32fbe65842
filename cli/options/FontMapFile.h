// Reads which font serves which name from a file that the user names.
#pragma once

#include "library/FontMap.h"

#include <string>

namespace vxhost
{

// The file may be a pipe and take so many seconds; 0: any number. Throws OptionError.
FontMap ReadFontMapFile(const std::string &path, double seconds);

} // namespace vxhost
