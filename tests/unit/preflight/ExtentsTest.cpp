// Holds the measure of what shapes cover to what was worked out by hand.
#include "devices/preflight/Extents.h"

#include <gtest/gtest.h>

#include <cmath>

namespace vxhost
{
namespace
{

void ExpectBox(const Box &box, const Box &expected)
{
    constexpr double kExact = 1e-9;
    EXPECT_NEAR(box.left, expected.left, kExact);
    EXPECT_NEAR(box.bottom, expected.bottom, kExact);
    EXPECT_NEAR(box.right, expected.right, kExact);
    EXPECT_NEAR(box.top, expected.top, kExact);
}

TEST(Extents, OfACurveAreWhereItTurns)
{
    // y is 3 t (1 - t) · 4, at most 3 in the middle; x goes from 0 to 8 without turning.
    ExpectBox(ExtentOf(Path{{Verb::Move, Verb::Curve}, {{0, 0}, {2, 4}, {6, 4}, {8, 0}}}), {0, 0, 8, 3});
    // x is 12 t² - 3 t - 8 t³ and turns at t = (2 ± √2) / 4; y is 3 t.
    const double root = std::sqrt(2.0);
    ExpectBox(ExtentOf(Path{{Verb::Move, Verb::Curve}, {{0, 0}, {-1, 1}, {2, 2}, {1, 3}}}),
              {(1 - root) / 2, 0, (1 + root) / 2, 3});
}

TEST(Extents, OfLinesAreThoseOfTheirEnds)
{
    ExpectBox(ExtentOf(Path{{Verb::Move, Verb::Line, Verb::Line, Verb::Close, Verb::Move},
                            {{1, 2}, {5, 3}, {4, -7}, {100, 100}}}),
              {1, -7, 5, 3});
    EXPECT_TRUE(IsEmpty(ExtentOf(Path())));
    EXPECT_TRUE(IsEmpty(ExtentOf(Path{{Verb::Move}, {{1, 1}}})));
}

TEST(Extents, OfAShadingHoldBothOfItsCircles)
{
    Shading shading;
    shading.kind = ShadingKind::Radial;
    shading.first = {{0, 0}, 1};
    shading.last = {{10, 0}, 2};
    const Box box = ExtentOf(shading);
    EXPECT_NEAR(box.left, -1, 1e-3);
    EXPECT_NEAR(box.right, 12, 1e-3);
    shading = {};
    shading.matrix = {3, 0, 0, 4, 10, 20};
    ExpectBox(ExtentOf(shading), {10, 20, 13, 24});
}

TEST(Extents, ExcessIsThatOfTheFarthestSide)
{
    const Box page = {0, 0, 10, 20};
    EXPECT_EQ(ExcessOf({1, 1, 9, 19}, page).distance, 0);
    EXPECT_EQ(ExcessOf({-1, -3, 12, 21}, page).distance, 3);
    ExpectBox(ExcessOf({-1, -3, 12, 21}, page).part, {-1, -3, 12, 0});
    ExpectBox(ExcessOf({-4, -3, 12, 21}, page).part, {-4, -3, 0, 21});
    ExpectBox(ExcessOf({5, 5, 5, 25}, page).part, {5, 20, 5, 25});
    ExpectBox(ExcessOf({5, 5, 12, 21}, page).part, {10, 5, 12, 21});
}

Path Line(Point to)
{
    return {{Verb::Move, Verb::Line}, {{0, 0}, to}};
}

TEST(ThinnestWidth, IsAcrossTheLine)
{
    StrokeStyle style;
    style.width = 2;
    style.matrix = {3, 0, 0, 0.5, 7, 7}; // an ellipse, 6 wide and 1 high
    EXPECT_DOUBLE_EQ(ThinnestWidth(Line({10, 0}), style), 1);
    EXPECT_DOUBLE_EQ(ThinnestWidth(Line({0, 10}), style), 6);
    // Across a line of 45 degrees it is √((6² + 1²) / 2).
    EXPECT_DOUBLE_EQ(ThinnestWidth(Line({5, 5}), style), std::sqrt(18.5));
    const Path closed = {{Verb::Move, Verb::Line, Verb::Line, Verb::Close}, {{0, 0}, {0, 5}, {5, 5}}};
    EXPECT_DOUBLE_EQ(ThinnestWidth(closed, style), 1);
    const Path curve = {{Verb::Move, Verb::Curve}, {{0, 0}, {0, 5}, {5, 5}, {5, 9}}};
    EXPECT_DOUBLE_EQ(ThinnestWidth(curve, style), 1);
    const Path dot = {{Verb::Move, Verb::Line}, {{3, 3}, {3, 3}}};
    EXPECT_DOUBLE_EQ(ThinnestWidth(dot, style), 1);
}

TEST(ThinnestWidth, FollowsTurnsAndMirrors)
{
    StrokeStyle style;
    style.width = 3;
    style.matrix = {0, 2, 2, 0, 0, 0}; // mirrors and doubles
    EXPECT_DOUBLE_EQ(ThinnestWidth(Line({10, 3}), style), 6);
    style.matrix = {1, 0, 1, 1, 0, 0}; // leans: the pen's sides are those of the golden section
    const PenWidths pen = WidthsOf(style);
    EXPECT_DOUBLE_EQ(pen.wide, 3 * (std::sqrt(5.0) + 1) / 2);
    EXPECT_NEAR(pen.narrow, 3 * (std::sqrt(5.0) - 1) / 2, 1e-12);
    style.width = 0;
    EXPECT_EQ(ThinnestWidth(Line({10, 0}), style), 0);
}

TEST(Letters, StandOnTheirBaseline)
{
    GlyphRun run;
    run.matrix = {0, 10, -10, 0, 0, 0}; // turned by a right angle
    ExpectBox(ExtentOf(run, {1, U'a', 0.5, {100, 200}}), {93, 200, 100, 205});
    run.isColumn = true;
    run.matrix = {10, 0, 0, 10, 0, 0};
    ExpectBox(ExtentOf(run, {1, U'a', 0.5, {100, 200}}), {100, 200, 110, 207});
}

} // namespace
} // namespace vxhost
