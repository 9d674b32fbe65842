#include "cli/options/FontMapFile.h"

#include "cli/options/OptionFile.h"

namespace vxhost
{

FontMap ReadFontMapFile(const std::string &path, double seconds)
{
    constexpr size_t kMostBytes = kMaxMapLine * kMaxMapRows;
    const OptionFile file = {"--font-map", path,
                             "the most that a map may have: leave out what no document needs"};
    return ReadFontMap(ReadOptionFile(file, kMostBytes, seconds), path);
}

} // namespace vxhost
