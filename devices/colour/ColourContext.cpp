#include "devices/colour/ColourContext.h"

#include <lcms2_plugin.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <new>

namespace vxhost
{

namespace
{

// Stands in front of each block of the reserve.
struct alignas(std::max_align_t) BlockHeader {
    size_t size;
};

// Little CMS 2.0: what is used here has not changed since.
constexpr cmsUInt32Number kOldestVersion = 2000;

// What is larger is a table, and those the library checks.
constexpr cmsUInt32Number kSmall = 4096;

ColourContext *ContextOf(cmsContext context)
{
    return static_cast<ColourContext *>(cmsGetContextUserData(context));
}

} // namespace

ColourContext::ColourContext()
{
    cmsPluginMemHandler handler = {};
    handler.base.Magic = cmsPluginMagicNumber;
    handler.base.ExpectedVersion = kOldestVersion;
    handler.base.Type = cmsPluginMemHandlerSig;
    handler.MallocPtr = Allocate;
    handler.FreePtr = Release;
    handler.ReallocPtr = Resize;
    context_ = cmsCreateContext(&handler, this);
    if (context_ == nullptr)
        throw std::bad_alloc();
}

ColourContext::~ColourContext()
{
    cmsDeleteContext(context_);
}

void ColourContext::Check() const
{
    if (hasRunOut_)
        throw std::bad_alloc();
}

void *ColourContext::Allocate(cmsContext context, cmsUInt32Number size)
{
    if (void *block = std::malloc(size))
        return block;
    ColourContext *self = ContextOf(context);
    self->hasRunOut_ = true;
    return size <= kSmall ? self->TakeReserve(size) : nullptr;
}

void ColourContext::Release(cmsContext context, void *block)
{
    if (!ContextOf(context)->IsReserve(block))
        std::free(block);
}

void *ColourContext::Resize(cmsContext context, void *block, cmsUInt32Number size)
{
    ColourContext *self = ContextOf(context);
    if (!self->IsReserve(block)) {
        void *moved = std::realloc(block, size);
        self->hasRunOut_ = self->hasRunOut_ || moved == nullptr;
        return moved;
    }
    void *moved = Allocate(context, size);
    if (moved != nullptr)
        std::memcpy(moved, block, std::min<size_t>(size, (static_cast<BlockHeader *>(block) - 1)->size));
    return moved;
}

void *ColourContext::TakeReserve(size_t size)
{
    const size_t taken = sizeof(BlockHeader) * (2 + size / sizeof(BlockHeader)); // whole ones, so that all are aligned
    if (taken > kReserve - taken_)
        return nullptr;
    auto *header = new (reserve_.data() + taken_) BlockHeader{size};
    taken_ += taken;
    return header + 1;
}

bool ColourContext::IsReserve(const void *block) const
{
    const std::less<const void *> isBefore;
    return !isBefore(block, reserve_.data()) && isBefore(block, reserve_.data() + kReserve);
}

} // namespace vxhost
