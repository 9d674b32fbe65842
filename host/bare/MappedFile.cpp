// A build without files opens none.
#include "host/MappedFile.h"

namespace vxhost
{

std::shared_ptr<const MappedFile> MappedFile::Open(const std::string &)
{
    return nullptr;
}

MappedFile::~MappedFile() = default;

} // namespace vxhost
