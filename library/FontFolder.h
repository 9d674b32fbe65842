// Looks through a folder of fonts before fontconfig does.
#pragma once

#include <string>

namespace vxhost
{

// Throws OptionError for one in which there is what nobody can look through: it would wait for ever.
void CheckFontFolder(const std::string &path);

} // namespace vxhost
