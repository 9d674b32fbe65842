// Looks through a folder of fonts before fontconfig does.
#pragma once

#include <string>

namespace vxhost
{

// Throws OptionError for a folder that is not there, and for one with a pipe in it, for whose writer fontconfig would wait.
void CheckFontFolder(const std::string &path);

} // namespace vxhost
