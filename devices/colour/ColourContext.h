// Little CMS with an allocator of our own: it tells lack of memory as it tells a profile that is damaged.
#pragma once

#include "host/ReservedMemory.h"

#include <lcms2.h>

namespace vxhost
{

class ColourContext
{
  public:
    ColourContext(); // throws std::bad_alloc
    ~ColourContext();
    ColourContext(const ColourContext &) = delete;
    ColourContext &operator=(const ColourContext &) = delete;

    cmsContext Get() const { return context_; }
    void Check() const { memory_.Check(); } // after calls, before their result is judged

  private:
    ReservedMemory memory_;
    cmsContext context_ = nullptr;
};

} // namespace vxhost
