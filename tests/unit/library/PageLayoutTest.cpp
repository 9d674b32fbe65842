// Tests where a page is cut, and what is shown around that. A millimetre is 2.834646 points.
#include "library/PageLayout.h"

#include <gtest/gtest.h>

#include <optional>

namespace vxhost
{

namespace
{

constexpr Box kOwn = {0, 0, 100, 50};
constexpr double kMillimetre = 72 / 25.4;

PageOptions Sized(double width, double height)
{
    PageOptions options;
    options.size = PageSize{width, height};
    return options;
}

Page LaidOut(const PageOptions &options, const Box &own = kOwn)
{
    Page page;
    LayOut(options, own, &page);
    return page;
}

void ExpectBox(const Box &found, const Box &wanted)
{
    EXPECT_NEAR(found.left, wanted.left, 1e-9);
    EXPECT_NEAR(found.bottom, wanted.bottom, 1e-9);
    EXPECT_NEAR(found.right, wanted.right, 1e-9);
    EXPECT_NEAR(found.top, wanted.top, 1e-9);
}

TEST(PageLayoutTest, IsTheDrawingsOwnBoxWithoutAWord)
{
    const Page page = LaidOut({}, {100, 50, 0, 0}); // inverted
    ExpectBox(page.box, kOwn);
    EXPECT_FALSE(page.sheet.has_value());
}

TEST(PageLayoutTest, HasTheMarginAround)
{
    PageOptions options;
    options.margin = 10;
    ExpectBox(LaidOut(options).box, {-10, -10, 110, 60});
}

TEST(PageLayoutTest, HasTheDrawingInTheMiddleOfASize)
{
    const Page page = LaidOut(Sized(200, 100));
    ExpectBox(page.box, {-50, -25, 150, 75});
    EXPECT_EQ(page.tooWide, 0);
    EXPECT_EQ(page.tooHigh, 0);
}

TEST(PageLayoutTest, KeepsTheMarginOfASizeFree)
{
    PageOptions options = Sized(110, 70);
    options.margin = 10; // leaves 90 by 50
    const Page page = LaidOut(options);
    ExpectBox(page.box, {-5, -10, 105, 60});
    EXPECT_EQ(page.tooWide, 10);
    EXPECT_EQ(page.tooHigh, 0);
}

TEST(PageLayoutTest, ShowsTheBleed)
{
    PageOptions options;
    options.margin = 1;
    options.bleed = 9;
    const Page page = LaidOut(options);
    ExpectBox(page.box, {-10, -10, 110, 60});
    ASSERT_TRUE(page.sheet.has_value());
    ExpectBox(page.sheet->trim, {-1, -1, 101, 51});
    ExpectBox(page.sheet->bleed, page.box);
    EXPECT_FALSE(page.sheet->hasMarks);
}

// Marks are 5 mm long, and 3 mm away or as far as the bleed.
TEST(PageLayoutTest, HasRoomForMarks)
{
    PageOptions options;
    options.hasMarks = true;
    for (const auto &[bleed, reach] : {std::pair{0.0, 8.0}, {2.0, 8.0}, {10.0, 15.0}}) {
        options.bleed = bleed * kMillimetre;
        const Page page = LaidOut(options);
        const double far = reach * kMillimetre;
        ExpectBox(page.box, {-far, -far, 100 + far, 50 + far});
        ASSERT_TRUE(page.sheet.has_value());
        ExpectBox(page.sheet->trim, kOwn);
        EXPECT_NEAR(page.sheet->bleed.right, 100 + options.bleed, 1e-9);
    }
}

} // namespace

} // namespace vxhost
