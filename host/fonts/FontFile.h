// One face of a font file: its glyphs, their advances and outlines.
//
// HarfBuzz reads OpenType; FreeType reads Type 1 alone, which HarfBuzz does not.
#pragma once

#include "host/drawing/Path.h"
#include "host/fonts/FontBytes.h"

#include <cstdint>
#include <memory>

namespace vxhost
{

class FontFile
{
  public:
    // Null when there are no bytes or neither library can read them. faceIndex as in FontList::Entry. Here and below
    // lack of memory is thrown, wherever a library meets it: a glyph is never missing for want of it.
    static std::unique_ptr<FontFile> Open(const SharedFontBytes &bytes, int faceIndex);

    FontFile() = default;
    FontFile(const FontFile &) = delete;
    FontFile &operator=(const FontFile &) = delete;
    virtual ~FontFile() = default;

    // 0, the glyph that says "missing", when the font has none.
    virtual uint32_t FindGlyph(char32_t character) const = 0;
    // The form that stands upright in a column, where the font has one of its own.
    virtual uint32_t FindVerticalGlyph(char32_t character) const = 0;
    virtual int32_t Advance(uint32_t glyph) const = 0; // ems, 16.16
    // Returns a path in ems, y up, with outer contours anticlockwise; it is empty for a blank.
    virtual Path Outline(uint32_t glyph) const = 0;
};

} // namespace vxhost
