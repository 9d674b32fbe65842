// The procedure table that draws: every entry becomes a call on a Drawing.
//
// Owns the table, which the plug-in may change during a parse. Exceptions end here: the host of the call keeps the
// first one, and from then on nothing is drawn.
#pragma once

#include "host/drawing/Drawing.h"
#include "host/toolbox/HostContext.h"

#include <vx/Procs.h>

#include <utility>

namespace vxhost
{

class DrawingTable
{
  public:
    // The drawing must outlive the table.
    explicit DrawingTable(Drawing *drawing);
    DrawingTable(const DrawingTable &) = delete;
    DrawingTable &operator=(const DrawingTable &) = delete;

    // What a parse is given; both live as long as this object.
    ZRKProcs *Procs() { return &procs_; }
    void *Reference() { return this; }

    // Runs one call, unless one before it has failed.
    template <typename Action>
    void Run(Action &&action)
    {
        if (hasFailed_)
            return;
        try {
            std::forward<Action>(action)(*drawing_);
        } catch (...) {
            hasFailed_ = true;
            RememberFailure();
        }
    }

  private:
    Drawing *drawing_;
    bool hasFailed_ = false;
    ZRKProcs procs_;
};

} // namespace vxhost
