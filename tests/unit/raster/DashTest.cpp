// Where dashes begin and end. A picture is sketched by its row 3 alone: the line lies between rows 3 and 4.
#include "tests/unit/raster/Canvas.h"

#include <gtest/gtest.h>
#include <ostream>

namespace vxhost
{
namespace
{

struct DashCase {
    const char *name, *script, *row;
};
void PrintTo(const DashCase &c, std::ostream *out)
{
    *out << c.script;
}

#define LINE " 2 w 0 4 m 8 4 l s"

const DashCase kDashes[] = {
    {"OnAndOff", "1 1 0 d" LINE, "#.#.#.#."},
    {"ThePhaseComesFirst", "1 1 1 d" LINE, ".#.#.#.#"},
    {"ANegativePhaseGoesBack", "1 1 -1 d" LINE, ".#.#.#.#"},
    {"APhaseOfManyPeriods", "1 1 2001 d" LINE, ".#.#.#.#"},
    {"HalfAPhase", "2 2 0.5 d" LINE, "#+.+#+.+"},
    {"OneLengthIsBoth", "3 0 d" LINE, "###...##"},
    {"AnOddCountChangesPlaces", "2 1 1 0 d" LINE, "##.#..#."},
    {"APhaseIntoTheSecondRound", "2 1 1 4 d" LINE, "..#.##.#"},
    {"NothingOffIsSolid", "2 0 0 d" LINE, "########"},
    {"TooFineIsSolid", "0.001 0.001 0 d" LINE, "########"},
    {"NoLengthIsNothingWithButtCaps", "0 2 0 d" LINE, "........"},
    {"NoLengthIsASquareWithSquareCaps", "2 J 0 4 2 d" LINE, ".##..##."},
    // The next dash would begin where the line ends.
    {"SquareCapsLengthen", "2 J 1 5 4 d" LINE, ".###...."},
    {"LengthsAreInTheUsersSpace", "2 0 0 2 0 0 cm 1 1 0 d 1 w 0 4 m 8 4 l s", "##..##.."},
    {"LengthsFollowTheDirection", "2 0 0 1 0 0 cm 1 1 0 d" LINE, "##..##.."},
    // The first dash ends one after the corner, which is a mitre.
    {"GoRoundCorners", "5 2 0 d 2 w 2 0 m 2 2 l 2 4 l 8 4 l s", ".##..###"},
    {"EverySubpathBeginsAnew", "2 2 0 d 2 w 0 4 m 3 4 l 3 4 m 8 4 l s", "##.##..#"},
    {"FromFarAway", "1 1 0 d 2 w -30000 4 m 30000 4 l s", "#.#.#.#."},
    {"FromVeryFarAway", "1 1 0 d 2 w -20000000 4 m 8 4 l s", "#.#.#.#."},
};

#undef LINE

class Dashes : public testing::TestWithParam<DashCase>
{
};

TEST_P(Dashes, FallHere)
{
    EXPECT_EQ(Sketch(Draw(GetParam().script)).substr(9 * 3, 8), GetParam().row);
}
INSTANTIATE_TEST_SUITE_P(Raster, Dashes, testing::ValuesIn(kDashes),
                         [](const auto &test) { return test.param.name; });

// Round dots of radius 2 samples at x = 0, 2, 4: each quarter has 3 centres nearer than 2, so 6 of 16 in a
// pixel.
TEST(DashDots, AreRound)
{
    const Picture picture = Draw("1 J 0 2 0 d 1 w 0 4.5 m 8 4.5 l s");
    EXPECT_EQ(PixelAt(picture, 2, 3), "159 159 159");
    EXPECT_EQ(PixelAt(picture, 1, 3), "159 159 159");
}

// The way round is 16: the line is on at its start and at its end, which is one corner with a mitre.
TEST(DashedRectangles, JoinTheLastDashToTheFirst)
{
    const Picture picture = Draw("3 10 0 d 2 w 2 2 m 6 2 l 6 6 l 2 6 l h s");
    EXPECT_EQ(Sketch(picture), "........\n"
                               "........\n"
                               "........\n"
                               ".##.....\n"
                               ".##.....\n"
                               ".####...\n"
                               ".####...\n"
                               "........\n");
}

// Only round caps paint what has no length, dashed or not.
TEST(DashesWithoutLength, AreDots)
{
    EXPECT_EQ(PixelAt(Draw("1 J 1 1 0 d 4 w 4 4 m 4 4 l s"), 4, 4), "0 0 0");
    EXPECT_EQ(PixelAt(Draw("0 J 1 1 0 d 4 w 4 4 m 4 4 l s"), 4, 4), "255 255 255");
}

} // namespace
} // namespace vxhost
