// Spans are those of the plain definition: a sample is inside where the edges to the left of it do not cancel out.
#include "devices/raster/Scanner.h"

#include <cmath>
#include <gtest/gtest.h>
#include <random>
#include <string>

namespace vxhost::raster
{
namespace
{

struct Side {
    Point from, to;
};

// Closed outlines of so many sides each, some of which run on a grid, so that they meet in columns and rows.
std::vector<Side> RandomOutlines(std::mt19937 *random, int outlines, int sides, double width, double height)
{
    const auto below = [&](double limit) {
        const double whole = std::floor(limit * 65536 * static_cast<double>((*random)()) / 4294967296.0);
        return (*random)() % 3 == 0 ? std::round(whole / 65536) + 0.5 : whole / 65536;
    };
    std::vector<Side> all;
    for (int i = 0; i < outlines; ++i) {
        const Point start = {below(width * 1.5) - width / 4, below(height * 1.5) - height / 4};
        Point current = start;
        for (int k = 1; k < sides; ++k) {
            const Point next = {below(width * 1.5) - width / 4, below(height * 1.5) - height / 4};
            all.push_back({current, next});
            current = next;
        }
        all.push_back({current, start});
    }
    return all;
}

int32_t FirstColumn(double x, const Bounds &bounds)
{
    return static_cast<int32_t>(std::clamp<double>(std::ceil(x - 0.5), bounds.left, bounds.right));
}

// A row of the bounds, a character a sample.
std::string PlainRow(const std::vector<Side> &sides, int32_t y, const Bounds &bounds)
{
    std::vector<int> turns(static_cast<size_t>(bounds.right - bounds.left) + 1);
    for (const Side &side : sides) {
        const bool up = side.to.y < side.from.y;
        const Point top = up ? side.to : side.from, bottom = up ? side.from : side.to;
        if (top.y > y + 0.5 || bottom.y <= y + 0.5)
            continue;
        const double x = top.x + (y + 0.5 - top.y) * ((bottom.x - top.x) / (bottom.y - top.y));
        turns[static_cast<size_t>(FirstColumn(x, bounds) - bounds.left)] += up ? -1 : 1;
    }
    std::string row;
    int winding = 0;
    for (size_t i = 0; i + 1 < turns.size(); ++i)
        row += (winding += turns[i]) != 0 ? '#' : '.';
    return row;
}

struct Outlines {
    const char *name;
    int count, sides;
    Bounds bounds;
};

const Outlines kOutlines[] = {
    {"One", 1, 3, {0, 0, 100, 60}},
    {"OneInALimit", 1, 5, {30, 20, 90, 50}},
    {"Few", 3, 6, {0, 0, 300, 40}},
    {"Several", 4, 9, {17, 3, 400, 40}},
    {"SeveralFarApart", 3, 7, {0, 0, 20000, 12}},
    {"Many", 10, 40, {0, 0, 257, 30}},
    {"MoreThanSamples", 20, 100, {5, 0, 70, 30}},
    {"ManyFarApart", 8, 30, {0, 0, 50000, 8}},
    {"InOneColumn", 9, 20, {40, 0, 41, 30}},
};

class Scans : public testing::TestWithParam<Outlines>
{
};

void PrintTo(const Outlines &outlines, std::ostream *out)
{
    *out << outlines.name;
}

TEST_P(Scans, AreThoseOfThePlainDefinition)
{
    const Outlines &c = GetParam();
    std::mt19937 random;
    Scanner scanner; // one for all, as the device has it
    for (int turn = 0; turn < 40; ++turn) {
        const std::vector<Side> sides =
            RandomOutlines(&random, c.count, c.sides, c.bounds.right, c.bounds.bottom);
        scanner.Begin(c.bounds, 1 << 24);
        for (const Side &side : sides)
            scanner.AddEdge(side.from, side.to);
        const auto width = static_cast<size_t>(c.bounds.right - c.bounds.left);
        std::vector<std::string> rows(static_cast<size_t>(c.bounds.bottom), std::string(width, '.'));
        scanner.Sweep([&](int32_t y, std::span<const Span> spans) {
            int32_t end = c.bounds.left - 1;
            for (const Span &span : spans) {
                ASSERT_GT(span.begin, end) << "spans touch";
                ASSERT_GT(span.end, span.begin);
                end = span.end;
                rows[static_cast<size_t>(y)].replace(static_cast<size_t>(span.begin - c.bounds.left),
                                                     static_cast<size_t>(span.end - span.begin),
                                                     static_cast<size_t>(span.end - span.begin), '#');
            }
            ASSERT_LE(end, c.bounds.right);
        });
        for (int32_t y = c.bounds.top; y < c.bounds.bottom; ++y)
            ASSERT_EQ(rows[static_cast<size_t>(y)], PlainRow(sides, y, c.bounds))
                << "turn " << turn << ", row " << y;
    }
}

INSTANTIATE_TEST_SUITE_P(Raster, Scans, testing::ValuesIn(kOutlines),
                         [](const auto &test) { return test.param.name; });

} // namespace
} // namespace vxhost::raster
