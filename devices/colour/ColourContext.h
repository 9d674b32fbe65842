// Little CMS with an allocator of its own, which knows when memory ran out.
//
// The library does not look at what it gets for its small records, and writes through null. So these come from a reserve
// when there is no more memory, and a caller that asks afterwards learns that there was none.
#pragma once

#include <lcms2.h>

#include <array>
#include <cstddef>

namespace vxhost
{

class ColourContext
{
  public:
    ColourContext(); // throws std::bad_alloc, as Check does
    ~ColourContext();
    ColourContext(const ColourContext &) = delete;
    ColourContext &operator=(const ColourContext &) = delete;

    cmsContext Get() const { return context_; }
    // Whether there was memory for everything until now. What the library has made is of no use if not.
    void Check() const;

  private:
    static void *Allocate(cmsContext context, cmsUInt32Number size);
    static void Release(cmsContext context, void *block);
    static void *Resize(cmsContext context, void *block, cmsUInt32Number size);
    void *TakeReserve(size_t size);
    bool IsReserve(const void *block) const;

    static constexpr size_t kReserve = size_t{1} << 16;

    bool hasRunOut_ = false;
    size_t taken_ = 0; // of the reserve; nothing comes back
    alignas(std::max_align_t) std::array<std::byte, kReserve> reserve_;
    cmsContext context_ = nullptr;
};

} // namespace vxhost
