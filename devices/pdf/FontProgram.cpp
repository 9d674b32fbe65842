// FreeType measures the fonts of all kinds; HarfBuzz cuts the subsets.
#include "devices/pdf/FontProgram.h"

#include "devices/pdf/Type1Parts.h"
#include "host/MemoryWatch.h"
#include "host/fonts/EmbeddingRights.h"
#include "host/fonts/FontBlob.h"
#include "host/fonts/FontLibrary.h"
#include "host/fonts/FontSubset.h"
#include "host/fonts/Owned.h"

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_ADVANCES_H
#include FT_CID_H
#include FT_TRUETYPE_TABLES_H
#include FT_TYPE1_TABLES_H

#include <hb-ot.h>
#include <hb-subset.h>

#include <array>

namespace vxhost::pdf
{

namespace
{

constexpr size_t kMaxType1Bytes = size_t{16} << 20;
constexpr uint32_t kMaxGlyphs = 65536; // a string names each by two bytes
constexpr double kUnits = 1000;        // of an em

// How wide the stems of a font of that weight are; only Type 1 fonts say it themselves.
constexpr double kRegularStem = 80, kBoldStem = 140;

using Face = Owned<FT_FaceRec_, FT_Done_Face>;
using HbBlob = Owned<hb_blob_t, hb_blob_destroy>;
using HbFace = Owned<hb_face_t, hb_face_destroy>;
using HbInput = Owned<hb_subset_input_t, hb_subset_input_destroy>;

// What both kinds of font file have in common.
class MeasuredFont : public FontProgram
{
  public:
    uint32_t GlyphCount() const override { return static_cast<uint32_t>(face_->num_glyphs); }

    double Width(uint32_t glyph) const override
    {
        FT_Fixed advance = 0;
        const FT_Error error = FT_Get_Advance(face_.get(), glyph, FT_LOAD_NO_SCALE, &advance);
        library_.Check();
        return error == 0 ? InThousandths(advance) : 0;
    }

    FontMeasures Measures() const override
    {
        FontMeasures measures;
        const FT_BBox &box = face_->bbox;
        measures.left = InThousandths(box.xMin);
        measures.bottom = InThousandths(box.yMin);
        measures.right = InThousandths(box.xMax);
        measures.top = InThousandths(box.yMax);
        measures.ascent = InThousandths(face_->ascender);
        measures.descent = InThousandths(face_->descender);
        measures.capHeight = measures.ascent;
        measures.stem = (face_->style_flags & FT_STYLE_FLAG_BOLD) != 0 ? kBoldStem : kRegularStem;
        measures.isFixedPitch = FT_IS_FIXED_WIDTH(face_.get());
        const auto *os2 = static_cast<const TT_OS2 *>(FT_Get_Sfnt_Table(face_.get(), FT_SFNT_OS2));
        if (os2 != nullptr && os2->version != 0xFFFF && os2->version >= 2 && os2->sCapHeight > 0)
            measures.capHeight = InThousandths(os2->sCapHeight);
        const auto *post = static_cast<const TT_Postscript *>(FT_Get_Sfnt_Table(face_.get(), FT_SFNT_POST));
        if (post != nullptr)
            measures.italicAngle = static_cast<double>(post->italicAngle) / 65536;
        PS_FontInfoRec info;
        if (post == nullptr && FT_Get_PS_Font_Info(face_.get(), &info) == 0)
            measures.italicAngle = static_cast<double>(info.italic_angle) / 65536;
        PS_PrivateRec hints;
        if (FT_Get_PS_Font_Private(face_.get(), &hints) == 0 && hints.standard_width[0] > 0)
            measures.stem = InThousandths(hints.standard_width[0]);
        return measures;
    }

  protected:
    bool OpenFace(const TextFont &font)
    {
        FT_Face face = nullptr;
        const FT_Error error = library_.OpenFace(font.bytes, font.faceIndex & 0xFFFF, &face);
        face_.reset(face);
        library_.Check();
        if (error != 0)
            return false;
        return FT_IS_SCALABLE(face) && face->units_per_EM > 0 && face->num_glyphs > 0 &&
               GlyphCount() <= kMaxGlyphs && AllowsEmbedding(FT_Get_FSType_Flags(face));
    }

