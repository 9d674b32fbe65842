#include "host/ReservedMemory.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <new>

namespace vxhost
{

namespace
{

constexpr size_t kSmall = 512;

// Stands in front of each block of the reserve.
struct alignas(std::max_align_t) BlockHeader {
    size_t size;
};

} // namespace

void *ReservedMemory::Allocate(size_t size)
{
    if (void *block = std::malloc(size))
        return block;
    hasRunOut_ = true;
    return size <= kSmall ? TakeReserve(size) : nullptr;
}

void ReservedMemory::Release(void *block)
{
    if (!IsReserve(block))
        std::free(block);
}

void *ReservedMemory::Resize(void *block, size_t size)
{
    if (!IsReserve(block)) {
        void *moved = std::realloc(block, size);
        hasRunOut_ = hasRunOut_ || moved == nullptr;
        return moved;
    }
    void *moved = Allocate(size);
    if (moved != nullptr)
        std::memcpy(moved, block, std::min(size, (static_cast<BlockHeader *>(block) - 1)->size));
    return moved;
}

void ReservedMemory::Check() const
{
    if (hasRunOut_)
        throw std::bad_alloc();
}

bool ReservedMemory::IsReserve(const void *block) const
{
    const std::less<const void *> isBefore;
    return !isBefore(block, reserve_.data()) && isBefore(block, reserve_.data() + kReserve);
}

void *ReservedMemory::TakeReserve(size_t size)
{
    const size_t taken =
        sizeof(BlockHeader) * (2 + size / sizeof(BlockHeader)); // whole headers keep every block aligned
    if (taken > kReserve - taken_)
        return nullptr;
    auto *header = new (reserve_.data() + taken_) BlockHeader{size};
    taken_ += taken;
    return header + 1;
}

} // namespace vxhost
