// FreeType with an allocator of its own, which knows when memory ran out: a module that cannot be loaded for want of it is
// left out in silence, and then every font seems to be of a kind that cannot be read.
#pragma once

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_SYSTEM_H

namespace vxhost
{

class FontLibrary
{
  public:
    FontLibrary(); // throws std::bad_alloc, as Check does
    ~FontLibrary();
    FontLibrary(const FontLibrary &) = delete;
    FontLibrary &operator=(const FontLibrary &) = delete;

    FT_Library Get() const { return library_; }
    // Whether there was memory for everything until now. The library is of no more use if not.
    void Check() const;

  private:
    static void *Allocate(FT_Memory memory, long size);
    static void Release(FT_Memory memory, void *block);
    static void *Resize(FT_Memory memory, long present, long size, void *block);
    void *Seen(void *block);

    bool hasRunOut_ = false;
    FT_MemoryRec_ memory_;
    FT_Library library_ = nullptr;
};

} // namespace vxhost
