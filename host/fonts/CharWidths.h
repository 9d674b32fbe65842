// The widths of the bytes of text in one font.
#pragma once

#include "host/fonts/FontFile.h"
#include "host/fonts/FontList.h"
#include "host/fonts/TextEncoding.h"

#include <string_view>

namespace vxhost
{

// Whether the file of the font of that PostScript name finds its glyphs by the very bytes of text in that encoding:
// symbol fonts often do, and call their glyphs Latin letters.
bool GoesByBytes(const FontFile &file, std::string_view postScriptName, TextEncoding encoding);

// A character that the font lacks is as wide as what is drawn for it; control characters have no width, and a byte that
// begins a character of two is an em wide. Without a file all characters are boxes.
CharWidths ReadCharWidths(const FontFile *file, TextEncoding encoding, bool goesByBytes);

} // namespace vxhost
