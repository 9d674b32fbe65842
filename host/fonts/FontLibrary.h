// FreeType with an allocator of our own: a module that it cannot load for want of memory is left out in silence, and then
// every font seems to be of a kind that cannot be read.
#pragma once

#include "host/ReservedMemory.h"
#include "host/fonts/FontBytes.h"

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_SYSTEM_H

namespace vxhost
{

class FontLibrary
{
  public:
    FontLibrary(); // throws std::bad_alloc
    ~FontLibrary();
    FontLibrary(const FontLibrary &) = delete;
    FontLibrary &operator=(const FontLibrary &) = delete;

    FT_Library Get() const { return library_; }
    // The bytes stay as long as this object.
    FT_Error OpenFace(const SharedFontBytes &bytes, int faceIndex, FT_Face *face);
    void Check() const { memory_.Check(); } // after calls, before their result is judged

  private:
    ReservedMemory memory_;
    FT_MemoryRec_ procedures_;
    FT_Library library_ = nullptr;
    SharedFontBytes bytes_;
};

} // namespace vxhost
