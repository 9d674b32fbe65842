#include "devices/colour/ProfileFile.h"

namespace vxhost
{

bool ReadProfileFile(const std::string &name, HeldBytes *bytes)
{
    std::string error;
    const Descriptor file(OpenToRead(name, FileKinds::Regular, &error));
    return file.Get() >= 0 && bytes->ReadAll(file.Get(), {kMaxProfileBytes, 0}) == ReadEnd::Whole;
}

} // namespace vxhost
