// The procedure table that draws: every entry becomes a call on a Drawing.
//
// Owns the table, which the plug-in may change during a parse. Exceptions end here: the host of the call keeps the
// first one, and from then on nothing is drawn.
#pragma once

#include "host/drawing/Drawing.h"
#include "host/drawing/TextShow.h"
#include "host/toolbox/HostContext.h"

#include <vx/Procs.h>

#include <utility>

namespace vxhost
{

class DrawingTable
{
  public:
    // The drawing must outlive the table, and so must the glyphs; without them text is counted and not drawn.
    explicit DrawingTable(Drawing *drawing, GlyphSource *glyphs = nullptr);
    DrawingTable(const DrawingTable &) = delete;
    DrawingTable &operator=(const DrawingTable &) = delete;

    // What a parse is given; both live as long as this object.
    ZRKProcs *Procs() { return &procs_; }
    void *Reference() { return this; }
    TextShow &Text() { return text_; }

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
    TextShow text_;
    bool hasFailed_ = false;
    ZRKProcs procs_;
};

} // namespace vxhost
