#include "web/Files.h"

#include "host/MappedFile.h"

#include <map>
#include <set>

namespace
{

std::map<std::string, std::vector<std::byte>> &Given()
{
    static std::map<std::string, std::vector<std::byte>> files;
    return files;
}

std::set<std::string> &Wanted()
{
    static std::set<std::string> names;
    return names;
}

} // namespace

namespace vxweb
{

void GiveFile(const std::string &name, std::vector<std::byte> bytes)
{
    Given().try_emplace(name, std::move(bytes)); // one that is there may be in use
}

std::string TakeWanted()
{
    std::string lines;
    for (const std::string &name : Wanted())
        lines.append(name).append("\n");
    Wanted().clear();
    return lines;
}

} // namespace vxweb

namespace vxhost
{

std::shared_ptr<const MappedFile> MappedFile::Open(const std::string &path)
{
    const auto found = Given().find(path);
    if (found != Given().end())
        return std::shared_ptr<const MappedFile>(new MappedFile(found->second));
    Wanted().insert(path);
    return nullptr;
}

MappedFile::~MappedFile() = default;

} // namespace vxhost
