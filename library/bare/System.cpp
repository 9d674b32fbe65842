// Makes a library for a machine without files: everything comes from memory.
#include "library/interface/System.h"

#include "host/fonts/GivenFonts.h"

namespace vxhost
{

std::span<const LibraryOption> LibraryOptions()
{
    return {};
}

std::unique_ptr<FontList> ListFonts(const FontSources &sources)
{
    std::vector<FontCandidate> candidates;
    for (const SharedFontBytes &bytes : sources.memory)
        ReadGivenFont(bytes, &candidates);
    return MakeFontList(std::move(candidates));
}

std::unique_ptr<Document> OpenDocument(const std::string &, std::string *error)
{
    *error = "this library is built without files: open its bytes";
    return nullptr;
}

} // namespace vxhost
