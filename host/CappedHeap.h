// The memory procedures that one call of the plug-in gets: every byte is counted, and there is an upper bound.
#pragma once

#include <vx/HostCall.h>

#include <cstdint>

namespace vxhost
{

class CappedHeap
{
  public:
    explicit CappedHeap(int64_t maxBytes) : maxBytes_(maxBytes), procs_{Allocate, Release, this} {}
    CappedHeap(const CappedHeap &) = delete;
    CappedHeap &operator=(const CappedHeap &) = delete;

    MemoryProcs *Procs() { return &procs_; }

    int64_t HeldBytes() const { return heldBytes_; }
    int64_t PeakBytes() const { return peakBytes_; }
    bool WasLimitHit() const { return wasLimitHit_; }
    bool HasRefused() const { return hasRefused_; } // an allocation, for the limit or for want of memory

  private:
    static void *Allocate(int32_t size, void *refcon);
    static void Release(void *block, void *refcon);

    int64_t maxBytes_;
    int64_t heldBytes_ = 0;
    int64_t peakBytes_ = 0;
    bool wasLimitHit_ = false;
    bool hasRefused_ = false;
    MemoryProcs procs_;
};

} // namespace vxhost
