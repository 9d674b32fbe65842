#include "tests/pictures/FontOutline.h"

#include <gtest/gtest.h>

#include FT_OUTLINE_H

#include <array>

namespace vxtest
{

namespace
{

using vxhost::Matrix;
using vxhost::Path;
using vxhost::Point;
using vxhost::Verb;

// Collects a path from font units, by the matrix.
struct Pen {
    Matrix matrix;
    Path *path;
    Point last = {};

    static Pen &Of(void *pen) { return *static_cast<Pen *>(pen); }
    static Point At(const FT_Vector *at) { return {static_cast<double>(at->x), static_cast<double>(at->y)}; }
    void Add(Verb verb, std::initializer_list<Point> points)
    {
        path->verbs.push_back(verb);
        for (const Point &point : points)
            path->points.push_back(matrix.Map(point));
        last = *(points.end() - 1);
    }
    void Quadratic(Point control, Point to)
    {
        const auto third = [](Point from, Point toward) {
            return Point{from.x + (toward.x - from.x) * 2 / 3, from.y + (toward.y - from.y) * 2 / 3};
        };
        Add(Verb::Curve, {third(last, control), third(to, control), to});
    }
};

} // namespace

FontOutlines::FontOutlines(const std::string &file)
{
    FT_Library library = nullptr;
    EXPECT_EQ(FT_Init_FreeType(&library), 0);
    library_.reset(library);
    FT_Face face = nullptr;
    EXPECT_EQ(FT_New_Face(library, file.c_str(), 0, &face), 0) << file;
    face_.reset(face);
}

uint32_t FontOutlines::Find(char32_t character) const
{
    return FT_Select_Charmap(face_.get(), FT_ENCODING_UNICODE) == 0
               ? FT_Get_Char_Index(face_.get(), character)
               : 0;
}

uint32_t FontOutlines::FindByName(const std::string &name) const
{
    std::string text = name;
    return FT_Get_Name_Index(face_.get(), text.data());
}

uint32_t FontOutlines::FindInOwnOrder(uint8_t code) const
{
    return FT_Select_Charmap(face_.get(), FT_ENCODING_ADOBE_CUSTOM) == 0
               ? FT_Get_Char_Index(face_.get(), code)
               : 0;
}

std::string FontOutlines::NameOf(uint32_t glyph) const
{
    std::array<char, 64> name = {};
    return FT_Get_Glyph_Name(face_.get(), glyph, name.data(), static_cast<FT_UInt>(name.size())) == 0
               ? name.data()
               : "";
}

double FontOutlines::Advance(uint32_t glyph) const
{
    EXPECT_EQ(FT_Load_Glyph(face_.get(), glyph, FT_LOAD_NO_SCALE), 0);
    return static_cast<double>(face_->glyph->metrics.horiAdvance) / face_->units_per_EM;
}

Path FontOutlines::Outline(uint32_t glyph, const Matrix &matrix) const
{
    Path path;
    const double unit = 1.0 / face_->units_per_EM;
    Pen pen = {Product({unit, 0, 0, unit, 0, 0}, matrix), &path};
    FT_Outline_Funcs draw = {};
    draw.move_to = [](const FT_Vector *to, void *data) {
        Pen::Of(data).Add(Verb::Move, {Pen::At(to)});
        return 0;
    };
    draw.line_to = [](const FT_Vector *to, void *data) {
        Pen::Of(data).Add(Verb::Line, {Pen::At(to)});
        return 0;
    };
    draw.conic_to = [](const FT_Vector *control, const FT_Vector *to, void *data) {
        Pen::Of(data).Quadratic(Pen::At(control), Pen::At(to));
        return 0;
    };
    draw.cubic_to = [](const FT_Vector *c1, const FT_Vector *c2, const FT_Vector *to, void *data) {
        Pen::Of(data).Add(Verb::Curve, {Pen::At(c1), Pen::At(c2), Pen::At(to)});
        return 0;
    };
    EXPECT_EQ(FT_Load_Glyph(face_.get(), glyph, FT_LOAD_NO_SCALE), 0);
    EXPECT_EQ(FT_Outline_Decompose(&face_->glyph->outline, &draw, &pen), 0);
    return path;
}

} // namespace vxtest
