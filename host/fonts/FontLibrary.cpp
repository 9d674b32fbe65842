#include "host/fonts/FontLibrary.h"

#include FT_MODULE_H

#include <new>

namespace vxhost
{

namespace
{

ReservedMemory *MemoryOf(FT_Memory memory)
{
    return static_cast<ReservedMemory *>(memory->user);
}

void *Allocate(FT_Memory memory, long size)
{
    return MemoryOf(memory)->Allocate(static_cast<size_t>(size));
}

void Release(FT_Memory memory, void *block)
{
    MemoryOf(memory)->Release(block);
}

void *Resize(FT_Memory memory, long, long size, void *block)
{
    return MemoryOf(memory)->Resize(block, static_cast<size_t>(size));
}

} // namespace

FontLibrary::FontLibrary() : procedures_{&memory_, Allocate, Release, Resize}
{
    if (FT_New_Library(&procedures_, &library_) != 0)
        throw std::bad_alloc(); // nothing else can fail here
    FT_Add_Default_Modules(library_);
    FT_Set_Default_Properties(library_);
}

FontLibrary::~FontLibrary()
{
    FT_Done_Library(library_);
}

FT_Error FontLibrary::OpenFace(const SharedFontBytes &bytes, int faceIndex, FT_Face *face)
{
    bytes_ = bytes;
    const std::span<const std::byte> all = bytes->Get();
    return FT_New_Memory_Face(library_, reinterpret_cast<const FT_Byte *>(all.data()),
                              static_cast<FT_Long>(all.size()), faceIndex, face);
}

} // namespace vxhost
