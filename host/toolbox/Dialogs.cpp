// The Toolbox's dialogs, on a host that has no windows: a dialog is made, shown and disposed of in the host's
// record alone. Debug messages go to the host's procedure for them.
#include "host/toolbox/HostContext.h"
#include "host/toolbox/PascalString.h"

#include <vx/Toolbox.h>

#include <cstring>

using vxhost::CurrentHost;
using vxhost::HostContext;

namespace
{

constexpr Rect kNoScreen = {0, 0, 0, 0};

// The coordinates of a screen have 16 bits and wrap.
int16_t Moved(int16_t coordinate, int16_t by)
{
    return static_cast<int16_t>(coordinate + by);
}

} // namespace

extern "C" {

const Rect *GetMainDevice(void)
{
    const HostContext *host = CurrentHost();
    return host == nullptr ? &kNoScreen : &host->screen;
}

void OffsetRect(Rect *rect, int16_t right, int16_t down)
{
    rect->left = Moved(rect->left, right);
    rect->right = Moved(rect->right, right);
    rect->top = Moved(rect->top, down);
    rect->bottom = Moved(rect->bottom, down);
}

void *GetNewDialog(int16_t id, void *, void *)
{
    HostContext *host = CurrentHost();
    if (host == nullptr)
        return nullptr;
    const Handle resource = GetResource(kVXDialogType, id);
    if (resource == nullptr || host->dialogsFail) {
        host->memoryError = vxhost::kMemFullError;
        return nullptr;
    }
    std::memcpy(&host->dialog.bounds, *resource, sizeof host->dialog.bounds);
    ++host->dialog.made;
    host->memoryError = 0;
    return &host->dialog;
}

// The first item is hit at once.
void ModalDialog(void *, int16_t *item)
{
    if (HostContext *host = CurrentHost())
        ++host->dialog.shown;
    if (item != nullptr)
        *item = 1;
}

void DisposDialog(void *)
{
    if (HostContext *host = CurrentHost())
        ++host->dialog.disposed;
}

void DebugStr(const uint8_t *lengthPrefixed)
{
    vxhost::RunCallback([&] {
        const HostContext *host = CurrentHost();
        if (host != nullptr && host->onDebugMessage)
            host->onDebugMessage(vxhost::PascalView(lengthPrefixed));
    });
}

} // extern "C"