    double InThousandths(FT_Pos units) const
    {
        return static_cast<double>(units) * kUnits / face_->units_per_EM;
    }

    FontLibrary library_;
    Face face_; // released before its library
};

class OpenTypeProgram final : public MeasuredFont
{
  public:
    // Null for what is no such font, and for one with variations: an instance of it would be a font of its own.
    static std::unique_ptr<FontProgram> Open(const TextFont &font)
    {
        const HbBlob file = MakeBlob(font.bytes);
        std::unique_ptr<OpenTypeProgram> opened(new OpenTypeProgram);
        opened->source_.reset(hb_face_create(file.get(), static_cast<unsigned>(font.faceIndex) & 0xFFFFU));
        if (hb_face_get_glyph_count(opened->source_.get()) == 0 || opened->Has(HB_TAG('f', 'v', 'a', 'r')))
            return nullptr;
        const bool isTrueType = opened->Has(kOutlines), isCff = opened->Has(kCompact);
        if (isTrueType == isCff || !opened->OpenFace(font))
            return nullptr;
        opened->FindKind(isTrueType);
        return opened;
    }

    FontKind Kind() const override { return kind_; }

    uint32_t CodeOf(uint32_t glyph) const override
    {
        FT_UInt code = 0;
        if (kind_ != FontKind::CidCff)
            return glyph;
        return FT_Get_CID_From_Glyph_Index(face_.get(), glyph, &code) == 0 ? code : 0;
    }

    CharacterCollection Collection() const override
    {
        const char *registry = nullptr, *ordering = nullptr;
        FT_Int supplement = 0;
        if (kind_ != FontKind::CidCff ||
            FT_Get_CID_Registry_Ordering_Supplement(face_.get(), &registry, &ordering, &supplement) != 0 ||
            registry == nullptr || ordering == nullptr)
            return {};
        return {registry, ordering, supplement};
    }

    EmbeddedProgram Embed(const std::vector<bool> &used) const override
    {
        return Watched([&] { return Cut(used); });
    }

  private:
    // Glyphs keep their indices, since strings name them by those. The glyph that says "missing" keeps its picture.
    EmbeddedProgram Cut(const std::vector<bool> &used) const
    {
        const HbInput input(hb_subset_input_create_or_fail());
        if (input == nullptr)
            return {};
        hb_subset_input_set_flags(input.get(), HB_SUBSET_FLAGS_RETAIN_GIDS | HB_SUBSET_FLAGS_NOTDEF_OUTLINE);
        hb_set_t *glyphs = hb_subset_input_glyph_set(input.get());
        for (size_t i = 0; i < used.size(); ++i) {
            if (used[i])
                hb_set_add(glyphs, static_cast<hb_codepoint_t>(i));
        }
        hb_set_t *dropped = hb_subset_input_set(input.get(), HB_SUBSET_SETS_DROP_TABLE_TAG);
        for (const hb_tag_t table : kNotForPrint)
            hb_set_add(dropped, table);
        const HbFace subset = CutFont(source_.get(), input.get());
        if (subset == nullptr)
            return {};
        const HbBlob blob(kind_ == FontKind::TrueType ? hb_face_reference_blob(subset.get())
                                                      : hb_face_reference_table(subset.get(), kCompact));
        unsigned length = 0;
        const char *bytes = hb_blob_get_data(blob.get(), &length);
        EmbeddedProgram program;
        if (bytes != nullptr)
            program.bytes.assign(bytes, length);
        return program;
    }

