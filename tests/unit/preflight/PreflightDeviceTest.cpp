// Paints what no small document does, under matrices, clips and layers, and sees what is found.
#include "devices/preflight/PreflightDevice.h"

#include <gtest/gtest.h>

#include <array>

namespace vxhost
{
namespace
{

Paint Cmyk(double cyan, double black, bool overprint = false)
{
    Paint paint;
    paint.colour.space = ColourSpace::Cmyk;
    paint.colour.ink[0] = cyan;
    paint.colour.ink[3] = black;
    paint.overprint = overprint;
    return paint;
}

Path Rectangle(const Box &box)
{
    return {{Verb::Move, Verb::Line, Verb::Line, Verb::Line, Verb::Close},
            {{box.left, box.bottom}, {box.right, box.bottom}, {box.right, box.top}, {box.left, box.top}}};
}

// A page of 4 by 2 points, a pixel each. Cyan is in the third column of the first row, a spot ink in the first of the second.
class PreflightDeviceTest : public testing::Test
{
  protected:
    PreflightDeviceTest()
    {
        PlateSheet sheet;
        sheet.width = 4;
        sheet.height = 2;
        sheet.box = {100, 200, 104, 202};
        const uint8_t none[4] = {}, cyan[4] = {0, 0, 3, 2}, black[4] = {255, 255, 255, 255};
        const std::string process[] = {"Cyan", "Black"}, spots[] = {"Gold"};
        const uint8_t *const first[] = {cyan, black}, *const second[] = {none, black};
        EXPECT_FALSE(map_.Begin(sheet, process) || map_.TakeRow(first) || map_.TakeRow(second));
        const uint8_t gold[4] = {255, 0, 0, 0};
        const uint8_t *const none1[] = {none}, *const gold1[] = {gold};
        EXPECT_FALSE(map_.Begin(sheet, spots) || map_.TakeRow(none1) || map_.TakeRow(gold1));
        map_.Sum();
        Page page;
        page.box = sheet.box;
        device_.BeginPage(page);
    }

    uint64_t Count(FindingKind kind)
    {
        EXPECT_FALSE(device_.EndPage());
        return findings_.Of(kind).count;
    }

