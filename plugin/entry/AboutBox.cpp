#include "plugin/entry/AboutBox.h"

#include "plugin/body/ParseContext.h"
#include "plugin/input/MacString.h"

#include <cstring>

namespace vx
{

namespace
{

constexpr uint32_t kDialogType = 0x444C4F47; // 'DLOG'
constexpr int16_t kAboutDialog = 16000;
constexpr int16_t kProblemTexts = 16000;
constexpr int kMenuBarHeight = 20;

} // namespace

Result DoAbout(HostCallRecord * /*record*/)
{
    const Handle dialog = GetResource(kDialogType, kAboutDialog);
    if (dialog == nullptr)
        return static_cast<Result>(ResError());
    // The placement must survive until the dialog is built from the resource.
    HNoPurge(dialog);
    CenterDialog(dialog);
    void *inFrontOfAll = reinterpret_cast<void *>(intptr_t{-1});
    void *window = GetNewDialog(kAboutDialog, nullptr, inFrontOfAll);
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

uint8_t ReportParsingError(ParseContext *context, Problem problem)
{
    if (context->problemProc == nullptr || context->aborted != 0)
        return 0;
    uint8_t title[kPascalStringSize];
    uint8_t message[kPascalStringSize];
    GetIndString(title, kProblemTexts, static_cast<int16_t>(2 * problem - 1));
    GetIndString(message, kProblemTexts, static_cast<int16_t>(2 * problem));
    return context->problemProc(title, message, title[0] == 0 ? 1 : 0);
}

void ReportProblemOnce(ParseContext *context, Problem problem, uint8_t *warned)
{
    if (*warned != 0)
        return;
    *warned = 1;
    context->aborted = static_cast<uint8_t>(context->aborted | ReportParsingError(context, problem));
}

} // namespace vx
