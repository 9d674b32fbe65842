// Shadings in pictures: no leak, no step, the colours that the parameter says, and what the flat steps would show.
#include "host/drawing/BlendFilter.h"
#include "tests/unit/host/BlendSteps.h"
#include "tests/unit/raster/Canvas.h"

#include <cmath>
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <limits>

namespace vxhost
{
namespace
{

using vxtest::Cmyk;
using vxtest::FillDiscs;
using vxtest::FillStrips;
using vxtest::Gray;

constexpr double kSide = 40;

using Drawing = std::function<void(Device *)>;

Picture DrawPage(const Drawing &draw, double zoom = 1, const Paint &page = Gray(1), double side = kSide)
{
    RasterOptions options = PlainOptions();
    options.dpi = 72 * zoom;
    Picture picture;
    std::string error;
    const auto device = MakePictureDevice(options, &picture, &error);
    device->BeginPage({{0, 0, side, side}, {}, {}});
    device->FillPath(vxtest::Strip({side, 0, 0, side, 0, 0}, 0, 1), page);
    draw(device.get());
    EXPECT_FALSE(device->EndPage());
    return picture;
}

Picture DrawShading(const Shading &shading, const Paint &page = Gray(1), double zoom = 1)
{
    return DrawPage([&](Device *to) { to->Shade(shading); }, zoom, page);
}

ColourSpan Ramp(double from, double to, const Paint &first, const Paint &last)
{
    return {from, to, {first.colour, last.colour}};
}

const std::vector<ColourSpan> kAllBlack = {Ramp(0, 1, Gray(0), Gray(0))};

Shading Axial(const Matrix &matrix, std::vector<ColourSpan> spans, bool overprint = false)
{
    return {ShadingKind::Axial, matrix, {}, {}, std::move(spans), overprint};
}

// The square about the middle of the page, turned; side long across, its axis length long.
Matrix Turned(double degrees, double length, double side, Point offset = {})
{
    const double angle = degrees * M_PI / 180, c = std::cos(angle), s = std::sin(angle);
    const Point middle = {kSide / 2 + offset.x, kSide / 2 + offset.y};
    return {c * length,
            s * length,
            -s * side,
            c * side,
            middle.x - (c * length - s * side) / 2,
            middle.y - (s * length + c * side) / 2};
}

int Level(const Picture &picture, int column, int row)
{
    return picture.rgba[4 * (static_cast<size_t>(row) * static_cast<size_t>(picture.width) +
                             static_cast<size_t>(column))];
}

// The largest difference of pixels whose centres are no farther than that from a point of the page.
int LargestDifference(const Picture &a, const Picture &b, double zoom, Point around, double distance)
{
    int largest = 0;
    for (int row = 0; row < a.height; ++row) {
        for (int column = 0; column < a.width; ++column) {
            const Point at = {(column + 0.5) / zoom, kSide - (row + 0.5) / zoom};
            if (std::hypot(at.x - around.x, at.y - around.y) > distance)
                continue;
            for (size_t i = 0; i < 3; ++i) {
                const size_t byte = 4 * (static_cast<size_t>(row) * static_cast<size_t>(a.width) +
                                         static_cast<size_t>(column)) +
                                    i;
                largest = std::max(largest, std::abs(a.rgba[byte] - b.rgba[byte]));
            }
        }
    }
    return largest;
}

class Shades : public testing::TestWithParam<double> // so many pixels a point
{
};

// Black and white under the blend give the same picture, since every sample has its colour from the blend. It has two
// caps, a ramp, and another with a jump in it, drawn in strips, so that the filter's joints are in it too.
TEST_P(Shades, LetNothingThrough)
{
    for (int step = 0; step < 24; ++step) {
        const Point offset = {step * 0.13, step * 0.07};
        const Matrix all = Turned(step * 15 + 0.4 * step, 100, 100, offset);
        const auto part = [&](double from, double to) {
            return Matrix{all.a * (to - from),   all.b * (to - from),  all.c, all.d,
                          all.tx + all.a * from, all.ty + all.b * from};
        };
        const auto draw = [&](Device *device) {
            BlendFilter filter(device);
            filter.FillPath(vxtest::Strip(part(0, 0.35), 0, 1), Gray(0));
            FillStrips(&filter, part(0.35, 0.45), 100, Gray(0), Gray(1));
            FillStrips(&filter, part(0.45, 0.6), 65, Gray(1), Gray(0.35), 20);
            filter.FillPath(vxtest::Strip(part(0.6, 1), 0, 1), Gray(0.35));
            filter.Save();
        };
        const Picture onBlack = DrawPage(draw, GetParam(), Gray(0)),
                      onWhite = DrawPage(draw, GetParam(), Gray(1));
        EXPECT_EQ(LargestDifference(onBlack, onWhite, GetParam(), {0, 0}, 1000), 0) << step;
    }
}

TEST_P(Shades, OfDiscsLetNothingThrough)
{
    for (int step = 0; step < 12; ++step) {
        const Point centre = {20 + step * 0.13, 20 - step * 0.07};
        const auto draw = [&](Device *device) {
            BlendFilter filter(device);
            const Matrix m = {15, step * 0.5, -step * 0.5, 15, centre.x, centre.y};
            FillDiscs(&filter, m, 64, 0.5, Gray(0.36), 1, Gray(1), {step - 6.0, 3});
            FillDiscs(&filter, m, 64, 0, Gray(1), 0.5, Gray(0.36), {step - 6.0, 3});
            filter.Save();
        };
        const Picture onBlack = DrawPage(draw, GetParam(), Gray(0)),
                      onWhite = DrawPage(draw, GetParam(), Gray(1));
        // The distance is the radius less a pixel's diagonal.
        EXPECT_EQ(LargestDifference(onBlack, onWhite, GetParam(), centre, 15 - 1.5 / GetParam()), 0) << step;
    }
}

// Black to white across 36 of the page's points: the level of a pixel is its centre's place, times 255.
TEST_P(Shades, HaveTheColourOfThePlace)
{
    for (int step = 0; step < 24; ++step) {
        const Matrix m = Turned(step * 15, 36, 100, {step * 0.13, step * 0.07});
        const Picture picture = DrawShading(Axial(m, {Ramp(0, 1, Gray(0), Gray(1))}), Gray(0), GetParam());
        const double zoom = picture.width / kSide; // whole pixels
        // The error of half an ink of the table, which has two for a pixel, and the rounding of 8 bits.
        const double error = 255 / (36 * zoom) / 4 + 1;
        for (int row = 0; row < picture.height; ++row) {
            for (int column = 0; column < picture.width; ++column) {
                const Point at = {(column + 0.5) / zoom, kSide - (row + 0.5) / zoom};
                const double place = ((at.x - m.tx) * m.a + (at.y - m.ty) * m.b) / (36 * 36);
                if (place < 0 || place > 1 - 1 / (36 * zoom)) // pixels across the ends are not full
                    continue;
                ASSERT_NEAR(Level(picture, column, row), place * 255, error)
                    << step << ": " << column << ' ' << row;
            }
        }
    }
}

TEST_P(Shades, NeverStepBack)
{
    const Picture picture = DrawShading(Axial({40, 0, 0, 40, 0, 0}, {Ramp(0, 0.5, Gray(0), Gray(0.2)),
                                                                     {0.5, 0.6, {Gray(0.2).colour}},
                                                                     Ramp(0.6, 1, Gray(0.2), Gray(1))}),
                                        Gray(0), GetParam());
    for (int column = 1; column < picture.width; ++column) {
        EXPECT_GE(Level(picture, column, 3), Level(picture, column - 1, 3));
        EXPECT_EQ(Level(picture, column, 3), Level(picture, column, picture.height - 1));
    }
}

// A step of a hundred is 2.55 of 255, so that the two may be 4 apart, roundings included.
constexpr int kColourStep = 4;

// Compares a blend's steps, painted one by one, with the shading that the filter makes of them.
void ExpectLikeItsSteps(const Drawing &draw, double zoom)
{
    const Picture steps = DrawPage(draw, zoom);
    const Picture shading = DrawPage(
        [&](Device *to) {
            BlendFilter filter(to);
            draw(&filter);
            filter.Save();
        },
        zoom);
    EXPECT_NE(steps.rgba, shading.rgba);
    EXPECT_LE(LargestDifference(steps, shading, zoom, {0, 0}, 1000), kColourStep);
}

TEST_P(Shades, AgreeWithTheStrips)
{
    for (int step = 0; step < 8; ++step) {
        SCOPED_TRACE(step);
        ExpectLikeItsSteps(
            [&](Device *to) {
                FillStrips(to, Turned(step * 45 + 7, 100, 100), 100, Cmyk(0.1, 1, 0.5, 0),
                           Cmyk(0.9, 0, 0.3, 0));
            },
            GetParam());
    }
}

TEST_P(Shades, AgreeWithTheDiscs)
{
    for (int step = 0; step < 8; ++step) {
        SCOPED_TRACE(step);
        ExpectLikeItsSteps(
            [&](Device *to) {
                FillDiscs(to, {60, 0, 0, 60, 20, 20}, 100, 0, Gray(0), 1, Gray(1), {step * 7.0, step * -3.0});
            },
            GetParam());
    }
}

INSTANTIATE_TEST_SUITE_P(Raster, Shades, testing::Values(0.31, 1.0, 1.7, 4.03),
                         [](const auto &test) { return "Zoom" + std::to_string(test.index); });

TEST(Shade, GivesTheSamplesOfAnEdgeToOneSide)
{
    // The edge at 12.5 divides the samples of pixel 12.
    const Picture picture = DrawShading(
        Axial({25, 0, 0, 40, 0, 0}, {{0, 0.5, {Gray(0).colour}}, {0.5, 1, {Gray(1).colour}}}), Gray(0.5));
    EXPECT_EQ(PixelAt(picture, 11, 3), "0 0 0");
    EXPECT_EQ(PixelAt(picture, 12, 3), "128 128 128");
    EXPECT_EQ(PixelAt(picture, 13, 3), "255 255 255");
    EXPECT_EQ(PixelAt(picture, 25, 3), "127 127 127"); // beyond the shading
}

TEST(Shade, PaintsInsideTheClipAlone)
{
    const Picture picture = DrawPage([](Device *to) {
        to->ClipPath(vxtest::Strip({10, 0, 0, 10, 5, 5}, 0, 1));
        to->Shade(Axial({40, 0, 0, 40, 0, 0}, {Ramp(0, 1, Gray(0), Gray(0))}));
    });
    EXPECT_EQ(PixelAt(picture, 4, 30), "255 255 255");
    EXPECT_EQ(PixelAt(picture, 5, 30), "0 0 0");
    EXPECT_EQ(PixelAt(picture, 14, 30), "0 0 0");
    EXPECT_EQ(PixelAt(picture, 15, 30), "255 255 255");
    EXPECT_EQ(PixelAt(picture, 10, 24), "255 255 255");
}

const Path kTriangle = {{Verb::Move, Verb::Line, Verb::Line, Verb::Close},
                        {{3.3, 2.1}, {44.7, 18.2}, {11.9, 38.6}}}; // a corner beside the page
const Path kBow = {{Verb::Move, Verb::Curve, Verb::Line, Verb::Close},
                   {{5, 5}, {5, 50}, {35, 50}, {35, 5}, {20, 22.7}}};

// A clip is only made when something needs it, which must not show: with Save it is made at once.
TEST_P(Shades, AreTheSameThroughAClipThatIsMade)
{
    const Shading axial = Axial(Turned(33, 100, 100), {Ramp(0, 1, Cmyk(1, 0, 0, 0), Cmyk(0, 1, 0, 0))});
    const Shading overprinted =
        Axial(Turned(120, 90, 90), {Ramp(0, 1, Cmyk(0, 0, 0.5, 0), Cmyk(0, 0, 1, 0))}, true);
    const Shading jump =
        Axial(Turned(20, 100, 100), {{0, 0.5, {Gray(0).colour}}, {0.5, 1, {Gray(0.5).colour}}});
    const Shading strip = Axial({15, 0, 0, 40, 10, 0}, {Ramp(0, 1, Gray(0), Gray(0.7))});
    Shading disc = {ShadingKind::Radial, {30, 0, 0, 30, 20, 20}, {{0, 0}, 1}, {{0.2, 0.1}, 0.1}, {}, false};
    disc.spans = {Ramp(0, 1, Gray(0), Gray(1))};
    Shading ground = disc;
    ground.matrix = {12, 0, 0, 12, 20, 20};
    ground.ground = kBow;
    const std::vector<Shading> drawings[] = {
        {axial},        {disc},        {ground},       {jump},
        {strip},        {axial, disc}, {strip, axial}, {axial, overprinted, jump},
        {ground, strip}};
    for (const std::vector<Shading> &shadings : drawings) {
        SCOPED_TRACE(&shadings - drawings);
        const auto draw = [&](bool made) {
            return DrawPage(
                [&](Device *to) {
                    to->ClipPath(kTriangle);
                    to->Save();
                    to->ClipPath(kBow);
                    if (made) {
                        to->Save();
                        to->Restore();
                    }
                    for (const Shading &shading : shadings)
                        to->Shade(shading);
                    to->Restore();
                    to->FillPath(vxtest::Strip({3, 0, 0, 3, 19, 10}, 0, 1),
                                 Gray(0.2)); // under the triangle alone
                },
                GetParam());
        };
        const Picture due = draw(false);
        EXPECT_EQ(due.rgba, draw(true).rgba);
        EXPECT_NE(due.rgba, DrawPage([](Device *) {}, GetParam()).rgba);
    }
}

TEST(Shade, PaintsNothingThroughAClipOfNothing)
{
    for (const Path &clip : {Path{}, vxtest::Strip({10, 0, 0, 10, 50, 5}, 0, 1)}) {
        const Picture picture = DrawPage([&](Device *to) {
            to->ClipPath(clip);
            to->Shade(Axial(Turned(0, 100, 100), kAllBlack));
            to->Shade(Axial(Turned(90, 100, 100), kAllBlack));
        });
        EXPECT_EQ(picture.rgba, DrawPage([](Device *) {}).rgba);
    }
}

TEST(Shade, OverprintsInkByInk)
{
    // Magenta from 0.5 to 1 joins the cyan of the page.
    const Matrix page = {40, 0, 0, 40, 0, 0};
    const std::vector<ColourSpan> magenta = {Ramp(0, 1, Cmyk(0, 0.5, 0, 0), Cmyk(0, 1, 0, 0))};
    const Picture joined = DrawShading(Axial(page, magenta, true), Cmyk(1, 0, 0, 0));
    EXPECT_EQ(PixelAt(joined, 39, 0).substr(0, 2), "0 ");
    const Picture replaced = DrawShading(Axial(page, magenta, false), Cmyk(1, 0, 0, 0));
    EXPECT_EQ(PixelAt(replaced, 39, 0).substr(0, 4), "255 ");
    EXPECT_EQ(PixelAt(replaced, 39, 0).substr(3), PixelAt(joined, 39, 0).substr(1));
    // Gray touches black alone.
    const Picture black =
        DrawShading(Axial(page, {Ramp(0, 1, Gray(0.5), Gray(0.5))}, true), Cmyk(1, 0, 0, 0));
    EXPECT_EQ(PixelAt(black, 20, 20), "0 127 127");
}

// Where the shading has none of an ink the page keeps its own; beside that it has as little as the shading says.
TEST(Shade, LeavesAnInkThatIsNotThere)
{
    const Picture picture = DrawPage(
        [](Device *to) {
            BlendFilter filter(to);
            FillStrips(&filter, {40, 0, 0, 40, 0, 0}, 20, Cmyk(0, 0, 0.5, 0, true),
                       Cmyk(0.2, 0, 0.5, 0, true));
            filter.Save();
        },
        1, Cmyk(1, 0, 0, 0));
    // Strips are 2 points wide. Half yellow is 128 of 255.
    EXPECT_EQ(PixelAt(picture, 0, 20), "0 255 127");
    EXPECT_EQ(PixelAt(picture, 1, 20), "0 255 127");
    EXPECT_GE(Level(picture, 2, 20), 250);
    EXPECT_LE(Level(picture, 39, 20), 206); // 0.2 of cyan
}

TEST(Shade, PaintsDiscsThatAreNotNested)
{
    const Shading::Circle left = {{10, 20}, 5}, right = {{30, 20}, 5};
    const Shading shading = {
        ShadingKind::Radial, {}, left, right, {{0, 1, {Gray(0).colour, Gray(0.5).colour}}}, false};
    const Picture picture = DrawShading(shading);
    EXPECT_EQ(PixelAt(picture, 7, 20), "0 0 0");
    EXPECT_EQ(PixelAt(picture, 20, 20), "127 127 127"); // the second and last disc lies half way
    EXPECT_EQ(PixelAt(picture, 30, 20), "255 255 255");
}

struct HostileShading {
    const char *name;
    Shading shading;
    const char *pixel; // in the middle of the white page
};

const double kNan = std::numeric_limits<double>::quiet_NaN(),
             kInfinite = std::numeric_limits<double>::infinity();
const HostileShading kHostile[] = {
    {"NoSpans", Axial({40, 0, 0, 40, 0, 0}, {}), "255 255 255"},
    {"NoArea", Axial({40, 0, 40, 0, 0, 20}, kAllBlack), "255 255 255"},
    {"NothingAtAll", Axial({0, 0, 0, 0, 0, 0}, kAllBlack), "255 255 255"},
    {"Huge", Axial({1e12, 0, 0, 1e12, -5e11, -5e11}, kAllBlack), "0 0 0"},
    {"Tiny", Axial({1e-300, 0, 0, 1e-300, 20, 20}, kAllBlack), "255 255 255"},
    {"ASpanWithoutLength",
     Axial({40, 0, 0, 40, 0, 0}, {{0, 0, {Gray(0).colour, Gray(1).colour}}, Ramp(0, 1, Gray(0), Gray(0))}),
     "0 0 0"},
    {"CirclesOfOneSize", {ShadingKind::Radial, {}, {{20, 20}, 9}, {{20, 20}, 9}, kAllBlack, false}, "0 0 0"},
    {"CirclesThatGrow", {ShadingKind::Radial, {}, {{20, 20}, 1}, {{20, 20}, 9}, kAllBlack, false}, "0 0 0"},
    {"CirclesThatTouch", {ShadingKind::Radial, {}, {{20, 20}, 9}, {{15, 20}, 4}, kAllBlack, false}, "0 0 0"},
    {"CirclesWithoutSize",
     {ShadingKind::Radial, {}, {{20, 20}, 0}, {{20, 20}, 0}, kAllBlack, false},
     "255 255 255"},
};

class HostileShadings : public testing::TestWithParam<HostileShading>
{
};

TEST_P(HostileShadings, AreDrawn)
{
    EXPECT_EQ(PixelAt(DrawShading(GetParam().shading), 20, 20), GetParam().pixel);
}
INSTANTIATE_TEST_SUITE_P(Raster, HostileShadings, testing::ValuesIn(kHostile),
                         [](const auto &test) { return std::string(test.param.name); });

// What is no number has no place on the page: all that matters is that the page ends.
TEST(Shade, OutlivesWhatIsNoNumber)
{
    for (const double value : {kNan, kInfinite, -kInfinite}) {
        DrawShading(Axial({value, 0, 0, 40, 0, 0}, kAllBlack));
        DrawShading(Axial({40, 0, 0, 40, value, value}, kAllBlack));
        DrawShading(Axial({40, 0, 0, 40, 0, 0}, {Ramp(0, value, Gray(0), Gray(1))}));
        DrawShading({ShadingKind::Radial, {}, {{20, 20}, value}, {{20, value}, 1}, kAllBlack, false});
    }
}

} // namespace
} // namespace vxhost
