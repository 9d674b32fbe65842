// Which fonts a run may use, as the user says it.
#pragma once

#include "host/fonts/FontconfigFonts.h"

#include <map>
#include <string>

namespace vxhost
{

struct FontChoice {
    FontSources sources;
    std::map<std::string, std::string> served; // name asked for, PostScript name of the font to draw with
    bool substitute = true; // false: a document that needs a font that is not there is given up
};

// Reads lines "ASKED = FONT"; what follows "#" is a comment. A pipe may take so many seconds, 0: any number. Throws
// UsageError.
std::map<std::string, std::string> ReadFontMap(const std::string &path, double seconds);

} // namespace vxhost
