// Shapes that share an edge share out the samples along it: nothing shows through, and nothing is painted
// twice.
#include "tests/unit/raster/Canvas.h"

#include <cmath>
#include <gtest/gtest.h>

namespace vxhost
{
namespace
{

struct Corner {
    double x, y;
};

std::string Text(Corner p)
{
    return std::to_string(p.x) + ' ' + std::to_string(p.y) + ' ';
}

// A fan of triangles around a point, which covers the whole page, each wedge in the paint that precedes it.
std::string Fan(int wedges, double turn, const std::string &even, const std::string &odd, bool backwards)
{
    const Corner centre = {15.3, 14.7};
    const auto rim = [&](int i) {
        const double angle = turn + 2 * M_PI * i / wedges;
        return Corner{centre.x + 60 * std::cos(angle), centre.y + 60 * std::sin(angle)};
    };
    std::string script;
    for (int k = 0; k < wedges; ++k) {
        const int i = backwards ? wedges - 1 - k : k;
        script += i % 2 == 0 ? even : odd;
        // Every other triangle goes round the other way, so that shared edges are walked in both directions.
        const Corner first = rim(i % 2 == 0 ? i : i + 1), second = rim(i % 2 == 0 ? i + 1 : i);
        script += Text(centre) + "m " + Text(first) + "l " + Text(second) + "l h f ";
    }
    return script;
}

class Seams : public testing::TestWithParam<double>
{
  protected:
    static RasterOptions Zoomed()
    {
        RasterOptions options = PlainOptions();
        options.dpi = 72 * GetParam();
        return options;
    }
};

TEST_P(Seams, LetNothingThrough)
{
    for (int step = 0; step < 12; ++step) {
        const Picture picture = Draw(Fan(22, step * 0.1, "0 g ", "0 g ", false), 30, 30, Zoomed());
        EXPECT_EQ(Sketch(picture).find_first_not_of("#\n"), std::string::npos) << step;
    }
}

TEST_P(Seams, AreTheSameInAnyOrder)
{
    for (int step = 0; step < 12; ++step) {
        const Picture forth = Draw(Fan(22, step * 0.1, "1 0 0 0 k ", "0 0 1 0 k ", false), 30, 30, Zoomed());
        const Picture back = Draw(Fan(22, step * 0.1, "1 0 0 0 k ", "0 0 1 0 k ", true), 30, 30, Zoomed());
        EXPECT_EQ(forth.rgba, back.rgba) << step;
    }
}

// The same curve, as the right border of one shape and, walked backwards, as the left border of the next.
TEST_P(Seams, AlongCurvesLetNothingThrough)
{
    const Picture picture = Draw("0 0 m 9.7 0 l 31.3 11.1 -7.7 17.9 13.3 30 c 0 30 l h f "
                                 "30 0 m 30 30 l 13.3 30 l -7.7 17.9 31.3 11.1 9.7 0 c h f",
                                 30, 30, Zoomed());
    EXPECT_EQ(Sketch(picture).find_first_not_of("#\n"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Raster, Seams, testing::Values(0.31, 1.0, 1.7, 4.03),
                         [](const auto &test) { return "Zoom" + std::to_string(test.index); });

} // namespace
} // namespace vxhost
