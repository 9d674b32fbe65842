// Where there are no files a profile is built in or given.
#include "devices/colour/ProfileFile.h"

namespace vxhost
{

bool ReadProfileFile(const std::string &, HeldBytes *)
{
    return false;
}

} // namespace vxhost
