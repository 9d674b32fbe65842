#include "host/CappedHeap.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace vxhost
{

namespace
{

// Stands in front of each block and keeps it aligned for anything.
struct alignas(std::max_align_t) BlockHeader {
    int32_t size;
};

} // namespace

void *CappedHeap::Allocate(int32_t size, void *refcon)
{
    auto *heap = static_cast<CappedHeap *>(refcon);
    if (size < 0)
        return nullptr;
    if (heap->heldBytes_ + size > heap->maxBytes_) {
        heap->wasLimitHit_ = heap->hasRefused_ = true;
        return nullptr;
    }
    void *memory = std::malloc(sizeof(BlockHeader) + static_cast<size_t>(size));
    if (memory == nullptr) {
        heap->hasRefused_ = true;
        return nullptr;
    }
    heap->heldBytes_ += size;
    heap->peakBytes_ = std::max(heap->peakBytes_, heap->heldBytes_);
    return new (memory) BlockHeader{size} + 1;
}

void CappedHeap::Release(void *block, void *refcon)
{
    if (block == nullptr)
        return;
    auto *header = static_cast<BlockHeader *>(block) - 1;
    static_cast<CappedHeap *>(refcon)->heldBytes_ -= header->size;
    std::free(header);
}

} // namespace vxhost
