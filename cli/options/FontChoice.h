// Holds which fonts a run may use, as the user says it.
#pragma once

#include "host/fonts/FontconfigFonts.h"
#include "library/FontMap.h"

#include <string>

namespace vxhost
{

struct FontChoice {
    FontSources sources;
    FontMap served;
    bool substitute = true; // false: a document that needs a font that is not there is given up
};

// Reads the file of a font map, which may be a pipe and take so many seconds; 0: any number. Throws OptionError.
FontMap ReadFontMapFile(const std::string &path, double seconds);

} // namespace vxhost
