// Makes the plug-in that is part of the program: no file is looked for, and none can take its place.
#pragma once

#include "host/Plugin.h"

#include <memory>

namespace vxhost
{

std::unique_ptr<Plugin> MakeLinkedPlugin();

} // namespace vxhost
