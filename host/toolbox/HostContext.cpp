#include "host/toolbox/HostContext.h"

#include "host/toolbox/PascalString.h"

#include <algorithm>

namespace vxhost
{

namespace
{

// It is read for each character of text: the model finds it beside the thread's own pointer, without a call.
[[gnu::tls_model("initial-exec")]] thread_local HostContext *currentHost = nullptr;

} // namespace

HostContext *CurrentHost()
{
    return currentHost;
}

HostScope::HostScope(HostContext *host) : previous_(currentHost)
{
    currentHost = host;
}

HostScope::~HostScope()
{
    currentHost = previous_;
}

void RememberFailure() noexcept
{
    if (currentHost != nullptr && currentHost->failure == nullptr)
        currentHost->failure = std::current_exception();
}

bool HasCallFailed() noexcept
{
    return currentHost != nullptr && currentHost->failure != nullptr;
}

uint8_t ReportToHost(const uint8_t *title, const uint8_t *message, int32_t)
{
    bool stop = false;
    RunCallback([&] {
        if (currentHost != nullptr && currentHost->onReport)
            stop = currentHost->onReport(std::string(PascalView(title)), std::string(PascalView(message)));
    });
    return stop || HasCallFailed() ? 1 : 0;
}

void ProgressToHost(int32_t bytesRead, int32_t totalBytes)
{
    RunCallback([&] {
        // After a failure the plug-in still goes through the lines that it has: those are not told.
        if (currentHost == nullptr || HasCallFailed())
            return;
        if (currentHost->structure != nullptr)
            currentHost->structure->BeginLine();
        if (currentHost->onProgress)
            currentHost->onProgress(bytesRead, std::max(totalBytes, 0));
    });
}

} // namespace vxhost
