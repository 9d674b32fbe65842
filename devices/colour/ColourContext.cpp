#include "devices/colour/ColourContext.h"

#include <lcms2_plugin.h>

#include <new>

namespace vxhost
{

namespace
{

// Little CMS 2.0: the calls that are used here have not changed since.
constexpr cmsUInt32Number kOldestVersion = 2000;

ReservedMemory *MemoryOf(cmsContext context)
{
    return static_cast<ReservedMemory *>(cmsGetContextUserData(context));
}

void *Allocate(cmsContext context, cmsUInt32Number size)
{
    return MemoryOf(context)->Allocate(size);
}

void Release(cmsContext context, void *block)
{
    MemoryOf(context)->Release(block);
}

void *Resize(cmsContext context, void *block, cmsUInt32Number size)
{
    return MemoryOf(context)->Resize(block, size);
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
    context_ = cmsCreateContext(&handler, &memory_);
    if (context_ == nullptr)
        throw std::bad_alloc();
}

ColourContext::~ColourContext()
{
    cmsDeleteContext(context_);
}

} // namespace vxhost
