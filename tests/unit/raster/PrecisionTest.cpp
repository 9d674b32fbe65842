// Each budget of the table is kept, and lengths are not wider than they need be.
#include "devices/raster/Precision.h"

#include "devices/raster/Flatten.h"
#include "devices/raster/Stroker.h"
#include "tests/unit/host/BlendSteps.h"
#include "tests/unit/raster/Canvas.h"

#include <cmath>
#include <gtest/gtest.h>
#include <random>

namespace vxhost::raster
{
namespace
{

double Below(std::mt19937 *random, double limit)
{
    return limit * static_cast<double>((*random)()) / 4294967296.0;
}

double DistanceToLine(Point p, Point from, Point to)
{
    const Point along = to - from;
    const double square = Dot(along, along);
    const double t = square > 0 ? std::clamp(Dot(p - from, along) / square, 0.0, 1.0) : 0;
    return Length(p - from - along * t);
}

struct LinesOfACurve {
    std::vector<Point> points;
    void Move(Point p) { points.push_back(p); }
    void Line(Point p) { points.push_back(p); }
    void Smooth(Point p) { points.push_back(p); }
    void Leave(Point) {}
    void Arrive(Point) {}
    void Close() {}
};

TEST(Precision, OfFlatnessHoldsForCurvesOfAllSizes)
{
    std::mt19937 random;
    double farthest = 0;
    for (int i = 0; i < 300; ++i) {
        const double size = std::pow(10, Below(&random, 4));
        const auto next = [&] { return Point{Below(&random, size), Below(&random, size)}; };
        const CurvePoints curve = {next(), next(), next(), next()};
        LinesOfACurve lines;
        Flatten({{Verb::Move, Verb::Curve}, {curve.p0, curve.p1, curve.p2, curve.p3}}, {},
                {0, 0, 1 << 20, 1 << 20}, 0, lines);
        // Lines follow the curve at equal steps of its parameter.
        const auto count = static_cast<double>(lines.points.size() - 1);
        for (size_t k = 0; k + 1 < lines.points.size(); ++k) {
            for (double part = 0.125; part < 1; part += 0.125) {
                const Point at = curve.At((static_cast<double>(k) + part) / count);
                farthest = std::max(farthest, DistanceToLine(at, lines.points[k], lines.points[k + 1]));
            }
        }
    }
    EXPECT_LE(farthest, kFlatness);
    EXPECT_GT(farthest, kFlatness / 2);
}

TEST(Precision, OfThePenHoldsForDotsUpToTheLargest)
{
    std::mt19937 random;
    double farthest = 0;
    for (const double radius : {1.3, 5.0, 40.7, 1000.0, 9000.0}) {
        for (int i = 0; i < 10; ++i) {
            const Point centre = {9100 + Below(&random, 1), 9100 + Below(&random, 1)};
            StrokeStyle style;
            style.width = radius * 2;
            style.cap = LineCap::Round;
            Scanner scanner;
            scanner.Begin({0, 0, 18300, 18300}, 1 << 24);
            Stroker stroker;
            stroker.Begin(style, {}, 1, &scanner);
            stroker.StrokeDot(centre, {1, 0});
            scanner.Sweep([&](int32_t y, std::span<const Span> spans) {
                ASSERT_EQ(spans.size(), 1U);
                const auto reach = [&](int32_t column) {
                    return Length(Point{column + 0.5, y + 0.5} - centre);
                };
                // Painted samples lie inside the circle, and unpainted ones beside them are at most so far inside.
                EXPECT_LE(std::max(reach(spans[0].begin), reach(spans[0].end - 1)), radius + kPlacement);
                farthest =
                    std::max({farthest, radius - reach(spans[0].begin - 1), radius - reach(spans[0].end)});
            });
        }
    }
    EXPECT_LE(farthest, kPenFlatness + kPlacement);
    EXPECT_GT(farthest, kPenFlatness / 2);
}

TEST(Precision, OfPlacementTellsPointsApart)
{
    const auto columnOfEdge = [](double x) {
        Scanner scanner;
        scanner.Begin({0, 0, 20, 1}, 1 << 20);
        scanner.AddEdge({x, 0}, {x, 1});
        scanner.AddEdge({20, 1}, {20, 0});
        int32_t column = -1;
        scanner.Sweep([&](int32_t, std::span<const Span> spans) { column = spans[0].begin; });
        return column;
    };
    EXPECT_EQ(columnOfEdge(10.5 - kPlacement), 10);
    EXPECT_EQ(columnOfEdge(10.5 + kPlacement * 0.49), 10);
    EXPECT_EQ(columnOfEdge(10.5 + kPlacement * 0.51), 11);
}

// The ink of a pixel is that of its centre, as near as the inks of the shading lie to each other.
TEST(Precision, OfStepsHoldsForPixelsOfAShading)
{
    for (const int width : {3, 20, 255, 3000}) {
        RasterOptions options = PlainOptions();
        options.samples = 1;
        Picture picture;
        std::string error;
        const auto device = MakePictureDevice(options, &picture, &error);
        device->BeginPage({{0, 0, static_cast<double>(width), 1}, {}, {}});
        Shading shading;
        shading.matrix = {static_cast<double>(width), 0, 0, 1, 0, 0};
        shading.spans = {{0, 1, {vxtest::Gray(0).colour, vxtest::Gray(1).colour}}};
        device->Shade(shading);
        ASSERT_FALSE(device->EndPage());
        const double inks = std::min(width * kInksPerPixel, kMaxInks);
        const double step = 255 / (inks - 1);
        for (int x = 0; x < width; ++x)
            ASSERT_NEAR(picture.rgba[static_cast<size_t>(x) * 4], 255 * (x + 0.5) / width, step / 2 + 0.51)
                << "pixel " << x << " of " << width;
    }
}

// A stroke that turns a corner at its very end turns with a line of some length alone.
TEST(Precision, OfThePenTellsPointsOfAStrokeApart)
{
    const auto rightEnd = [](double upwards) {
        StrokeStyle style;
        style.width = 8;
        Scanner scanner;
        scanner.Begin({0, 0, 40, 40}, 1 << 20);
        Stroker stroker;
        stroker.Begin(style, {}, 1, &scanner);
        const StrokePoint points[] = {{{5, 20}, false}, {{20, 20}, false}, {{20, 20 - upwards}, false}};
        stroker.StrokeOpen(points);
        int32_t end = 0;
        scanner.Sweep([&](int32_t, std::span<const Span> spans) { end = std::max(end, spans.back().end); });
        return end;
    };
    EXPECT_EQ(rightEnd(kDistinct * 0.99), 20);
    EXPECT_EQ(rightEnd(kDistinct * 1.01), 24);
}

// Spans whose inks differ by no more than kRunsOn have no edge between them.
TEST(Precision, OfStepsJoinsSpansThatNearlyMeet)
{
    const auto hasEdge = [](double levels) {
        RasterOptions options = PlainOptions();
        Picture picture;
        std::string error;
        const auto device = MakePictureDevice(options, &picture, &error);
        device->BeginPage({{0, 0, 3, 1}, {}, {}});
        Shading shading;
        shading.matrix = {3, 0, 0, 1, 0, 0};
        const Colour dark = vxtest::Gray(0.2).colour, light = vxtest::Gray(0.2 + levels / 255).colour;
        shading.spans = {{0, 0.45, {dark}}, {0.45, 1, {light}}};
        device->Shade(shading);
        EXPECT_FALSE(device->EndPage());
        // An edge shows in the pixel that it crosses, which then has some of each.
        return picture.rgba[4] != picture.rgba[0] && picture.rgba[4] != picture.rgba[8];
    };
    EXPECT_FALSE(hasEdge(kRunsOn));
    EXPECT_TRUE(hasEdge(kRunsOn + 9));
}

} // namespace
} // namespace vxhost::raster
