// The fonts of the machine, as fontconfig knows them, by PostScript name.
//
// Only fontconfig's lists are read, no font file is opened. A program without files is built without this.
#pragma once

#include "host/fonts/FontList.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace vxhost
{

struct FontSources {
    bool useSystemFonts = true;
    std::vector<std::string> directories = {}; // further folders, with all below them
    std::vector<SharedFontBytes> memory =
        {}; // files in memory, which come before all others of the same names
};

// Is called when it is known where fonts are, before their folders are looked into. In the folders of the cache fontconfig keeps
// what it finds; they need not be there.
using BeforeLooking = std::function<void(const std::vector<std::string> &cacheFolders)>;

// Lists the fonts of the machine as MakeFontList orders them. Lack of memory is thrown.
std::unique_ptr<FontList> MakeFontconfigFonts(const FontSources &sources = {},
                                              const BeforeLooking &beforeLooking = nullptr);

} // namespace vxhost
