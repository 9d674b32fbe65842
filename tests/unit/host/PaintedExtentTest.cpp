// Tests the box of what is painted, each derived by hand: a pen of width 2 reaches 1 to either side.
#include "host/drawing/PaintedExtent.h"

#include "tests/support/CaseName.h"

#include <gtest/gtest.h>

#include <cmath>
#include <optional>

namespace vxhost
{
namespace
{

const double kHalfRoot = std::sqrt(0.5);

const Path kLine = {{Verb::Move, Verb::Line}, {{10, 10}, {100, 10}}};
const Path kSquare = {{Verb::Move, Verb::Line, Verb::Line, Verb::Line, Verb::Close},
                      {{0, 0}, {10, 0}, {10, 10}, {0, 10}}};
// The line comes back at 45 degrees: the tip of its miter is 1 + √2 beside the corner and 1 below it, 2.61 times half the width away.
const Path kHook = {{Verb::Move, Verb::Line, Verb::Line}, {{0, 0}, {10, 0}, {0, 10}}};
// The curve rises to 4 · 3 · (1/2)² · 1 = 3, and begins and ends upright.
const Path kArch = {{Verb::Move, Verb::Curve}, {{0, 0}, {0, 4}, {6, 4}, {6, 0}}};
const Path kDot = {{Verb::Move, Verb::Line}, {{5, 5}, {5, 5}}};

StrokeStyle Pen(double width, LineCap cap = LineCap::Butt, LineJoin join = LineJoin::Miter, double limit = 10)
{
    StrokeStyle style;
    style.width = width;
    style.cap = cap;
    style.join = join;
    style.miterLimit = limit;
    return style;
}

StrokeStyle Stretched(StrokeStyle style, const Matrix &matrix)
{
    style.matrix = matrix;
    return style;
}

struct ExtentCase {
    const char *name;
    void (*draw)(Device &device);
    std::optional<Box> found;
};

const ExtentCase kCases[] = {
    {"NothingIsNowhere", [](Device &) {}, {}},
    {"AFillIsItsPoints", [](Device &d) { d.FillPath(kSquare, {}); }, Box{0, 0, 10, 10}},
    {"ACurveReachesAsFarAsItRuns", [](Device &d) { d.FillPath(kArch, {}); }, Box{0, 0, 6, 3}},
    {"AFillWithoutAreaPaintsNothing", [](Device &d) { d.FillPath(kLine, {}); }, {}},
    {"AFlatEndStopsAtTheEnd", [](Device &d) { d.StrokePath(kLine, Pen(4), {}); }, Box{10, 8, 100, 12}},
    {"ASquareEndGoesOn", [](Device &d) { d.StrokePath(kLine, Pen(4, LineCap::Square), {}); },
     Box{8, 8, 102, 12}},
    {"ARoundEndGoesOn", [](Device &d) { d.StrokePath(kLine, Pen(4, LineCap::Round), {}); },
     Box{8, 8, 102, 12}},
    {"AHairlineIsItsPoints", [](Device &d) { d.StrokePath(kLine, Pen(0), {}); }, Box{10, 10, 100, 10}},
    {"ACornerHasATip", [](Device &d) { d.StrokePath(kHook, Pen(2), {}); },
     Box{-kHalfRoot, -1, 11 + 2 * kHalfRoot, 10 + kHalfRoot}},
    {"ATipBeyondTheLimitIsCutOff",
     [](Device &d) { d.StrokePath(kHook, Pen(2, LineCap::Butt, LineJoin::Miter, 2.6), {}); },
     Box{-kHalfRoot, -1, 10 + kHalfRoot, 10 + kHalfRoot}},
    {"ARoundCornerIsADisc",
     [](Device &d) { d.StrokePath(kHook, Pen(2, LineCap::Butt, LineJoin::Round), {}); },
     Box{-kHalfRoot, -1, 11, 10 + kHalfRoot}},
    {"ABevelledCornerIsFlat",
     [](Device &d) { d.StrokePath(kHook, Pen(2, LineCap::Butt, LineJoin::Bevel), {}); },
     Box{-kHalfRoot, -1, 10 + kHalfRoot, 10 + kHalfRoot}},
    {"AClosedLineHasCornersAllAround", [](Device &d) { d.StrokePath(kSquare, Pen(2), {}); },
     Box{-1, -1, 11, 11}},
    {"ACurveIsAsWideAsItsPen", [](Device &d) { d.StrokePath(kArch, Pen(2), {}); }, Box{-1, 0, 7, 4}},
    {"APenMayBeAnEllipse",
     [](Device &d) {
         d.StrokePath(kArch, Stretched(Pen(2), {3, 0, 0, 2, 50, 50}), {});
     },
     Box{-3, 0, 9, 5}},
    {"APenMayBeFlat",
     [](Device &d) {
         d.StrokePath(kLine, Stretched(Pen(2), {3, 0, 0, 0, 0, 0}), {});
     },
     Box{7, 10, 103, 10}},
    {"ARoundDotIsPainted", [](Device &d) { d.StrokePath(kDot, Pen(6, LineCap::Round), {}); },
     Box{2, 2, 8, 8}},
    {"AFlatDotIsNot", [](Device &d) { d.StrokePath(kDot, Pen(6), {}); }, {}},
    {"AllShapesCount",
     [](Device &d) {
         d.FillPath(kSquare, {});
         d.StrokePath(kLine, Pen(4), {});
     },
     Box{0, 0, 100, 12}},
    {"AClipCutsUntilItIsRestored",
     [](Device &d) {
         d.Save();
         d.ClipPath(kSquare);
         d.StrokePath(kLine, Pen(4), {}); // touches its corner
         d.FillPath(kArch, {});
         d.Restore();
         d.StrokePath(kDot, Pen(6, LineCap::Round), {});
     },
     Box{0, 0, 8, 8}},
    {"AnEmptyClipHidesAll",
     [](Device &d) {
         d.ClipPath({});
         d.FillPath(kSquare, {});
     },
     {}},
    {"ALinearShadingIsItsSquare",
     [](Device &d) {
         Shading shading;
         shading.matrix = {10, 0, 0, 5, 3, 4};
         d.Shade(shading);
     },
     Box{3, 4, 13, 9}},
    {"ARadialShadingIsBothItsDiscs",
     [](Device &d) {
         Shading shading;
         shading.kind = ShadingKind::Radial;
         shading.first = {{0, 0}, 2};
         shading.last = {{10, 0}, 1};
         d.Shade(shading);
     },
     Box{-2, -2, 11, 2}},
};

class PaintedExtentTest : public testing::TestWithParam<ExtentCase>
{
};

TEST_P(PaintedExtentTest, IsWhatIsPainted)
{
    PaintedExtent extent;
    extent.BeginPage({});
    GetParam().draw(extent);
    ASSERT_EQ(extent.Found().has_value(), GetParam().found.has_value());
    const Box found = extent.Found().value_or(Box()), wanted = GetParam().found.value_or(Box());
    EXPECT_NEAR(found.left, wanted.left, 1e-9);
    EXPECT_NEAR(found.bottom, wanted.bottom, 1e-9);
    EXPECT_NEAR(found.right, wanted.right, 1e-9);
    EXPECT_NEAR(found.top, wanted.top, 1e-9);
}

INSTANTIATE_TEST_SUITE_P(Shapes, PaintedExtentTest, testing::ValuesIn(kCases), vxtest::CaseName());

} // namespace
} // namespace vxhost
