// Fonts that a program gives from its memory: what a list has to know of them is read from the files themselves.
#pragma once

#include "host/fonts/FontCandidates.h"

#include <vector>

namespace vxhost
{

// Adds the faces of a font file; none of one that is no font. Lack of memory is thrown.
void ReadGivenFont(const SharedFontBytes &bytes, std::vector<FontCandidate> *candidates);

} // namespace vxhost
