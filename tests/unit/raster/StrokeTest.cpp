// The outline of a stroke: caps, joins, mitre limit, matrix, and what has no length.
#include "tests/unit/raster/PixelTable.h"

#include <cmath>

namespace vxhost
{
namespace
{

// Around the point (6, 2) a corner two wide: its outside is the pixel in column 6 and row 6.
#define CORNER "2 w 2 2 m 6 2 l 6 6 l s"
#define LINE   "2 w 2 4 m 6 4 l s"

const PixelCase kStrokes[] = {
    {"HalfTheWidthOnEitherSideAbove", LINE, 3, 3, "0 0 0"},
    {"HalfTheWidthOnEitherSideBelow", LINE, 3, 4, "0 0 0"},
    {"NotMoreThanTheWidth", LINE, 3, 5, "255 255 255"},
    {"ButtCapsEndAtTheEnd", LINE, 1, 4, "255 255 255"},
    {"SquareCapsGoOn", "2 J " LINE, 1, 4, "0 0 0"},
    {"SquareCapsEnd", "2 J " LINE, 0, 4, "255 255 255"},
    // A quarter of a disc of 4 samples radius: 13 of its 16 centres are nearer than 4.
    {"RoundCapsAreRound", "1 J " LINE, 1, 4, "48 48 48"},
    {"RoundCapsAreRoundAtTheOtherEnd", "1 J " LINE, 6, 3, "48 48 48"},
    {"MitresFillTheCorner", CORNER, 6, 6, "0 0 0"},
    {"BevelsCutTheCorner", "2 j " CORNER, 6, 6, "159 159 159"},
    {"RoundJoinsAreRound", "1 j " CORNER, 6, 6, "48 48 48"},
    // A right angle's mitre is 1.414 widths long.
    {"BelowTheLimitAMitreIsABevel", "1.4 M " CORNER, 6, 6, "159 159 159"},
    {"AtTheLimitAMitreStays", "1.42 M " CORNER, 6, 6, "0 0 0"},
    // The curve leaves upwards, and the first of the four lines that stand for it 13 degrees from there: a mitre of 1.28
    // to that one. The bevel to it lies below 10 of the 16 centres.
    {"ACurvesOwnDirectionHasTheLimit", "1.4 M 2 w 2 2 m 6 2 l 6 3 7 4 8 4 c s", 6, 6, "96 96 96"},
    {"ACurvesMitreStaysAtTheLimit", "1.42 M 2 w 2 2 m 6 2 l 6 3 7 4 8 4 c s", 6, 6, "0 0 0"},
    {"TheInsideOfACornerIsClean", CORNER, 4, 4, "255 255 255"},
    {"TurningTheOtherWayIsTheSame", "2 w 6 6 m 6 2 l 2 2 l s", 6, 6, "0 0 0"},
    {"BackOnItselfHasNoMitre", "2 w 2 4 m 6 4 l 2 4 l s", 6, 4, "255 255 255"},
    {"BackOnItselfIsRound", "2 w 1 j 2 4 m 6 4 l 2 4 l s", 6, 4, "48 48 48"},
    {"ClosedPathsJoinAtTheStart", "2 w 2 2 m 6 2 l 6 6 l 2 6 l h s", 1, 6, "0 0 0"},
    {"PathsThatReturnDoNot", "2 w 2 2 m 6 2 l 6 6 l 2 6 l 2 2 l s", 1, 6, "255 255 255"},
    {"ClosedPathsAreHollow", "2 w 2 2 m 6 2 l 6 6 l 2 6 l h s", 4, 4, "255 255 255"},
    {"AShortCornerInsideAWideStrokeLeavesNoHole", "4 w 0 4 m 4 4 l 4.3 4.4 l 8 4.4 l s", 4, 3, "0 0 0"},
    {"ATightCurveLeavesNoHole", "4 w 2 2 m 3 8 5 8 6 2 c s", 3, 2, "0 0 0"},
    {"EverySubpathIsStroked", "2 w 0 2 m 8 2 l 0 6 m 8 6 l s", 4, 6, "0 0 0"},
    {"AMoveAlonePaintsNothing", "1 J 4 w 4 4 m s", 4, 4, "255 255 255"},
    {"NoLengthIsADotWithRoundCaps", "1 J 4 w 4 4 m 4 4 l s", 4, 4, "0 0 0"},
    {"NoLengthClosedIsADotWithRoundCaps", "1 J 4 w 4 4 m h s", 4, 4, "0 0 0"},
    // Other caps have no direction to lie along.
    {"NoLengthIsNothingWithButtCaps", "0 J 4 w 4 4 m 4 4 l s", 4, 4, "255 255 255"},
    {"NoLengthIsNothingWithSquareCaps", "2 J 4 w 4 4 m 4 4 l s", 4, 4, "255 255 255"},
    {"AFlatMatrixMakesFlatLines", "1 0 0 0.5 0 0 cm 4 w 0 4 m 8 4 l s", 4, 2, "255 255 255"},
    {"AFlatMatrixKeepsUprightLines", "1 0 0 0.5 0 0 cm 4 w 4 0 m 4 8 l s", 2, 4, "0 0 0"},
    {"AScaleWidens", "2 0 0 2 0 0 cm 2 w 0 4 m 8 4 l s", 4, 2, "0 0 0"},
    {"AMirrorChangesNothing", "-1 0 0 1 0 0 cm " CORNER, 6, 6, "0 0 0"},
    {"ATurnChangesNothing", "0 1 -1 0 0 0 cm " CORNER, 6, 6, "0 0 0"},
    // A matrix without an inverse squeezes the pen flat; a sample's width is left, one row of four, in a quarter of
    // the ink: 255 - 64 / 4.
    {"AFlattenedPenKeepsASample", "1 0 0 0 0 0 cm 4 w 0 3.9 m 8 3.9 l s", 4, 4, "239 239 239"},
    // Two rows of samples on either side of the line.
    {"WidthNoughtIsAPixel", "0 w 0 4 m 8 4 l s", 4, 3, "128 128 128"},
    {"WidthNoughtIsAPixelBelow", "0 w 0 4 m 8 4 l s", 4, 4, "128 128 128"},
    {"ThinLinesAreASample", "0.001 w 0 4.06 m 8 4.06 l s", 4, 3, "239 239 239"},
    {"ThinLinesAreASampleUpright", "0.001 w 4.06 0 m 4.06 8 l s", 4, 3, "239 239 239"},
    // Half as wide as a sample is half the ink, 255 - 127 / 4; as wide as a sample is all of it.
    {"LinesHalfASampleWideAreHalfAsDark", "0.125 w 0 4.06 m 8 4.06 l s", 4, 3, "223 223 223"},
    {"LinesASampleWideAreFullInk", "0.2501 w 0 4.125 m 8 4.125 l s", 4, 3, "191 191 191"},
    // Flat ends, a tenth of a sample apart: drawn one sample long, eight high.
    {"ShortLinesKeepASample", "2 w 3.1 4 m 3.125 4 l s", 3, 4, "191 191 191"},
};

#undef CORNER
#undef LINE

class Strokes : public testing::TestWithParam<PixelCase>
{
};

TEST_P(Strokes, PaintThesePixels)
{
    const PixelCase &c = GetParam();
    EXPECT_EQ(PixelAt(Draw(c.script), c.column, c.row), c.pixel);
}
INSTANTIATE_TEST_SUITE_P(Raster, Strokes, testing::ValuesIn(kStrokes), NameOf);

// A circle of radius 40 stroked 20 wide is a ring: every pixel well inside of it is black, every other one
// white.
TEST(StrokeCurves, FollowTheCircle)
{
    const Picture picture = Draw("20 w 90 50 m 90 72.0914 72.0914 90 50 90 c 27.9086 90 10 72.0914 10 50 c "
                                 "10 27.9086 27.9086 10 50 10 c 72.0914 10 90 27.9086 90 50 c h s",
                                 100, 100);
    for (int row = 0; row < 100; ++row) {
        for (int column = 0; column < 100; ++column) {
            const double x = column + 0.5 - 50, y = row + 0.5 - 50, distance = std::sqrt(x * x + y * y);
            const double fromRing = std::abs(distance - 40);
            if (fromRing < 9 || fromRing > 11) {
                ASSERT_EQ(PixelAt(picture, column, row), fromRing < 9 ? "0 0 0" : "255 255 255")
                    << column << ' ' << row;
            }
        }
    }
}

} // namespace
} // namespace vxhost
