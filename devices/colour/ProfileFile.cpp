#include "devices/colour/ProfileFile.h"

namespace vxhost
{

namespace
{

constexpr size_t kMaxProfileBytes = size_t{32} << 20;

} // namespace

bool ReadProfileFile(const std::string &name, HeldBytes *bytes)
{
    std::string error;
    const Descriptor file(OpenToRead(name, FileKinds::Regular, &error));
    return file.Get() >= 0 && bytes->ReadAll(file.Get(), {kMaxProfileBytes, 0}) == ReadEnd::Whole;
}

} // namespace vxhost
