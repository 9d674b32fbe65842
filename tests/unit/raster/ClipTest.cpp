// Where a clip lets paint through.
#include "tests/unit/raster/PixelTable.h"

namespace vxhost
{
namespace
{

#define FILL  "0 0 8 8 re f"
#define DONUT "0 0 8 8 re 2 2 m 2 6 l 6 6 l 6 2 l h W "

const PixelCase kClips[] = {
    {"InsideIsPainted", "2 2 6 6 re W " FILL, 3, 3, "0 0 0"},
    {"OutsideIsNot", "2 2 6 6 re W " FILL, 1, 3, "255 255 255"},
    {"ClipsCutSamples", "0 0 2.5 8 re W " FILL, 2, 0, "128 128 128"},
    {"ShapeAndClipMayMissEachOtherInAPixel", "0 0 2.5 8 re W 2.5 0 8 8 re f", 2, 0, "255 255 255"},
    {"NestedClipsIntersect", "0 0 5 8 re W 3 0 8 8 re W " FILL, 4, 0, "0 0 0"},
    {"NestedClipsIntersectOnTheLeft", "0 0 5 8 re W 3 0 8 8 re W " FILL, 2, 0, "255 255 255"},
    {"NestedClipsIntersectOnTheRight", "0 0 5 8 re W 3 0 8 8 re W " FILL, 5, 0, "255 255 255"},
    {"DisjointClipsLeaveNothing", "0 0 2 8 re W 3 0 8 8 re W " FILL, 2, 0, "255 255 255"},
    {"AnEmptyPathClipsEverything", "n W " FILL, 3, 3, "255 255 255"},
    {"AHoleIsNotPainted", DONUT FILL, 4, 4, "255 255 255"},
    {"AroundAHoleIsPainted", DONUT FILL, 6, 4, "0 0 0"},
    {"AboveAHoleIsPainted", DONUT FILL, 4, 1, "0 0 0"},
    {"ADonutInADonutsHoleIsEmpty", DONUT "2 2 6 6 re W " FILL, 4, 4, "255 255 255"},
    {"ATriangleClips", "0 0 m 8 0 l 0 8 l h W " FILL, 3, 3, "159 159 159"},
    {"TwoTrianglesClip", "0 0 m 8 0 l 0 8 l h W 0 0 m 8 8 l 0 8 l h W " FILL, 1, 4, "0 0 0"},
    {"RestoreBringsTheClipBack", "q 2 2 6 6 re W Q " FILL, 0, 0, "0 0 0"},
    {"SaveKeepsTheClip", "2 2 6 6 re W q " FILL, 0, 0, "255 255 255"},
    {"OneRestoreForOneSave", "q 4 0 8 8 re W q q 6 0 8 8 re W Q " FILL, 5, 0, "0 0 0"},
    {"OneRestoreIsNotTwo", "q 4 0 8 8 re W q q 6 0 8 8 re W Q " FILL, 3, 0, "255 255 255"},
    {"ThreeRestoresForThreeSaves", "q 4 0 8 8 re W q q 6 0 8 8 re W Q Q Q " FILL, 3, 0, "0 0 0"},
    {"TwoClipsAtOneLevelGoTogether", "q 4 0 8 8 re W 6 0 8 8 re W Q " FILL, 3, 0, "0 0 0"},
    {"ASurplusRestoreIsIgnored", "2 2 6 6 re W Q Q " FILL, 0, 0, "255 255 255"},
    {"StrokesAreClipped", "4 0 8 8 re W 2 w 0 4 m 8 4 l s", 3, 4, "255 255 255"},
    // The same path once more, for a fill: the device knows its samples already.
    {"AClipMayBeFilled", "2 2 6 6 re W 2 2 6 6 re f", 3, 3, "0 0 0"},
    {"AFilledClipIsNoLarger", "2 2 6 6 re W 2 2 6 6 re f", 1, 3, "255 255 255"},
    {"AFilledClipCutsSamples", "0 0 2.5 8 re W 0 0 2.5 8 re f", 2, 0, "128 128 128"},
    {"AFilledClipIsAlsoInTheOneAroundIt", "0 0 5 8 re W 3 0 8 8 re W 3 0 8 8 re f", 5, 0, "255 255 255"},
    {"AClipThatIsGoneIsFilledWhole", "q 0 0 5 8 re W 3 0 8 8 re W Q 3 0 8 8 re f", 6, 0, "0 0 0"},
    {"AClipWindsNonZero", "0 0 8 8 re 2 2 6 6 re W " FILL, 4, 4, "0 0 0"},
};

#undef FILL
#undef DONUT

class Clips : public testing::TestWithParam<PixelCase>
{
};

TEST_P(Clips, LetThroughThesePixels)
{
    const PixelCase &c = GetParam();
    EXPECT_EQ(PixelAt(Draw(c.script), c.column, c.row), c.pixel);
}
INSTANTIATE_TEST_SUITE_P(Raster, Clips, testing::ValuesIn(kClips), NameOf);

TEST(ClipDepth, CostsNothingUntilTheClipChanges)
{
    std::string saves, restores;
    for (int i = 0; i < 100000; ++i) {
        saves += "q ";
        restores += "Q ";
    }
    const Picture picture =
        Draw("0 0 m 8 0 l 0 8 l h W " + saves + "0 0 2 2 re W " + restores + "0 0 8 8 re f");
    EXPECT_EQ(PixelAt(picture, 0, 3), "0 0 0");
    EXPECT_EQ(PixelAt(picture, 7, 3), "255 255 255");
}

// Each mask takes some kilobytes; the picture may have 64.
TEST(ClipDepth, StopsAtTheMemoryLimit)
{
    std::string script;
    for (int i = 0; i < 1000; ++i)
        script += "q 0 0 m 100 0 l 0 100 l h W ";
    RasterOptions options = PlainOptions();
    options.memoryLimit = 64 << 10;
    Picture picture;
    EXPECT_NE(TryDraw(script, {0, 0, 100, 100}, options, &picture).find("needs more memory"),
              std::string::npos);
}

} // namespace
} // namespace vxhost
