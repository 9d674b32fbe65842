// Blocks of the host's memory, made as records and given back.
#pragma once

#include <vx/HostCall.h>

#include <new>

namespace vx
{

// The block is zero-filled, or null when the host has no memory.
template <typename Block>
Block *AllocateBlock(const MemoryProcs *memory)
{
    void *block = memory->allocate(static_cast<int32_t>(sizeof(Block)), memory->refcon);
    return block != nullptr ? new (block) Block() : nullptr;
}

// A null block is ignored.
inline void ReleaseBlock(const MemoryProcs *memory, void *block)
{
    if (block != nullptr)
        memory->release(block, memory->refcon);
}

} // namespace vx
