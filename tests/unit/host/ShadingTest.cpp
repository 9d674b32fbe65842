// A shading as flat shapes again, and which circles make one.
#include "host/drawing/Shading.h"

#include "tests/unit/host/RecordingDevice.h"

#include <gtest/gtest.h>

#include <cmath>

namespace vxhost
{
namespace
{

Colour GrayColour(double level)
{
    return {ColourSpace::Gray, {level, 0, 0, 0}};
}

std::string ShapesOf(const Shading &shading)
{
    vxtest::RecordingDevice device;
    PaintAsShapes(shading, &device);
    return device.calls;
}

TEST(Shading, PaintsAStripForEachColour)
{
    Shading shading;
    shading.matrix = {10, 0, 0, 5, 100, 200};
    shading.spans = {{0, 0.2, {GrayColour(0.1)}}, {0.2, 1, {GrayColour(0.25), GrayColour(0.5)}}};
    shading.overprint = true;
    EXPECT_EQ(ShapesOf(shading), "fill M100 200 L102 200 L102 205 L100 205 Z gray 0.1 overprint; "
                                 "fill M102 200 L106 200 L106 205 L102 205 Z gray 0.25 overprint; "
                                 "fill M106 200 L110 200 L110 205 L106 205 Z gray 0.5 overprint");
}

// Neighbours have the very same points, so no device can find a gap between them.
TEST(Shading, PaintsStripsThatShareTheirCorners)
{
    class Corners final : public Device
    {
      public:
        std::vector<Path> paths;
        void BeginPage(const Page &) override {}
        void Save() override {}
        void Restore() override {}
        void ClipPath(const Path &) override {}
        void FillPath(const Path &path, const Paint &) override { paths.push_back(path); }
        void StrokePath(const Path &, const StrokeStyle &, const Paint &) override {}
        Failure EndPage() override { return {}; }
    };
    Shading shading;
    shading.matrix = {0.1, 0.7, -0.3, 0.9, 1.0 / 3, 2.0 / 7};
    shading.spans = {{0, 1.0 / 3, std::vector<Colour>(7)}, {1.0 / 3, 1, std::vector<Colour>(31)}};
    Corners corners;
    PaintAsShapes(shading, &corners);
    ASSERT_EQ(corners.paths.size(), 38U);
    for (size_t i = 1; i < corners.paths.size(); ++i) {
        EXPECT_EQ(corners.paths[i].points[0], corners.paths[i - 1].points[1]) << i;
        EXPECT_EQ(corners.paths[i].points[3], corners.paths[i - 1].points[2]) << i;
    }
}

// The circles at 0 and at half of the way: the radius goes from 4 to 2, the centre from 0 to 2.
TEST(Shading, PaintsADiscForEachColour)
{
    Shading shading;
    shading.kind = ShadingKind::Radial;
    shading.matrix = {1, 0, 0, 1, 50, 0};
    shading.first = {{0, 0}, 4};
    shading.last = {{2, 0}, 2};
    shading.spans = {{0, 1, {GrayColour(0.25), GrayColour(0.5)}}};
    EXPECT_EQ(ShapesOf(shading), "fill M54 0 C54 2.20914 52.2091 4 50 4 C47.7909 4 46 2.20914 46 0 "
                                 "C46 -2.20914 47.7909 -4 50 -4 C52.2091 -4 54 -2.20914 54 0 Z gray 0.25; "
                                 "fill M54 0 C54 1.65685 52.6569 3 51 3 C49.3431 3 48 1.65685 48 0 "
                                 "C48 -1.65685 49.3431 -3 51 -3 C52.6569 -3 54 -1.65685 54 0 Z gray 0.5");
}

TEST(Shading, WithoutSpansPaintsNothing)
{
    EXPECT_EQ(ShapesOf({}), "");
}

// An outer circle around (3, 4) of radius 10.
TEST(Shading, CirclesAreNestedWellBeforeTheyTouch)
{
    const struct {
        Shading::Circle inner;
        bool isNested;
    } cases[] = {
        {{{3, 4}, 5}, true},
        {{{3, 4}, 0}, true},
        {{{7.8, 4}, 5}, true}, // 4.8 of the 5 at which they touch
        {{{8, 4}, 5}, false},
        {{{7.96, 4}, 5}, false}, // nearer than a hundredth
        {{{3, 13.8}, 0}, true},
        {{{3, 14}, 0}, false},
        {{{3, 4}, 10}, false},
        {{{3, 4}, 12}, false},
        {{{3, 4}, -1}, false},
        {{{20, 4}, 5}, false},
        {{{3, 4}, std::nan("")}, false},
        {{{std::nan(""), 4}, 5}, false},
    };
    for (const auto &row : cases)
        EXPECT_EQ(AreNested({{3, 4}, 10}, row.inner), row.isNested)
            << row.inner.centre.x << " " << row.inner.centre.y << " " << row.inner.radius;
}

} // namespace
} // namespace vxhost
