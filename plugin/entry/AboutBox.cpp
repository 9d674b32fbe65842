#include "plugin/entry/AboutBox.h"

#include <cstring>

namespace vx
{

namespace
{

constexpr int kMenuBarHeight = 20;

} // namespace

Result DoAbout(HostCallRecord * /*record*/)
{
    const Handle dialog = GetResource(kVXDialogType, kVXAboutDialog);
    if (dialog == nullptr)
        return static_cast<Result>(ResError());
    // The placement must survive until the dialog is built from the resource.
    HNoPurge(dialog);
    CenterDialog(dialog);
    void *inFrontOfAll = reinterpret_cast<void *>(intptr_t{-1});
    void *window = GetNewDialog(kVXAboutDialog, nullptr, inFrontOfAll);
    if (window == nullptr) {
        HPurge(dialog);
        return static_cast<Result>(MemError());
    }
    int16_t item = 0; // whichever it is
    ModalDialog(nullptr, &item);
    DisposDialog(window);
    HPurge(dialog);
    return kOk;
}

void CenterDialog(Handle dialog)
{
    const Rect *screen = GetMainDevice();
    const auto screenWidth = static_cast<int16_t>(screen->right - screen->left);
    const auto screenHeight = static_cast<int16_t>(screen->bottom - screen->top);
    Rect bounds;
    memcpy(&bounds, *dialog, sizeof bounds);
    OffsetRect(&bounds, static_cast<int16_t>(-bounds.left), static_cast<int16_t>(-bounds.top));
    const auto spareWidth = static_cast<int16_t>(screenWidth - bounds.right);
    const auto spareHeight = static_cast<int16_t>(screenHeight - bounds.bottom - kMenuBarHeight);
    OffsetRect(&bounds, static_cast<int16_t>(spareWidth / 2),
               static_cast<int16_t>(spareHeight / 3 + kMenuBarHeight));
    memcpy(*dialog, &bounds, sizeof bounds);
}

} // namespace vx
