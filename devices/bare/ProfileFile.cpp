// A build without files has no profiles but those that are built in or given as bytes.
#include "devices/colour/ProfileFile.h"

namespace vxhost
{

bool ReadProfileFile(const std::string &, HeldBytes *)
{
    return false;
}

} // namespace vxhost
