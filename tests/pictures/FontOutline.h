// Outlines read from a font file with FreeType alone, to compare with what the host makes of the same font.
#pragma once

#include "host/drawing/Path.h"

#include <ft2build.h>
#include FT_FREETYPE_H

#include <cstdint>
#include <memory>
#include <string>

namespace vxtest
{

class FontOutlines
{
  public:
    // faceIndex 0. Fails the test when the file cannot be read.
    explicit FontOutlines(const std::string &file);

    uint32_t Find(char32_t character) const; // by the file's Unicode table; 0: none
    uint32_t FindByName(const std::string &name) const;
    // The glyph of that code in the font's own encoding, which only Type 1 fonts have; 0: none.
    uint32_t FindInOwnOrder(uint8_t code) const;
    std::string NameOf(uint32_t glyph) const;
    double Advance(uint32_t glyph) const; // ems
    // The outline in ems, by the matrix.
    vxhost::Path Outline(uint32_t glyph, const vxhost::Matrix &matrix) const;

  private:
    struct Close {
        void operator()(FT_Library library) const { FT_Done_FreeType(library); }
        void operator()(FT_Face face) const { FT_Done_Face(face); }
    };
    std::unique_ptr<FT_LibraryRec_, Close> library_;
    std::unique_ptr<FT_FaceRec_, Close> face_; // released before its library
};

} // namespace vxtest
