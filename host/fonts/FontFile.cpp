#include "host/fonts/FontFile.h"

#include "host/MemoryWatch.h"
#include "host/fonts/FontBlob.h"
#include "host/fonts/FontLibrary.h"
#include "host/fonts/Owned.h"

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H

#include <hb-ot.h>
#include <hb.h>

#include <new>
#include <type_traits>
#include <utility>

namespace vxhost
{

namespace
{

constexpr int kOneEm = 0x10000;

// Collects an outline from either library's callbacks.
class OutlineBuilder
{
  public:
    explicit OutlineBuilder(double unitsPerEm) : scale_(1 / unitsPerEm) {}

    void MoveTo(double x, double y)
    {
        Close();
        Add(Verb::Move, x, y);
    }
    void LineTo(double x, double y) { Add(Verb::Line, x, y); }
    void CurveTo(double x1, double y1, double x2, double y2, double x3, double y3)
    {
        Add(Verb::Curve, x1, y1);
        AddPoint(x2, y2);
        AddPoint(x3, y3);
    }
    void Close()
    {
        if (!path_.verbs.empty() && path_.verbs.back() != Verb::Close)
            path_.verbs.push_back(Verb::Close);
    }

    void Fail() { hasFailed_ = true; }

    // The outline, with its outer contours anticlockwise whatever the format's own way is.
    Path Take()
    {
        if (hasFailed_)
            throw std::bad_alloc();
        Close();
        if (SignedArea() >= 0)
            return std::move(path_);
        Path turned;
        AppendReversed(path_, {}, &turned);
        return turned;
    }

  private:
    void Add(Verb verb, double x, double y)
    {
        path_.verbs.push_back(verb);
        AddPoint(x, y);
    }
    void AddPoint(double x, double y) { path_.points.push_back({x * scale_, y * scale_}); }

    // Twice the area of the polygons of all points: control points do not change its sign in an outline of glyphs.
    double SignedArea() const
    {
        double area = 0;
        Point start, last;
        size_t at = 0;
        const auto go = [&](Point to) {
            area += last.x * to.y - to.x * last.y;
            last = to;
        };
        for (const Verb verb : path_.verbs) {
            if (verb == Verb::Move)
                start = last = path_.points[at++];
            else if (verb == Verb::Close)
                go(start);
            else
                for (int left = verb == Verb::Curve ? 3 : 1; left > 0; --left)
                    go(path_.points[at++]);
        }
        return area;
    }

    double scale_;
    bool hasFailed_ = false; // there was no memory for all of it
    Path path_;
};

// A step of the builder that a library's callback got as its data: nothing is thrown through the library.
template <typename Step>
void Build(void *data, Step &&step) noexcept
{
    auto *builder = static_cast<OutlineBuilder *>(data);
    try {
        step(*builder);
    } catch (const std::bad_alloc &) {
        builder->Fail();
    }
}

class OpenTypeFile final : public FontFile
{
  public:
    // Null for a format that HarfBuzz does not read.
    static std::unique_ptr<FontFile> Open(const SharedFontBytes &bytes, int faceIndex)
    {
        return Watched([&] { return OpenFace(bytes, faceIndex); });
    }

    uint32_t FindGlyph(char32_t character) const override
    {
        return Use([&] {
            hb_codepoint_t glyph = 0;
            return hb_font_get_nominal_glyph(font_.get(), character, &glyph) == 0 ? 0 : glyph;
        });
    }

    // A character that is set alone in a column gets its vertical form from the font's own rules.
    uint32_t FindVerticalGlyph(char32_t character) const override
    {
        const uint32_t nominal = FindGlyph(character);
        return nominal == 0 ? 0 : Use([&] { return ShapeVertical(character, nominal); });
    }

    int32_t Advance(uint32_t glyph) const override
    {
        return Use([&] { return hb_font_get_glyph_h_advance(font_.get(), glyph); });
    }

    Path Outline(uint32_t glyph) const override
    {
        return Use([&] {
            OutlineBuilder builder(kOneEm);
            hb_font_get_glyph_shape(font_.get(), glyph, draw_.get(), &builder);
            return builder.Take();
        });
    }

  private:
    // A table that HarfBuzz once had no memory for is empty from then on: the file is lost.
    template <typename Call>
    std::invoke_result_t<Call> Use(Call &&call) const
    {
        if (isLost_)
            throw std::bad_alloc();
        isLost_ = true;
        auto result = Watched(std::forward<Call>(call));
        isLost_ = false;
        return result;
    }

    static std::unique_ptr<FontFile> OpenFace(const SharedFontBytes &bytes, int faceIndex)
    {
        // The lower half of the index is the face's place in its file, the upper half counts its named variations.
        const auto index = static_cast<unsigned>(faceIndex);
        const Owned<hb_blob_t, hb_blob_destroy> blob = MakeBlob(bytes);
        const Owned<hb_face_t, hb_face_destroy> face(hb_face_create(blob.get(), index & 0xFFFFU));
        if (hb_face_get_glyph_count(face.get()) == 0)
            return nullptr;
        std::unique_ptr<OpenTypeFile> opened(new OpenTypeFile);
        opened->font_.reset(hb_font_create(face.get()));
        hb_font_set_scale(opened->font_.get(), kOneEm, kOneEm);
        if (index >> 16 != 0)
            hb_font_set_var_named_instance(opened->font_.get(), (index >> 16) - 1);
        return opened;
    }

