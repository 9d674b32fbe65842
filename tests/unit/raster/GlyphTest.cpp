// Glyphs that come again are painted from what was kept of them. The picture is the one in which each is made anew, bit for
// bit, and but for the rounding of places the one of the same outlines as paths.
#include "tests/unit/raster/Canvas.h"

#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <tuple>

namespace vxhost
{
namespace
{

constexpr double kSide = 150; // of the page in points, and of the picture in pixels
constexpr uint64_t kRoom = uint64_t{8} << 20;
constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

class Random
{
  public:
    int Below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }
    double Between(double from, double to)
    {
        return from + (to - from) * static_cast<double>(random_()) / 4294967296.0;
    }

  private:
    std::mt19937 random_;
};

// Letters of a sort: curved bowls with holes, bars with right angles, contours that overlap or run the other way.
Path MakeOutline(Random *random)
{
    Path path;
    const auto point = [&](double x, double y) { path.points.push_back({x, y}); };
    for (int contours = 1 + random->Below(3); contours > 0; --contours) {
        const double left = random->Between(-0.1, 0.5), bottom = random->Between(-0.2, 0.4);
        const double right = left + random->Between(0.02, 0.6), top = bottom + random->Between(0.02, 0.6);
        path.verbs.push_back(Verb::Move);
        point(left, bottom);
        if (random->Below(2) == 0) {
            path.verbs.insert(path.verbs.end(), {Verb::Line, Verb::Line, Verb::Line, Verb::Close});
            const bool turned = random->Below(3) == 0;
            point(turned ? left : right, turned ? top : bottom);
            point(right, top);
            point(turned ? right : left, turned ? bottom : top);
            continue;
        }
        for (int curves = 2 + random->Below(4); curves > 0; --curves) {
            path.verbs.push_back(Verb::Curve);
            for (int i = 0; i < 3; ++i)
                point(random->Between(left, right), random->Between(bottom, top));
        }
        if (random->Below(4) != 0) // an open one is closed all the same
            path.verbs.push_back(Verb::Close);
    }
    return path;
}

Matrix TimesAngle(double size, double angle)
{
    return {size * std::cos(angle),
            size * std::sin(angle),
            -size * std::sin(angle),
            size * std::cos(angle),
            0,
            0};
}

struct GlyphCall {
    size_t outline;
    Point origin;
};

struct Line {
    Matrix matrix;
    Paint paint;
    std::string clip; // a script
    std::vector<GlyphCall> glyphs;
};

struct Page {
    std::vector<Path> outlines;
    std::vector<Line> lines;
};

constexpr const char *kClips[] = {"", "20 10 131.3 120.6 re W", "75 5 m 140 75 l 75 140 l 10 75 l h W",
                                  "q 10 10 m 10 200 140 200 140 10 c h W 0 0 75 150 re W",
                                  "-5 -5 0.5 0.5 re W"};

std::vector<Matrix> Matrices()
{
    return {
        {12, 0, 0, 12, 0, 0},    {9.3, 0, 0, 9.3, 0, 0},
        {30, 0, 0, 47.9, 0, 0},  {-14, 0, 0, 14, 0, 0}, // mirrored
        {0, 12, -12, 0, 0, 0},                          // turned by a right angle
        TimesAngle(17, 0.3),                            // and by another
        TimesAngle(40, 2.1),     {12, 3, 5, 8, 0, 0},   // slanted
        {10, 5, 4, 2, 0, 0},                            // without an area
        {0.01, 0, 0, 0.01, 0, 0}                        // hardly there
    };
}

Page MakePage(int seed, bool overprints)
{
    Random random;
    for (int i = 0; i < seed; ++i)
        random.Below(2);
    Page page;
    for (int i = 0; i < 12; ++i)
        page.outlines.push_back(MakeOutline(&random));
    const std::vector<Matrix> matrices = Matrices();
    for (int i = 0; i < 60; ++i) {
        Line line;
        line.matrix = matrices[static_cast<size_t>(random.Below(static_cast<int>(matrices.size())))];
        line.clip = kClips[random.Below(3) == 0 ? random.Below(std::size(kClips)) : 0];
        const double level = random.Below(3) * 0.5;
        if (random.Below(2) == 0)
            line.paint.colour = {ColourSpace::Gray, {level, 0, 0, 0}};
        else
            line.paint.colour = {ColourSpace::Cmyk, {level, random.Below(2) * 0.7, 0, random.Below(2) * 0.9}};
        line.paint.overprint = overprints && random.Below(2) == 0;
        // Every other line stands where many do, so that places come again.
        const bool isEven = i % 2 == 0;
        Point at = {random.Between(-10, 120), random.Between(-10, 150)};
        if (isEven)
            at = {std::floor(at.x), std::floor(at.y)};
        for (int glyphs = 30; glyphs > 0; --glyphs) {
            line.glyphs.push_back({static_cast<size_t>(random.Below(12)), at});
            const double advance = isEven ? random.Below(9) / 16.0 : random.Between(0, 0.6);
            at.x += line.matrix.a * advance;
            at.y += line.matrix.b * advance;
        }
        page.lines.push_back(line);
    }
    return page;
}

enum class Way { Glyphs, Paths };

std::string DrawPage(const Page &page, const RasterOptions &options, Way way, Picture *picture)
{
    std::string error;
    const auto device = MakePictureDevice(options, picture, &error);
    device->BeginPage({{0, 0, kSide, kSide}, {}, {}});
    for (const Line &line : page.lines) {
        device->Save();
        DrawScript(line.clip, device.get());
        const bool isByGlyph = way == Way::Glyphs && device->PaintsGlyphs(line.matrix);
        if (isByGlyph)
            device->BeginGlyphs(line.matrix, line.paint);
        for (const GlyphCall &glyph : line.glyphs) {
            const Path &outline = page.outlines[glyph.outline];
            if (isByGlyph) {
                device->FillGlyph(outline, glyph.outline + 1, glyph.origin);
                continue;
            }
            Matrix matrix = line.matrix;
            matrix.tx = glyph.origin.x;
            matrix.ty = glyph.origin.y;
            Path path;
            AppendOutline(outline, matrix, &path);
            device->FillPath(path, line.paint);
        }
        device->Restore();
    }
    return device->EndPage().text;
}

Picture DrawPage(const Page &page, const RasterOptions &options, Way way)
{
    Picture picture;
    EXPECT_EQ(DrawPage(page, options, way, &picture), "");
    return picture;
}

RasterOptions WithRoom(uint64_t room, RasterOptions options = PlainOptions())
{
    options.glyphMemory = room;
    return options;
}

// The pixels that differ, and the most by which one does.
std::pair<int, int> Differences(const Picture &one, const Picture &other)
{
    int pixels = 0, most = 0;
    for (size_t i = 0; i < one.rgba.size(); i += 4) {
        int difference = 0;
        for (size_t k = i; k < i + 4; ++k)
            difference = std::max(difference, std::abs(one.rgba[k] - other.rgba[k]));
        pixels += difference > 0 ? 1 : 0;
        most = std::max(most, difference);
    }
    return {pixels, most};
}

using Kind = std::tuple<int, bool, bool>; // samples a side, tracked, overprints

class Glyphs : public testing::TestWithParam<Kind>
{
  protected:
    static RasterOptions Options()
    {
        RasterOptions options = PlainOptions();
        options.samples = std::get<0>(GetParam());
        if (std::get<1>(GetParam()))
            options.background.reset();
        return options;
    }
    static Page MakePage(int seed) { return vxhost::MakePage(seed, std::get<2>(GetParam())); }
};

TEST_P(Glyphs, ThatAreKeptAreThoseThatAreMadeAnew)
{
    for (const int seed : {0, 1, 2, 3}) {
        const Page page = MakePage(seed);
        const Picture plain = DrawPage(page, WithRoom(0, Options()), Way::Glyphs);
        for (const uint64_t room : {uint64_t{1}, uint64_t{20000}, kRoom}) // forgotten each time, often, never
            EXPECT_EQ(plain.rgba, DrawPage(page, WithRoom(room, Options()), Way::Glyphs).rgba)
                << room << ", " << seed;
    }
}

TEST_P(Glyphs, ArePaintedWherePathsAre)
{
    const Page page = MakePage(4);
    const Picture glyphs = DrawPage(page, WithRoom(kRoom, Options()), Way::Glyphs);
    const Picture paths = DrawPage(page, Options(), Way::Paths);
    EXPECT_GT(Differences(glyphs, DrawPage({}, Options(), Way::Paths)).first, 5000); // of 22,500
    EXPECT_LE(Differences(glyphs, paths).first, 2);
}

std::string NameOfKind(const testing::TestParamInfo<Kind> &info)
{
    std::string name = "Samples";
    name.append(std::to_string(std::get<0>(info.param))).append(std::get<1>(info.param) ? "Tracked" : "");
    return name.append(std::get<2>(info.param) ? "Overprinting" : "");
}

INSTANTIATE_TEST_SUITE_P(All, Glyphs,
                         testing::Combine(testing::Values(1, 2, 4, 8), testing::Bool(), testing::Bool()),
                         NameOfKind);

// Each of these is painted three times, so that it is kept where it can be.
struct HostileCase {
    const char *name;
    Matrix matrix;
    std::vector<Point> points; // of the outline's lines
    Point origin;
};

std::string NameOfCase(const testing::TestParamInfo<HostileCase> &info)
{
    return info.param.name;
}

class HostileGlyphs : public testing::TestWithParam<HostileCase>
{
};

TEST_P(HostileGlyphs, ArePaintedAlike)
{
    const HostileCase &hostile = GetParam();
    Path outline;
    for (const Point point : hostile.points) {
        outline.verbs.push_back(outline.verbs.empty() ? Verb::Move : Verb::Line);
        outline.points.push_back(point);
    }
    const GlyphCall glyph = {0, hostile.origin};
    const Page page = {{outline}, {{hostile.matrix, {}, "", {glyph, glyph, glyph}}}};
    for (const int samples : {1, 4, 8}) {
        RasterOptions options = PlainOptions();
        options.samples = samples;
        const Picture plain = DrawPage(page, WithRoom(0, options), Way::Glyphs);
        EXPECT_EQ(plain.rgba, DrawPage(page, WithRoom(kRoom, options), Way::Glyphs).rgba);
        EXPECT_EQ(plain.rgba, DrawPage(page, options, Way::Paths).rgba);
    }
}

const std::vector<Point> kTriangle = {{0, 0}, {1, 0}, {0, 1}};
constexpr double kEndless = std::numeric_limits<double>::infinity();

INSTANTIATE_TEST_SUITE_P(
    All, HostileGlyphs,
    testing::Values(HostileCase{"Zero", {0, 0, 0, 0, 0, 0}, kTriangle, {50, 50}},
                    HostileCase{"Tiny", {1e-300, 0, 0, 1e-300, 0, 0}, kTriangle, {50, 50}},
                    HostileCase{"Huge", {1e30, 0, 0, 1e30, 0, 0}, kTriangle, {50, 50}},
                    HostileCase{"TooLargeToKeep", {100, 0, 0, 100, 0, 0}, kTriangle, {20, 20}},
                    HostileCase{"NoMatrix", {kNone, 0, 0, 12, 0, 0}, kTriangle, {50, 50}},
                    HostileCase{"EndlessMatrix", {kEndless, 0, 0, 12, 0, 0}, kTriangle, {50, 50}},
                    HostileCase{"NoPoint", {12, 0, 0, 12, 0, 0}, {{0, 0}, {kNone, 1}, {1, 0}}, {50, 50}},
                    HostileCase{"ReachesFar", {12, 0, 0, 12, 0, 0}, {{0, 0}, {1e6, 1}, {0, 2}}, {50, 50}},
                    HostileCase{
                        "ComesFromFar", {12, 0, 0, 12, 0, 0}, {{-1e6, 0}, {-1e6, 9}, {3, 2}}, {50, 50}},
                    HostileCase{"Lone", {12, 0, 0, 12, 0, 0}, {{0.5, 0.5}}, {50, 50}},
                    HostileCase{"Empty", {12, 0, 0, 12, 0, 0}, {}, {50, 50}},
                    HostileCase{"FarAway", {12, 0, 0, 12, 0, 0}, kTriangle, {1e15, -1e300}},
                    HostileCase{"JustOutside", {12, 0, 0, 12, 0, 0}, kTriangle, {kSide, kSide}},
                    HostileCase{"AcrossTheCorner", {12, 0, 0, 12, 0, 0}, kTriangle, {-4, -5}},
                    HostileCase{"Nowhere", {12, 0, 0, 12, 0, 0}, kTriangle, {kNone, 50}},
                    HostileCase{"Endless", {12, 0, 0, 12, 0, 0}, kTriangle, {50, -kEndless}}),
    NameOfCase);

TEST(GlyphRows, ThatCrossTooManyEdgesArePaintedAsPaths)
{
    // 2 · 4000 edges in each of some 190 rows.
    Path comb;
    for (int i = 0; i < 4000; ++i) {
        comb.verbs.insert(comb.verbs.end(), {Verb::Move, Verb::Line, Verb::Line, Verb::Close});
        const double x = i / 4000.0;
        comb.points.insert(comb.points.end(), {{x, 0}, {x + 0.0001, 0}, {x, 1}});
    }
    const Page page = {{comb}, {{{47, 0, 0, 47, 0, 0}, {}, "", {{0, {50, 50}}, {0, {50.3, 50}}}}}};
    const Picture plain = DrawPage(page, PlainOptions(), Way::Paths);
    EXPECT_EQ(plain.rgba, DrawPage(page, WithRoom(kRoom), Way::Glyphs).rgba);
    EXPECT_EQ(plain.rgba, DrawPage(page, WithRoom(0), Way::Glyphs).rgba);
}

TEST(GlyphInks, ThatKeepAllOthersPaintNothing)
{
    RasterOptions options = PlainOptions();
    options.background.reset();
    Paint none;
    none.colour = {ColourSpace::Cmyk, {0, 0, 0, 0}};
    none.overprint = true;
    const Page page = {{{{Verb::Move, Verb::Line, Verb::Line}, kTriangle}},
                       {{{40, 0, 0, 40, 0, 0}, none, "", {{0, {50, 50}}}}}};
    for (const uint64_t room : {uint64_t{0}, kRoom})
        EXPECT_EQ(PixelAt(DrawPage(page, WithRoom(room, options), Way::Glyphs), 60, 90), "0 0 0 0");
    options.overprint = false;
    EXPECT_EQ(PixelAt(DrawPage(page, options, Way::Glyphs), 60, 90), "255 255 255");
}

// A new page may have other outlines by the same numbers.
TEST(GlyphPages, ForgetTheOnesBefore)
{
    std::string error;
    Picture picture;
    const auto device = MakePictureDevice(WithRoom(kRoom), &picture, &error);
    Random random;
    const Path first = MakeOutline(&random), second = MakeOutline(&random);
    const Matrix matrix = {40, 0, 0, 40, 0, 0};
    for (const Path *outline : {&first, &second}) {
        device->BeginPage({{0, 0, kSide, kSide}, {}, {}});
        device->BeginGlyphs(matrix, {});
        for (int i = 0; i < 3; ++i)
            device->FillGlyph(*outline, 1, {50, 50});
        EXPECT_FALSE(device->EndPage());
        const Page page = {{*outline}, {{matrix, {}, "", {{0, {50, 50}}}}}};
        EXPECT_EQ(picture.rgba, DrawPage(page, WithRoom(0), Way::Glyphs).rgba);
    }
}

// What is kept takes no memory from what is painted: with any limit there is the same picture, or none.
TEST(GlyphMemory, IsWhatThePictureHasToSpare)
{
    const Page page = MakePage(5, true);
    int pictures = 0, failures = 0;
    for (uint64_t limit = 100'000; limit < 600'000; limit += 9'000) {
        RasterOptions options = PlainOptions();
        options.memoryLimit = limit;
        Picture kept, plain;
        const std::string said = DrawPage(page, WithRoom(kRoom, options), Way::Glyphs, &kept);
        EXPECT_EQ(said, DrawPage(page, WithRoom(0, options), Way::Glyphs, &plain)) << limit;
        EXPECT_EQ(kept.rgba, plain.rgba) << limit;
        ++(said.empty() ? pictures : failures);
    }
    EXPECT_GT(pictures, 0);
    EXPECT_GT(failures, 0);
}

} // namespace
} // namespace vxhost
