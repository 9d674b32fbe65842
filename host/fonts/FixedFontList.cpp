#include "host/fonts/FixedFontList.h"

namespace vxhost
{

FixedFontList::FixedFontList(const std::vector<std::string> &postScriptNames, int32_t width) : width_(width)
{
    for (const std::string &name : postScriptNames) {
        Entry entry;
        entry.postScriptName = name;
        entry.familyName = name.substr(0, name.find('-'));
        entries_.push_back(std::move(entry));
    }
}

} // namespace vxhost
