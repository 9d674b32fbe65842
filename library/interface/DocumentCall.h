// Makes a call about a document, which refuses a second one at the same time.
#pragma once

#include "library/interface/Calls.h"
#include "library/interface/Handles.h"

#include <utility>

namespace vxhost
{

template <typename Action>
vx_status DocumentCall(vx_document *document, vx_error *error, Action &&action) noexcept
{
    return Call(error, [&] {
        CheckThere(document, "document");
        if (document->isBusy.test_and_set(std::memory_order_acquire))
            throw CallError(VX_BUSY,
                            "another call is at work with this document: wait for its end, or open it "
                            "once more");
        struct Release {
            std::atomic_flag *flag;
            ~Release() { flag->clear(std::memory_order_release); }
        } const release = {&document->isBusy};
        std::forward<Action>(action)();
    });
}

} // namespace vxhost
