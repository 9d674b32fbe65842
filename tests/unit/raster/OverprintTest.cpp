// What a paint does to the inks below it. Without a profile, red is (1 - C)(1 - K), green has M and blue has
// Y.
#include "tests/unit/raster/PixelTable.h"

namespace vxhost
{
namespace
{

#define CYAN_PAGE "1 0 0 0 k 0 0 8 8 re f "

const PixelCase kOverprints[] = {
    {"MagentaJoinsCyan", CYAN_PAGE "1 o 0 1 0 0 k 0 0 8 8 re f", 0, 0, "0 0 255"},
    {"MagentaReplacesCyanWithout", CYAN_PAGE "0 1 0 0 k 0 0 8 8 re f", 0, 0, "255 0 255"},
    {"AComponentThatIsThereReplaces", CYAN_PAGE "1 o 0.2 1 0 0 k 0 0 8 8 re f", 0, 0, "204 0 255"},
    {"NoInkAtAllChangesNothing", CYAN_PAGE "1 o 0 0 0 0 k 0 0 8 8 re f", 0, 0, "0 255 255"},
    {"NoInkAtAllIsPaperWithout", CYAN_PAGE "0 0 0 0 k 0 0 8 8 re f", 0, 0, "255 255 255"},
    // Half black is 128 of 255; what it leaves of green and blue is 127.
    {"GrayTouchesBlackAlone", CYAN_PAGE "1 o 0.5 g 0 0 8 8 re f", 0, 0, "0 127 127"},
    {"GrayReplacesAllWithout", CYAN_PAGE "0.5 g 0 0 8 8 re f", 0, 0, "127 127 127"},
    {"WhiteTakesBlackAway", "1 0 0 1 k 0 0 8 8 re f 1 o 1 g 0 0 8 8 re f", 0, 0, "0 255 255"},
    // 8 samples blue, 8 cyan.
    {"AnEdgeIsMixedOfBoth", CYAN_PAGE "1 o 0 1 0 0 k 0 0 2.5 8 re f", 2, 0, "0 128 255"},
    // The right half of the pixel was already split off when magenta covers all of it.
    {"AnEdgeBelowStays", "1 0 0 0 k 0 0 2.5 8 re f 1 o 0 1 0 0 k 0 0 8 8 re f", 2, 0, "128 0 255"},
    {"StrokesOverprintToo", CYAN_PAGE "1 o 0 1 0 0 k 4 w 0 4 m 8 4 l s", 4, 4, "0 0 255"},
};

#undef CYAN_PAGE

class Overprints : public testing::TestWithParam<PixelCase>
{
};

TEST_P(Overprints, MixTheseInks)
{
    const PixelCase &c = GetParam();
    EXPECT_EQ(PixelAt(Draw(c.script), c.column, c.row), c.pixel);
}
INSTANTIATE_TEST_SUITE_P(Raster, Overprints, testing::ValuesIn(kOverprints), NameOf);

TEST(Overprint, CanBeIgnored)
{
    RasterOptions options = PlainOptions();
    options.overprint = false;
    const Picture picture =
        Draw("1 0 0 0 k 0 0 8 8 re f 1 o 0 1 0 0 k 0 0 4 8 re f 0.5 g 4 0 8 8 re f", 8, 8, options);
    EXPECT_EQ(PixelAt(picture, 1, 1), "255 0 255");
    EXPECT_EQ(PixelAt(picture, 6, 1), "127 127 127");
}

} // namespace
} // namespace vxhost
