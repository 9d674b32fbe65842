// The fonts of the machine, as fontconfig knows them, by PostScript name.
//
// Only fontconfig's lists are read, no font file is opened. A program without files is built without this.
#pragma once

#include "host/fonts/FontList.h"

#include <memory>
#include <string>
#include <vector>

namespace vxhost
{

struct FontSources {
    bool useSystemFonts = true;
    std::vector<std::string> directories = {}; // further ones, with all below them
    std::vector<SharedFontBytes> memory =
        {}; // files in memory, which come before all others of the same names
};

// As MakeFontList has them. Lack of memory is thrown.
std::unique_ptr<FontList> MakeFontconfigFonts(const FontSources &sources = {});

} // namespace vxhost
