// The Toolbox's resources: string lists and the about box's dialog, and the small memory calls beside them.
//
// A resource is built when it is first asked for and lives as long as its host; what the plug-in writes into
// it, as it does to place the dialog, stays there.
#include "host/resources/StringLists.h"
#include "host/toolbox/HostContext.h"
#include "host/toolbox/PascalString.h"

#include <vx/Toolbox.h>

#include <cstring>

namespace vxhost
{

namespace
{

std::vector<char> DialogBytes(const Rect &bounds)
{
    std::vector<char> bytes(sizeof bounds);
    std::memcpy(bytes.data(), &bounds, sizeof bounds);
    return bytes;
}

// Empty when there is no such resource.
std::vector<char> BuildResource(const HostContext &host, uint32_t type, int16_t id)
{
    if (type == kVXDialogType && id == kVXAboutDialog && host.aboutBox)
        return DialogBytes(*host.aboutBox);
    if (type != kVXStringListType)
        return {};
    const auto replaced = host.stringLists.find(id);
    if (replaced != host.stringLists.end())
        return PackStringList({replaced->second.begin(), replaced->second.end()});
    const std::span<const std::string_view> list = FindStringList(id);
    return list.empty() ? std::vector<char>() : PackStringList({list.begin(), list.end()});
}

// Null when there is no such resource.
Handle LoadResource(HostContext *host, uint32_t type, int16_t id)
{
    const std::pair key(type, id);
    auto found = host->resources.find(key);
    if (found == host->resources.end()) {
        std::vector<char> bytes = BuildResource(*host, type, id);
        if (bytes.empty())
            return nullptr;
        found = host->resources.emplace(key, LoadedResource{std::move(bytes)}).first;
        found->second.first = found->second.bytes.data();
    }
    return &found->second.first;
}

} // namespace

} // namespace vxhost

using vxhost::CurrentHost;
using vxhost::HostContext;

extern "C" {

Handle GetResource(uint32_t type, int16_t id)
{
    HostContext *host = CurrentHost();
    if (host == nullptr)
        return nullptr;
    try {
        const Handle resource = vxhost::LoadResource(host, type, id);
        host->resourceError = resource == nullptr ? vxhost::kResNotFoundError : int16_t{0};
        return resource;
    } catch (...) {
        vxhost::RememberFailure();
        host->resourceError = vxhost::kMemFullError;
        return nullptr;
    }
}

int16_t ResError(void)
{
    const HostContext *host = CurrentHost();
    return host == nullptr ? vxhost::kResNotFoundError : host->resourceError;
}

int16_t MemError(void)
{
    const HostContext *host = CurrentHost();
    return host == nullptr ? vxhost::kMemFullError : host->memoryError;
}

// Nothing is ever purged; the calls are counted, so that a test can see that they balance.
void HNoPurge(Handle)
{
    if (HostContext *host = CurrentHost())
        ++host->purgeHolds;
}

void HPurge(Handle)
{
    if (HostContext *host = CurrentHost())
        --host->purgeHolds;
}

void BlockMove(const void *from, void *to, int32_t count)
{
    if (count > 0)
        std::memmove(to, from, static_cast<size_t>(count));
}

void GetIndString(uint8_t *to, int16_t list, int16_t index)
{
    to[0] = 0;
    const Handle resource = GetResource(kVXStringListType, list);
    if (resource == nullptr)
        return;
    int16_t count = 0;
    std::memcpy(&count, *resource, sizeof count);
    if (index < 1 || index > count)
        return;
    const auto *entry = reinterpret_cast<const uint8_t *>(*resource) + sizeof count;
    for (int16_t i = 1; i < index; ++i)
        entry += 1 + entry[0];
    vxhost::StorePascal(vxhost::PascalView(entry), to);
}

char *p2cstr(uint8_t *string)
{
    const size_t length = string[0];
    std::memmove(string, string + 1, length);
    string[length] = 0;
    return reinterpret_cast<char *>(string);
}

} // extern "C"
