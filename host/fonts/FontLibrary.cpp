#include "host/fonts/FontLibrary.h"

#include FT_MODULE_H

#include <cstdlib>
#include <new>

namespace vxhost
{

FontLibrary::FontLibrary() : memory_{this, Allocate, Release, Resize}
{
    if (FT_New_Library(&memory_, &library_) != 0)
        throw std::bad_alloc(); // there is nothing else that could fail
    FT_Add_Default_Modules(library_);
    FT_Set_Default_Properties(library_);
}

FontLibrary::~FontLibrary()
{
    FT_Done_Library(library_);
}

void FontLibrary::Check() const
{
    if (hasRunOut_)
        throw std::bad_alloc();
}

void *FontLibrary::Allocate(FT_Memory memory, long size)
{
    return static_cast<FontLibrary *>(memory->user)->Seen(std::malloc(static_cast<size_t>(size)));
}

void FontLibrary::Release(FT_Memory, void *block)
{
    std::free(block);
}

void *FontLibrary::Resize(FT_Memory memory, long, long size, void *block)
{
    return static_cast<FontLibrary *>(memory->user)->Seen(std::realloc(block, static_cast<size_t>(size)));
}

void *FontLibrary::Seen(void *block)
{
    hasRunOut_ = hasRunOut_ || block == nullptr;
    return block;
}

} // namespace vxhost
