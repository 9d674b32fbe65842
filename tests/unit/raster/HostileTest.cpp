// Paths that no sane drawing has: far away, enormous, without numbers in them, or far too many.
#include "tests/unit/raster/PixelTable.h"

#include <cmath>
#include <limits>

namespace vxhost
{
namespace
{

// The page of 8 by 8 points is drawn 50 times as large: 400 by 400 pixels.
const PixelCase kHuge[] = {
    {"ATriangleAroundThePage", "-32767 -32767 m 32767 -32767 l 0 32767 l h f", 200, 200, "0 0 0"},
    {"ADiagonalAcrossThePage", "-32767 -32767 m 32767 32767 l -32767 32767 l h f", 100, 200, "0 0 0"},
    {"TheOtherSideOfTheDiagonal", "-32767 -32767 m 32767 32767 l -32767 32767 l h f", 300, 200,
     "255 255 255"},
    {"AllOnTheLeft", "-32767 -32767 m -1 0 l -32767 32767 l h f", 0, 200, "255 255 255"},
    {"AllOnTheRight", "32767 -32767 m 9 0 l 32767 32767 l h f", 399, 200, "255 255 255"},
    {"AnEnormousCurve", "-32767 -32767 m -32767 32767 32767 32767 32767 -32767 c h f", 200, 200, "0 0 0"},
    {"AnEnormousStroke", "32767 w -32767 4 m 32767 4 l s", 200, 0, "0 0 0"},
    {"AnEnormousRoundStroke", "32767 w 1 J 1 j -32767 4 m 4 4 l 32767 32767 l s", 0, 399, "0 0 0"},
    {"AThinStrokeFromFarToFar", "1 w -32767 4 m 32767 4 l s", 10, 200, "0 0 0"},
    {"BesideAThinStrokeFromFarToFar", "1 w -32767 4 m 32767 4 l s", 10, 260, "255 255 255"},
    {"AMitreFromAfar", "2 w 32767 M -8 3.9 m 2000 4 l -8 4.1 l s", 399, 200, "0 0 0"},
    {"AnEnormousClip", "-32767 -32767 32767 32767 re W 0 0 8 8 re f", 399, 399, "0 0 0"},
    {"AnEnormousMatrix", "32767 0 0 32767 0 0 cm 32767 w 0 0 m 8 8 l s", 0, 399, "0 0 0"},
};

class Huge : public testing::TestWithParam<PixelCase>
{
};

TEST_P(Huge, PaintsThesePixels)
{
    const PixelCase &c = GetParam();
    RasterOptions options = PlainOptions();
    options.dpi = 72 * 50;
    EXPECT_EQ(PixelAt(Draw(c.script, 8, 8, options), c.column, c.row), c.pixel);
}
INSTANTIATE_TEST_SUITE_P(Raster, Huge, testing::ValuesIn(kHuge), NameOf);

// Whatever becomes of such a path, what is painted after it is right.
TEST(NotNumbers, DoNoHarm)
{
    const double infinite = std::numeric_limits<double>::infinity(), none = std::nan("");
    const double odd[] = {infinite, -infinite, none, 1e300, -1e300, 1e-300};
    for (const double x : odd) {
        for (const double y : odd) {
            Picture picture;
            std::string error;
            const auto device = MakePictureDevice(PlainOptions(), &picture, &error);
            device->BeginPage({{0, 0, 8, 8}, {}, {}});
            const Path path = {{Verb::Move, Verb::Line, Verb::Curve, Verb::Close},
                               {{0, 0}, {x, y}, {y, x}, {1, y}, {x, 8}}};
            StrokeStyle style;
            style.width = 1;
            style.matrix = {x, 0, 0, y, 0, 0};
            device->FillPath(path, {});
            device->StrokePath(path, style, {});
            style.dashes = {1, 2};
            device->StrokePath(path, style, {});
            style.matrix = {};
            device->StrokePath(path, style, {});
            device->Save();
            device->ClipPath(path);
            device->FillPath(path, {});
            device->Restore();
            Paint half;
            half.colour.ink[0] = 0.2;
            device->FillPath(
                {{Verb::Move, Verb::Line, Verb::Line, Verb::Line}, {{0, 0}, {8, 0}, {8, 8}, {0, 8}}}, half);
            EXPECT_FALSE(device->EndPage());
            EXPECT_EQ(PixelAt(picture, 4, 4), "51 51 51") << x << ' ' << y;
        }
    }
}

std::string Zigzag(int lines)
{
    std::string script = "0 0 m ";
    for (int i = 0; i < lines; ++i)
        script += i % 2 == 0 ? "8 8 l " : "0 0.5 l ";
    return script;
}

// The crossings of this path would fill gigabytes if they were kept all at once.
TEST(ManyEdges, AreSweptInTurns)
{
    RasterOptions options = PlainOptions();
    options.dpi = 72 * 20;
    const Picture picture = Draw(Zigzag(20001) + "8 0 l f", 8, 8, options);
    EXPECT_EQ(PixelAt(picture, 150, 80), "0 0 0");
    EXPECT_EQ(PixelAt(picture, 20, 20), "255 255 255");
}

TEST(ManyEdges, StopAtTheMemoryLimit)
{
    RasterOptions options = PlainOptions();
    options.memoryLimit = 64 << 10;
    Picture picture;
    EXPECT_NE(TryDraw(Zigzag(20000) + "f", {0, 0, 8, 8}, options, &picture).find("needs more memory"),
              std::string::npos);
}

TEST(ManyEdges, OfAClipStopAtTheMemoryLimit)
{
    RasterOptions options = PlainOptions();
    options.memoryLimit = 64 << 10;
    Picture picture;
    EXPECT_NE(
        TryDraw(Zigzag(20000) + "W 0 0 8 8 re f", {0, 0, 8, 8}, options, &picture).find("needs more memory"),
        std::string::npos);
}

// Strokes are painted in parts, so the same limit does not stop them.
TEST(ManyEdges, OfStrokesArePaintedInParts)
{
    RasterOptions options = PlainOptions();
    options.memoryLimit = 32 << 20;
    std::string script = "0.05 0.05 0 d 2 w ";
    for (int i = 0; i < 20000; ++i)
        script += "0 4 m 8 4 l ";
    EXPECT_EQ(PixelAt(Draw(script + "s", 8, 8, options), 4, 4), "0 0 0");
}

TEST(ManyDashes, AreNotCutOutsideOfThePage)
{
    const Picture picture = Draw("0.3 0.3 0 d 4 w -30000000 4 m 30000000 4 l s 1 w 0 0 m 0 30000000 l s");
    EXPECT_NE(PixelAt(picture, 4, 4), "255 255 255");
}

// Slivers beside each other in every pixel of 100 by 100.
std::string Slivers(const std::string &from, const std::string &to)
{
    std::string script;
    for (int i = 0; i < 100; ++i) {
        const std::string left = " " + std::to_string(i) + from, right = " " + std::to_string(i) + to;
        script += left + " 0 m" + right + " 0 l" + right + " 100 l" + left + " 100 l h f";
    }
    return script;
}

std::string DrawWithin(uint64_t limit, const std::string &script)
{
    RasterOptions options = PlainOptions();
    options.memoryLimit = limit;
    Picture picture;
    return TryDraw(script, {0, 0, 100, 100}, options, &picture);
}

// The pixels need 40 KB, the picture that is handed out as much again. A second ink takes 8 bytes of each pixel, a third
// one 64 more.
TEST(InkMemory, StopsAtTheMemoryLimit)
{
    const std::string two = "0 g" + Slivers(".3", ".6"), three = two + " 0.5 g" + Slivers(".6", ".9");
    EXPECT_NE(DrawWithin(100 << 10, two).find("needs more memory"), std::string::npos);
    EXPECT_EQ(DrawWithin(220 << 10, two), "");
    EXPECT_NE(DrawWithin(220 << 10, three).find("needs more memory"), std::string::npos);
    EXPECT_EQ(DrawWithin(1000 << 10, three), "");
}

} // namespace
} // namespace vxhost
