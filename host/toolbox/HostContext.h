// The host of the call that runs on this thread: what the Toolbox symbols and the boundary's callbacks answer from.
//
// The plug-in's Toolbox calls carry no reference to their host, so it is found through one thread-local pointer.
// HostScope sets it for one call and puts the previous one back: calls nest, and threads do not meet. Without a
// host the Toolbox still answers: no fonts, no resources.
#pragma once

#include "host/fonts/FontList.h"
#include "host/reading/StructureCompanion.h"

#include <vx/Toolbox.h>
#include <vx/Types.h>

#include <cstdint>
#include <exception>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vxhost
{

// Error numbers of the Toolbox itself.
constexpr int16_t kMemFullError = -108;
constexpr int16_t kResNotFoundError = -192;

struct LoadedResource {
    std::vector<char> bytes;
    char *first = nullptr; // what a Handle points at
};

// The host without windows shows a dialog to nobody; this is what it would have shown.
struct DialogRecord {
    Rect bounds = {0, 0, 0, 0};
    int made = 0;
    int shown = 0;
    int disposed = 0;
};

struct HostContext {
    const FontList *fonts = nullptr;
    WidthSource *widths = nullptr; // the widths of those fonts; null: no character has one
    int32_t systemScript = kVXScriptRoman;

    Rect screen = {0, 0, 768, 1024};
    std::optional<Rect> aboutBox = Rect{0, 0, 200, 300};     // nothing: the dialog's resource is missing
    bool dialogsFail = false;                                // as if there were no memory for a dialog
    std::map<int16_t, std::vector<std::string>> stringLists; // each replaces the list of that number

    std::function<bool(const std::string &title, const std::string &message)> onReport; // true: stop
    std::function<void(int32_t read, int32_t total)> onProgress;                        // neither is below 0
    std::function<void(std::string_view)> onDebugMessage;
    StructureCompanion *structure =
        nullptr; // is called before each line, more often than all others; null: none

    // The first exception that reached a callback; the document's reader delivers nothing after it.
    std::exception_ptr failure;

    // The Toolbox's own: what it loaded, and where it stands.
    std::map<std::pair<uint32_t, int16_t>, LoadedResource> resources;
    int16_t resourceError = 0;
    int16_t memoryError = 0;
    int purgeHolds = 0;        // HNoPurge less HPurge
    int32_t lastNamedFont = 0; // index of the font whose family is asked for next
    DialogRecord dialog;
    int32_t widthsFont = -1;                 // the font whose widths were asked for last
    const CharWidths *knownWidths = nullptr; // of that font, where its source knows them together
};

HostContext *CurrentHost(); // null outside of a call

class HostScope
{
  public:
    explicit HostScope(HostContext *host);
    ~HostScope();
    HostScope(const HostScope &) = delete;
    HostScope &operator=(const HostScope &) = delete;

  private:
    HostContext *previous_;
};

// Keeps the exception being handled in the current host. Only the first counts.
void RememberFailure() noexcept;
bool HasCallFailed() noexcept;

// Runs what a callback does: an exception ends here and ends the parse.
template <typename Action>
void RunCallback(Action &&action) noexcept
{
    try {
        std::forward<Action>(action)();
    } catch (...) {
        RememberFailure();
    }
}

// A HostCallRecord's report and progress point to these, which hand on to the current host's procedures.
uint8_t ReportToHost(const uint8_t *title, const uint8_t *message, int32_t titleEmpty);
void ProgressToHost(int32_t bytesRead, int32_t totalBytes);

} // namespace vxhost
