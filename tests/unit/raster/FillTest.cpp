// Which samples a fill covers. A pixel of 16 samples, n of them black, has the level (16 - n) / 16 of 255.
#include "tests/unit/raster/PixelTable.h"

namespace vxhost
{
namespace
{

const PixelCase kFills[] = {
    {"WholePixelsAreBlack", "0 0 8 8 re f", 7, 7, "0 0 0"},
    {"NothingOutside", "1 0 2 8 re f", 2, 0, "255 255 255"},
    {"HalfAPixelIsEightSamples", "1 0 2.5 8 re f", 2, 0, "128 128 128"},
    {"AQuarterIsFourSamples", "0 0 0.25 8 re f", 0, 0, "191 191 191"},
    // The first centre is at 0.125: a shape that ends there does not have it, one that begins there does.
    {"ACentreOnTheRightEdgeIsOutside", "0 0 0.125 8 re f", 0, 0, "255 255 255"},
    {"ACentreJustInsideIsInside", "0 0 0.126 8 re f", 0, 0, "191 191 191"},
    {"ACentreOnTheLeftEdgeIsInside", "0.125 0 1 8 re f", 0, 0, "0 0 0"},
    {"ACentreOnTheLowerEdgeIsOutside", "0 7.875 8 8 re f", 0, 0, "255 255 255"},
    {"ACentreOnTheUpperEdgeIsInside", "0 7 8 7.875 re f", 0, 0, "0 0 0"},
    // On a diagonal: 6 centres on one side, 4 upon it, which belong to the shape on their right.
    {"DiagonalLeft", "0 0 m 8 0 l 0 8 l h f", 3, 3, "159 159 159"},
    {"DiagonalRight", "8 0 m 8 8 l 0 8 l h f", 3, 3, "96 96 96"},
    {"OpenPathsAreClosed", "0 0 m 8 0 l 8 8 l 0 8 l f", 0, 0, "0 0 0"},
    {"EachSubpathIsClosed", "0 0 m 2 0 l 2 8 l 4 0 m 6 0 l 6 8 l f", 3, 0, "255 255 255"},
    {"TheSameWayTwiceIsFull", "0 0 8 8 re 2 2 6 6 re f", 4, 4, "0 0 0"},
    {"TheOtherWayIsAHole", "0 0 8 8 re 2 2 m 2 6 l 6 6 l 6 2 l h f", 4, 4, "255 255 255"},
    {"AHoleHasABorder", "0 0 8 8 re 2 2 m 2 6 l 6 6 l 6 2 l h f", 1, 4, "0 0 0"},
    {"CrossingItselfIsFullInBoth", "0 0 m 8 8 l 8 0 l 0 8 l h f", 6, 3, "0 0 0"},
    {"InsideACurve", "0 4 m 0 9.3 8 9.3 8 4 c h f", 4, 1, "0 0 0"},
    {"BesideACurve", "0 4 m 0 9.3 8 9.3 8 4 c h f", 0, 0, "255 255 255"},
    {"AMoveAlonePaintsNothing", "3 3 m 4 4 m f", 3, 4, "255 255 255"},
    {"NoAreaPaintsNothing", "0 4.1 m 8 4.1 l f", 3, 3, "255 255 255"},
    {"TheLaterCoversTheEarlier", "0 0 8 8 re f 1 g 0 0 8 8 re f", 3, 3, "255 255 255"},
    {"CoveringAnEdgeLeavesNothingOfIt", "0 0 2.5 8 re f 0.2 g 2 0 3 8 re f", 2, 3, "51 51 51"},
    {"HalfOverHalfCovers", "0 0 2.5 8 re f 1 0 0 0 k 2 0 2.5 8 re f", 2, 3, "128 255 255"},
};

class Fills : public testing::TestWithParam<PixelCase>
{
};

TEST_P(Fills, PaintThesePixels)
{
    const PixelCase &c = GetParam();
    EXPECT_EQ(PixelAt(Draw(c.script), c.column, c.row), c.pixel);
}
INSTANTIATE_TEST_SUITE_P(Raster, Fills, testing::ValuesIn(kFills), NameOf);

struct SampleCase {
    int samples;
    const char *script;
    const char *pixel;
};

TEST(FillSamples, DivideAPixel)
{
    const SampleCase cases[] = {
        {1, "0 0 0.5 8 re f", "255 255 255"}, // the only centre is on the right edge
        {1, "0 0 0.51 8 re f", "0 0 0"},
        {2, "0 0 0.5 8 re f", "128 128 128"},   // 2 of 4
        {8, "0 0 0.125 8 re f", "223 223 223"}, // 8 of 64
        {8, "0 0 0.125 0.125 re f", "255 255 255"},
        {8, "0 7.875 0.125 8 re f", "251 251 251"}, // 1 of 64
    };
    for (const SampleCase &c : cases) {
        RasterOptions options = PlainOptions();
        options.samples = c.samples;
        EXPECT_EQ(PixelAt(Draw(c.script, 8, 8, options), 0, 0), c.pixel) << c.samples << ": " << c.script;
    }
}

// The pictures have several bands and words of 64 pixels, and end at and beside the borders of both.
TEST(FillSizes, CoverLargePicturesWhole)
{
    for (const int size : {1, 63, 64, 65, 128, 200}) {
        const Picture picture = Draw("0 0 1000 1000 re f", size, size);
        for (const int at : {0, size / 2, size - 1}) {
            EXPECT_EQ(PixelAt(picture, at, at), "0 0 0") << size;
            EXPECT_EQ(PixelAt(picture, size - 1, at), "0 0 0") << size;
        }
    }
}

} // namespace
} // namespace vxhost