    uint32_t ShapeVertical(char32_t character, uint32_t nominal) const
    {
        const Owned<hb_buffer_t, hb_buffer_destroy> buffer(hb_buffer_create());
        hb_buffer_add_utf32(buffer.get(), reinterpret_cast<const uint32_t *>(&character), 1, 0, 1);
        hb_buffer_set_direction(buffer.get(), HB_DIRECTION_TTB);
        hb_buffer_guess_segment_properties(buffer.get());
        hb_shape(font_.get(), buffer.get(), nullptr, 0);
        unsigned count = 0;
        const hb_glyph_info_t *glyphs = hb_buffer_get_glyph_infos(buffer.get(), &count);
        return count == 1 ? glyphs[0].codepoint : nominal;
    }

    OpenTypeFile() : draw_(hb_draw_funcs_create())
    {
        hb_draw_funcs_t *draw = draw_.get();
        hb_draw_funcs_set_move_to_func(
            draw,
            [](hb_draw_funcs_t *, void *to, hb_draw_state_t *, float x, float y, void *) {
                Build(to, [&](OutlineBuilder &b) { b.MoveTo(x, y); });
            },
            nullptr, nullptr);
        hb_draw_funcs_set_line_to_func(
            draw,
            [](hb_draw_funcs_t *, void *to, hb_draw_state_t *, float x, float y, void *) {
                Build(to, [&](OutlineBuilder &b) { b.LineTo(x, y); });
            },
            nullptr, nullptr);
        // HarfBuzz turns quadratic curves into cubic ones where nobody asks for them.
        hb_draw_funcs_set_cubic_to_func(
            draw,
            [](hb_draw_funcs_t *, void *to, hb_draw_state_t *, float x1, float y1, float x2, float y2,
               float x3, float y3,
               void *) { Build(to, [&](OutlineBuilder &b) { b.CurveTo(x1, y1, x2, y2, x3, y3); }); },
            nullptr, nullptr);
        hb_draw_funcs_set_close_path_func(
            draw,
            [](hb_draw_funcs_t *, void *to, hb_draw_state_t *, void *) {
                Build(to, [](OutlineBuilder &b) { b.Close(); });
            },
            nullptr, nullptr);
    }

    Owned<hb_font_t, hb_font_destroy> font_;
    Owned<hb_draw_funcs_t, hb_draw_funcs_destroy> draw_;
    mutable bool isLost_ = false;
};

double Number(FT_Pos units)
{
    return static_cast<double>(units);
}

class Type1File final : public FontFile
{
  public:
    static std::unique_ptr<FontFile> Open(const SharedFontBytes &bytes, int faceIndex)
    {
        std::unique_ptr<Type1File> opened(new Type1File);
        FT_Face face = nullptr;
        const FT_Error error = opened->library_.OpenFace(bytes, faceIndex, &face);
        opened->face_.reset(face);
        opened->library_.Check();
        if (error != 0)
            return nullptr;
        // FreeType does not know the glyph names of some fonts: those keep the order of their own encoding.
        if (FT_Get_Char_Index(face, 'A') == 0)
            (void)FT_Select_Charmap(face, FT_ENCODING_ADOBE_CUSTOM); // without one the face stays as it is
        return face->units_per_EM == 0 || !FT_IS_SCALABLE(face) ? nullptr : std::move(opened);
    }

    uint32_t FindGlyph(char32_t character) const override
    {
        return FT_Get_Char_Index(face_.get(), character);
    }
    uint32_t FindVerticalGlyph(char32_t character) const override { return FindGlyph(character); }

    int32_t Advance(uint32_t glyph) const override
    {
        if (!Load(glyph))
            return 0;
        const int64_t em = face_->units_per_EM;
        return static_cast<int32_t>((int64_t{face_->glyph->metrics.horiAdvance} * kOneEm + em / 2) / em);
    }

    Path Outline(uint32_t glyph) const override
    {
        OutlineBuilder builder(face_->units_per_EM);
        FT_Outline_Funcs draw = {};
        draw.move_to = [](const FT_Vector *to, void *data) {
            Build(data, [&](OutlineBuilder &b) { b.MoveTo(Number(to->x), Number(to->y)); });
            return 0;
        };
        draw.line_to = [](const FT_Vector *to, void *data) {
            Build(data, [&](OutlineBuilder &b) { b.LineTo(Number(to->x), Number(to->y)); });
            return 0;
        };
        // Type 1 outlines have no quadratic curves; the procedure must be there.
        draw.conic_to = [](const FT_Vector *, const FT_Vector *to, void *data) {
            Build(data, [&](OutlineBuilder &b) { b.LineTo(Number(to->x), Number(to->y)); });
            return 0;
        };
        draw.cubic_to = [](const FT_Vector *c1, const FT_Vector *c2, const FT_Vector *to, void *data) {
            Build(data, [&](OutlineBuilder &b) {
                b.CurveTo(Number(c1->x), Number(c1->y), Number(c2->x), Number(c2->y), Number(to->x),
                          Number(to->y));
            });
            return 0;
        };
        if (Load(glyph) && face_->glyph->format == FT_GLYPH_FORMAT_OUTLINE)
            (void)FT_Outline_Decompose(&face_->glyph->outline, &draw, &builder); // ours never fail
        return builder.Take();
    }

  private:
    Type1File() = default;

    bool Load(uint32_t glyph) const
    {
        const FT_Error error = FT_Load_Glyph(face_.get(), glyph, FT_LOAD_NO_SCALE);
        library_.Check();
        return error == 0;
    }

    FontLibrary library_;
    Owned<FT_FaceRec_, FT_Done_Face> face_; // released before its library
};

} // namespace

std::unique_ptr<FontFile> FontFile::Open(const SharedFontBytes &bytes, int faceIndex)
{
    if (bytes == nullptr)
        return nullptr;
    std::unique_ptr<FontFile> opened = OpenTypeFile::Open(bytes, faceIndex);
    return opened != nullptr ? std::move(opened) : Type1File::Open(bytes, faceIndex);
}

} // namespace vxhost
