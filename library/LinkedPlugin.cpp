#include "library/LinkedPlugin.h"

#include "plugin/entry/VXParser.h"

namespace vxhost
{

std::unique_ptr<Plugin> MakeLinkedPlugin()
{
    return Plugin::FromEntry(VXParserMain);
}

} // namespace vxhost
