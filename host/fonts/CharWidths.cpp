#include "host/fonts/CharWidths.h"

#include "host/fonts/FontNames.h"
#include "host/fonts/MacRoman.h"

#include <ft2build.h>
#include FT_FREETYPE_H

#include <hb-ot.h>
#include <hb.h>

#include <memory>

namespace vxhost
{

namespace
{

constexpr int kOneEm = 0x10000;
constexpr uint8_t kFirstVisible = 0x20;
constexpr uint8_t kDelete = 0x7F;

template <auto kRelease>
struct Releaser {
    template <typename Object>
    void operator()(Object *object) const
    {
        kRelease(object);
    }
};
template <typename Object, auto kRelease>
using Owned = std::unique_ptr<Object, Releaser<kRelease>>;

template <typename WidthOf>
CharWidths FillWidths(WidthOf &&widthOf)
{
    CharWidths widths = {};
    for (size_t byte = kFirstVisible; byte < widths.size(); ++byte) {
        if (byte != kDelete)
            widths[byte] = widthOf(FromMacRoman(static_cast<uint8_t>(byte)));
    }
    return widths;
}

// False for a format that HarfBuzz does not read.
bool ReadOpenType(const std::string &file, int faceIndex, CharWidths *widths)
{
    // The lower half of the index is the face's place in its file, the upper half counts its named variations.
    const auto index = static_cast<unsigned>(faceIndex);
    const Owned<hb_blob_t, hb_blob_destroy> blob(hb_blob_create_from_file_or_fail(file.c_str()));
    if (blob == nullptr)
        return false;
    const Owned<hb_face_t, hb_face_destroy> face(hb_face_create(blob.get(), index & 0xFFFFU));
    if (hb_face_get_glyph_count(face.get()) == 0)
        return false;
    const Owned<hb_font_t, hb_font_destroy> font(hb_font_create(face.get()));
    hb_font_set_scale(font.get(), kOneEm, kOneEm);
    if (index >> 16 != 0)
        hb_font_set_var_named_instance(font.get(), (index >> 16) - 1);
    *widths = FillWidths([&](char32_t character) {
        hb_codepoint_t glyph = 0;
        if (hb_font_get_nominal_glyph(font.get(), character, &glyph) == 0)
            glyph = 0;
        return hb_font_get_glyph_h_advance(font.get(), glyph);
    });
    return true;
}

// Type 1.
bool ReadWithFreeType(const std::string &file, int faceIndex, CharWidths *widths)
{
    FT_Library library = nullptr;
    if (FT_Init_FreeType(&library) != 0)
        return false;
    const Owned<FT_LibraryRec_, FT_Done_FreeType> ownedLibrary(library);
    FT_Face face = nullptr;
    if (FT_New_Face(library, file.c_str(), faceIndex, &face) != 0)
        return false;
    const Owned<FT_FaceRec_, FT_Done_Face> ownedFace(face);
    if (face->units_per_EM == 0)
        return false;
    *widths = FillWidths([&](char32_t character) {
        if (FT_Load_Glyph(face, FT_Get_Char_Index(face, character), FT_LOAD_NO_SCALE) != 0)
            return 0;
        const int64_t em = face->units_per_EM;
        return static_cast<int32_t>((int64_t{face->glyph->metrics.horiAdvance} * kOneEm + em / 2) / em);
    });
    return true;
}

} // namespace

CharWidths ReadCharWidths(const std::string &file, int faceIndex)
{
    CharWidths widths;
    if (!ReadOpenType(file, faceIndex, &widths) && !ReadWithFreeType(file, faceIndex, &widths))
        widths.fill(kBoxFontWidth);
    return widths;
}

} // namespace vxhost
