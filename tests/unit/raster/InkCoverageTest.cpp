// How much ink plates take, worked out by hand: a level is a part of 255.
#include "devices/raster/InkCoverage.h"

#include <gtest/gtest.h>

namespace vxhost
{
namespace
{

// A sheet of 4 by 2 pixels that shows 8 by 4 points.
PlateSheet SmallSheet()
{
    PlateSheet sheet;
    sheet.width = 4;
    sheet.height = 2;
    sheet.box = {10, 20, 18, 24};
    return sheet;
}

// Measures two plates, then a third.
void MeasureThree(CoverageMeter *meter)
{
    const uint8_t cyan[2][4] = {{255, 0, 0, 0}, {255, 255, 0, 51}};
    const uint8_t magenta[2][4] = {{0, 0, 0, 0}, {0, 255, 0, 0}};
    const uint8_t gold[2][4] = {{0, 0, 0, 0}, {0, 51, 0, 255}};
    const std::string inks[] = {"Cyan", "Magenta"}, more[] = {"Gold"};
    ASSERT_FALSE(meter->Begin(SmallSheet(), inks));
    for (size_t y = 0; y < 2; ++y) {
        const uint8_t *const rows[] = {cyan[y], magenta[y]};
        ASSERT_FALSE(meter->TakeRow(rows));
    }
    ASSERT_FALSE(meter->End());
    ASSERT_FALSE(meter->Begin(SmallSheet(), more));
    for (const auto &row : gold) {
        const uint8_t *const rows[] = {row};
        ASSERT_FALSE(meter->TakeRow(rows));
    }
    ASSERT_FALSE(meter->End());
}

TEST(InkCoverage, IsTheMeanOfEachInkAndOfAll)
{
    CoverageMeter meter(2);
    MeasureThree(&meter);
    const InkCoverage coverage = meter.Measure();
    ASSERT_EQ(coverage.inks.size(), 3U);
    EXPECT_EQ(coverage.inks[2].name, "Gold");
    EXPECT_DOUBLE_EQ(coverage.inks[0].mean, 3.2 / 8);
    EXPECT_DOUBLE_EQ(coverage.inks[1].mean, 1.0 / 8);
    EXPECT_DOUBLE_EQ(coverage.inks[2].mean, 1.2 / 8);
    EXPECT_DOUBLE_EQ(coverage.mean, 5.4 / 8);
}

TEST(InkCoverage, IsMostWhereAllInksAddUp)
{
    CoverageMeter meter(2);
    MeasureThree(&meter);
    const InkCoverage coverage = meter.Measure();
    EXPECT_DOUBLE_EQ(coverage.most, 2.2);
    // The second pixel of the second row, of two points a side: its centre.
    ASSERT_TRUE(coverage.mostAt);
    EXPECT_DOUBLE_EQ(coverage.mostAt->x, 13);
    EXPECT_DOUBLE_EQ(coverage.mostAt->y, 21);
}

TEST(InkCoverage, IsAboveALimitThatItPasses)
{
    const struct {
        double limit, share;
    } cases[] = {{1, 2.0 / 8}, {1.2, 1.0 / 8}, {2.2, 0}, {0.5, 4.0 / 8}};
    for (const auto &c : cases) {
        CoverageMeter meter(c.limit);
        MeasureThree(&meter);
        EXPECT_DOUBLE_EQ(meter.Measure().above, c.share) << c.limit;
        EXPECT_DOUBLE_EQ(meter.Measure().aboveArea, c.share * 8 * 4) << c.limit;
    }
}

TEST(InkCoverage, OfNoInkIsNowhere)
{
    CoverageMeter meter(3);
    const std::string inks[] = {"Cyan"};
    const uint8_t none[4] = {0, 0, 0, 0};
    const uint8_t *const rows[] = {none};
    ASSERT_FALSE(meter.Begin(SmallSheet(), inks));
    ASSERT_FALSE(meter.TakeRow(rows));
    ASSERT_FALSE(meter.TakeRow(rows));
    EXPECT_FALSE(meter.Measure().mostAt);
    EXPECT_EQ(meter.Measure().most, 0);
}

TEST(InkCoverage, HasABound)
{
    CoverageMeter meter(3);
    const std::vector<std::string> inks(257, "Gold");
    const Failure failure = meter.Begin(SmallSheet(), inks);
    EXPECT_EQ(failure.text, "it has more spot inks than can be measured");
}

} // namespace
} // namespace vxhost
