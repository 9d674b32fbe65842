// Which glyph of a font file shows a character.
#pragma once

#include "host/fonts/FontFile.h"

#include <cstdint>

namespace vxhost
{

// The character's own glyph, or that of a character that looks the same; 0 when the file has neither.
// If isUpright, in its form for a column.
uint32_t ChooseGlyph(const FontFile &file, char32_t character, bool isUpright = false);

} // namespace vxhost
