// The fonts of the machine, as fontconfig knows them, by PostScript name.
//
// Only fontconfig's lists are read, no font file is opened. The fonts come in the order of their names, then the
// stand-ins, so that one machine always gives one list.
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

// The installed fonts, then an entry for each classic font that is not installed and that one with the same widths
// can stand in for. With no font at all there is one entry, whose characters are boxes. Lack of memory is
// thrown.
std::unique_ptr<FontList> MakeFontconfigFonts(const FontSources &sources = {},
                                              const BeforeLooking &beforeLooking = nullptr);

} // namespace vxhost
