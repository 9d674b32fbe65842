#include "host/fonts/ListedFonts.h"

#include "host/fonts/FontNames.h"

namespace vxhost
{

std::unique_ptr<FontList> MakeBoxFonts()
{
    FontList::Entry boxes;
    boxes.postScriptName = kBoxFontName;
    boxes.familyName = kBoxFontFamily;
    return std::make_unique<ListedFonts>(std::vector{boxes});
}

} // namespace vxhost
