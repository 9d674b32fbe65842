// From ink to the colours of a screen by the press profile that is built in, straight from its tables.
#pragma once

#include "devices/colour/ScreenColours.h"

#include <memory>

namespace vxhost
{

std::unique_ptr<ScreenColours> MakeFogra39Colours(Intent intent);

} // namespace vxhost
