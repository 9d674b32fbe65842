// Asks a font whether a file may carry it.
#pragma once

#include "host/drawing/GlyphRun.h"

namespace vxhost
{

// A font that cannot be read forbids nothing. Lack of memory is thrown.
bool MayEmbed(const TextFont &font);

} // namespace vxhost