    static constexpr hb_tag_t kOutlines = HB_TAG('g', 'l', 'y', 'f');
    static constexpr hb_tag_t kCompact = HB_TAG('C', 'F', 'F', ' ');
    // The tables that map characters to glyphs, or name these: strings name glyphs directly.
    static constexpr std::array kNotForPrint = {
        HB_TAG('G', 'S', 'U', 'B'), HB_TAG('G', 'P', 'O', 'S'), HB_TAG('G', 'D', 'E', 'F'),
        HB_TAG('B', 'A', 'S', 'E'), HB_TAG('J', 'S', 'T', 'F'), HB_TAG('M', 'A', 'T', 'H'),
        HB_TAG('c', 'm', 'a', 'p'), HB_TAG('n', 'a', 'm', 'e'), HB_TAG('p', 'o', 's', 't'),
        HB_TAG('O', 'S', '/', '2'), HB_TAG('k', 'e', 'r', 'n'), HB_TAG('g', 'a', 's', 'p'),
        HB_TAG('D', 'S', 'I', 'G'), HB_TAG('V', 'O', 'R', 'G'), HB_TAG('v', 'h', 'e', 'a'),
        HB_TAG('v', 'm', 't', 'x'), HB_TAG('h', 'd', 'm', 'x'), HB_TAG('V', 'D', 'M', 'X'),
        HB_TAG('L', 'T', 'S', 'H'), HB_TAG('C', 'O', 'L', 'R'), HB_TAG('C', 'P', 'A', 'L'),
        HB_TAG('S', 'V', 'G', ' '), HB_TAG('s', 'b', 'i', 'x'), HB_TAG('m', 'e', 't', 'a'),
        HB_TAG('E', 'B', 'D', 'T'), HB_TAG('E', 'B', 'L', 'C'), HB_TAG('E', 'B', 'S', 'C'),
        HB_TAG('C', 'B', 'D', 'T'), HB_TAG('C', 'B', 'L', 'C'), HB_TAG('F', 'F', 'T', 'M')};

    OpenTypeProgram() = default;

    bool Has(hb_tag_t table) const
    {
        const HbBlob blob(hb_face_reference_table(source_.get(), table));
        return hb_blob_get_length(blob.get()) > 0;
    }

    void FindKind(bool isTrueType)
    {
        FT_Bool hasNumbers = 0;
        (void)FT_Get_CID_Is_Internally_CID_Keyed(face_.get(), &hasNumbers); // fails where there are none
        kind_ = isTrueType ? FontKind::TrueType : hasNumbers != 0 ? FontKind::CidCff : FontKind::NamedCff;
    }

    HbFace source_;
    FontKind kind_ = FontKind::TrueType;
};

class Type1Program final : public MeasuredFont
{
  public:
    static std::unique_ptr<FontProgram> Open(const TextFont &font)
    {
        std::unique_ptr<Type1Program> opened(new Type1Program);
        const std::span<const std::byte> bytes = font.bytes->Get();
        if (bytes.size() > kMaxType1Bytes)
            return nullptr;
        opened->program_ = FindType1Parts({reinterpret_cast<const char *>(bytes.data()), bytes.size()});
        if (opened->program_.bytes.empty() || !opened->OpenFace(font) ||
            !FT_HAS_GLYPH_NAMES(opened->face_.get()))
            return nullptr;
        return opened;
    }

    FontKind Kind() const override { return FontKind::Type1; }

    std::string GlyphName(uint32_t glyph) const override
    {
        std::array<char, 128> name = {};
        return FT_Get_Glyph_Name(face_.get(), glyph, name.data(), name.size()) == 0 ? name.data() : "";
    }

    EmbeddedProgram Embed(const std::vector<bool> &) const override { return program_; }
    bool IsSubset() const override { return false; }

  private:
    Type1Program() = default;

    EmbeddedProgram program_;
};

} // namespace

std::unique_ptr<FontProgram> FontProgram::Open(const TextFont &font)
{
    if (font.faceIndex < 0 || font.bytes == nullptr)
        return nullptr;
    std::unique_ptr<FontProgram> opened = Watched([&] { return OpenTypeProgram::Open(font); });
    return opened != nullptr ? std::move(opened) : Watched([&] { return Type1Program::Open(font); });
}

} // namespace vxhost::pdf