    InkMap map_;
    PreflightLimits limits_;
    Findings findings_{limits_};
    PreflightDevice device_{map_, &findings_};
};

TEST_F(PreflightDeviceTest, TheMapKnowsOtherInksThanBlack)
{
    EXPECT_FALSE(map_.HasOtherInk({100, 201, 102, 202}));
    EXPECT_TRUE(map_.HasOtherInk({100, 201, 103, 202}));
    EXPECT_FALSE(map_.HasOtherInk({100, 201, 102.4, 202}));  // up to a pixel's centre, and not on it
    EXPECT_TRUE(map_.HasOtherInk({100, 200, 100.1, 200.1})); // a pixel at least
    EXPECT_FALSE(map_.HasOtherInk({103, 201, 104, 202}));    // less than one percent
    EXPECT_TRUE(map_.HasOtherInk({-1e9, -1e9, 1e9, 1e9}));
    EXPECT_FALSE(map_.HasOtherInk({1e9, 1e9, 2e9, 2e9}));
}

TEST_F(PreflightDeviceTest, AClipHidesWhatIsBeyondIt)
{
    device_.Save();
    device_.ClipPath(Rectangle({100, 200, 102, 202}));
    device_.FillPath(Rectangle({103, 200, 104, 202}), Cmyk(0, 0, true));
    device_.FillPath(Rectangle({90, 200, 120, 202}), Cmyk(0, 1));
    EXPECT_EQ(Count(FindingKind::WhiteOverprint), 0U);
    EXPECT_EQ(Count(FindingKind::OutsidePage), 0U);
    device_.Restore();
    device_.FillPath(Rectangle({103, 200, 104, 202}), Cmyk(0, 0, true));
    device_.FillPath(Rectangle({90, 200, 120, 202}), Cmyk(0, 1));
    EXPECT_EQ(Count(FindingKind::WhiteOverprint), 1U);
    EXPECT_EQ(Count(FindingKind::OutsidePage), 1U);
    EXPECT_EQ(findings_.Of(FindingKind::OutsidePage).value, 16);
}

TEST_F(PreflightDeviceTest, WidthsAreThoseOnThePage)
{
    StrokeStyle style;
    style.width = 1;
    style.matrix = {0.2, 0, 0, 0.3, 0, 0};
    const Path level = {{Verb::Move, Verb::Line}, {{101, 201}, {103, 201}}};
    device_.StrokePath(level, style, Cmyk(0, 1)); // 0.3 high
    EXPECT_EQ(Count(FindingKind::Hairline), 0U);
    const Path upright = {{Verb::Move, Verb::Line}, {{101, 200}, {101, 202}}};
    device_.StrokePath(upright, style, Cmyk(0, 1)); // 0.2 wide
    EXPECT_EQ(Count(FindingKind::Hairline), 1U);
    EXPECT_DOUBLE_EQ(findings_.Of(FindingKind::Hairline).value.value_or(0), 0.2);
}

TEST_F(PreflightDeviceTest, AShadingIsWhiteIfAllOfItIs)
{
    Shading shading;
    shading.matrix = {2, 0, 0, 2, 101, 200};
    shading.overprint = true;
    shading.spans = {{0, 1, {Cmyk(0, 0).colour, Cmyk(0.1, 0).colour}}};
    device_.Shade(shading);
    EXPECT_EQ(Count(FindingKind::WhiteOverprint), 0U);
    shading.spans = {{0, 1, {Cmyk(0, 0).colour}}};
    device_.Shade(shading);
    EXPECT_EQ(Count(FindingKind::WhiteOverprint), 1U);
    shading.overprint = false;
    device_.Shade(shading);
    EXPECT_EQ(Count(FindingKind::WhiteOverprint), 1U);
}

TEST_F(PreflightDeviceTest, DiscsOnEachOtherAreABlend)
{
    const auto paint = [&](double shrink) {
        for (int i = 0; i < 6; ++i) {
            Path disc = {{Verb::Move, Verb::Curve, Verb::Curve, Verb::Curve, Verb::Curve, Verb::Close}, {}};
            for (int point = 0; point < 13; ++point) {
                constexpr std::array<double, 4> kX = {1, 0, -1, 0}, kY = {0, 1, 0, -1};
                const auto at = static_cast<size_t>((point + 1) / 3 % 4);
                disc.points.push_back({102 + kX[at] * (9 - i * shrink), 201 + kY[at] * (9 - i * shrink)});
            }
            device_.FillPath(disc, Cmyk(0.5 - i * 0.05, 0));
        }
    };
    paint(0.47);
    EXPECT_EQ(Count(FindingKind::GradientSteps), 0U);
    paint(0.48);
    EXPECT_EQ(Count(FindingKind::GradientSteps), 1U);
    EXPECT_NEAR(findings_.Of(FindingKind::GradientSteps).value.value_or(0), 5, 1e-9);
}

TEST_F(PreflightDeviceTest, ABlendEndsWhereInksTurnBackOrShapesChange)
{
    const auto strip = [](int i) { return Rectangle({100 + i * 0.5, 200, 100.5 + i * 0.5, 202}); };
    for (int i = 0; i < 8; ++i)
        device_.FillPath(strip(i), Cmyk(i < 4 ? 0.1 + i * 0.05 : 0.4 - i * 0.05, 0));
    EXPECT_EQ(Count(FindingKind::GradientSteps), 0U);
    for (int i = 0; i < 8; ++i)
        device_.FillPath(strip(i), Cmyk(0.1 + i * 0.05, 0, i < 4));
    EXPECT_EQ(Count(FindingKind::GradientSteps), 0U);
    for (int i = 0; i < 8; ++i)
        device_.FillPath(strip(i * 2), Cmyk(0.1 + i * 0.05, 0)); // with gaps between
    EXPECT_EQ(Count(FindingKind::GradientSteps), 0U);
    for (int i = 0; i < 8; ++i)
        device_.FillPath(strip(i), Cmyk(0.1 + i * 0.05, 0));
    EXPECT_EQ(Count(FindingKind::GradientSteps), 1U);
}

TEST_F(PreflightDeviceTest, PlacesHaveTheirInnermostLayer)
{
    Layer outer, inner;
    outer.name = "outer";
    inner.name = "inner";
    StrokeStyle style;
    style.width = 0;
    const Path level = {{Verb::Move, Verb::Line}, {{101, 201}, {103, 201}}};
    device_.BeginLayer(outer);
    device_.BeginLayer(inner);
    device_.StrokePath(level, style, Cmyk(0, 1));
    device_.EndLayer();
    device_.StrokePath(level, style, Cmyk(0, 1));
    device_.EndLayer();
    device_.StrokePath(level, style, Cmyk(0, 1));
    const Finding &finding = findings_.Of(FindingKind::ZeroWidthLine);
    ASSERT_EQ(finding.places.size(), 3U);
    EXPECT_EQ(finding.places[0].layer, "inner");
    EXPECT_EQ(finding.places[1].layer, "outer");
    EXPECT_EQ(finding.places[2].layer, "");
    EXPECT_EQ(findings_.CountObjections(), 1U);
}

} // namespace
} // namespace vxhost
