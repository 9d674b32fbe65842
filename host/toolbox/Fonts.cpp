// The Toolbox's view of the host's font list, and the system script.
#include "host/toolbox/HostContext.h"
#include "host/toolbox/PascalString.h"

#include <vx/Toolbox.h>

#include <algorithm>
#include <limits>

namespace vxhost
{

namespace
{

constexpr int16_t kNoSuchFont = -1;

// Fonts are numbered in 16 bits.
int32_t FontCount(const HostContext *host)
{
    if (host == nullptr || host->fonts == nullptr)
        return 0;
    return std::min<int32_t>(host->fonts->Count(), std::numeric_limits<int16_t>::max());
}

std::string_view BeforeDash(std::string_view name)
{
    return name.substr(0, name.find('-'));
}

std::string_view AfterDash(std::string_view name)
{
    const size_t dash = name.find('-');
    return dash == std::string_view::npos ? std::string_view() : name.substr(dash + 1);
}

// A family is asked for right after its font's name was given out, so the search starts at that font.
std::string_view FindFamily(const HostContext &host, std::string_view name)
{
    const int32_t count = FontCount(&host);
    for (int32_t i = 0; i < count; ++i) {
        const FontList::Entry &entry = host.fonts->At((host.lastNamedFont + i) % count);
        if (entry.postScriptName == name)
            return entry.familyName;
    }
    return BeforeDash(name);
}

} // namespace

} // namespace vxhost

using vxhost::CurrentHost;
using vxhost::HostContext;

extern "C" {

int32_t GetEnvirons(int16_t selector)
{
    const HostContext *host = CurrentHost();
    return host != nullptr && selector == kVXSystemScript ? host->systemScript : 0;
}

int32_t UNIXNumFonts(void)
{
    return vxhost::FontCount(CurrentHost());
}

// An entry without a name keeps its place in the list and cannot be asked for.
int16_t UNIXGetIndexedFontName(int32_t index, uint8_t *name, int16_t *number)
{
    HostContext *host = CurrentHost();
    if (index < 0 || index >= vxhost::FontCount(host))
        return vxhost::kNoSuchFont;
    *number = static_cast<int16_t>(index); // set also where the name is missing
    const std::string &postScriptName = host->fonts->At(index).postScriptName;
    if (postScriptName.empty())
        return vxhost::kNoSuchFont;
    vxhost::StorePascal(postScriptName, name);
    host->lastNamedFont = index;
    return 0;
}

void UNIXGetFamilyParentAndSuffix(const uint8_t *name, uint8_t *family, int32_t, uint8_t *suffix)
{
    const HostContext *host = CurrentHost();
    const std::string_view asked = vxhost::PascalView(name);
    vxhost::StorePascal(host == nullptr ? vxhost::BeforeDash(asked) : vxhost::FindFamily(*host, asked),
                        family);
    vxhost::StorePascal(vxhost::AfterDash(asked), suffix);
}

// Each string that is placed asks for the widths of all bytes, one by one.
int32_t UNIXGetCharWidth(int16_t number, int16_t character)
{
    HostContext *host = CurrentHost();
    const auto byte = static_cast<uint8_t>(character);
    if (host != nullptr && host->knownWidths != nullptr && host->widthsFont == number && byte == character)
        return (*host->knownWidths)[byte];
    if (number < 0 || number >= vxhost::FontCount(host) || host->widths == nullptr)
        return 0;
    int32_t width = 0;
    vxhost::RunCallback([&] {
        host->knownWidths = host->widths->Widths(number);
        host->widthsFont = number;
        width = host->widths->CharWidth(number, character);
    });
    return width;
}

} // extern "C"
