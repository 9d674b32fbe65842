// The strips and discs of a blend, call by call.
#include "plugin/gradients/Fills.h"

#include "tests/support/CaseName.h"
#include "tests/unit/body/ParsingContext.h"

#include <gtest/gtest.h>

namespace
{

using namespace vx;
using namespace vxtest;

struct StripCase {
    const char *name;
    Fixed x0, x1;
    const char *calls;
};

class Strips : public ParsingContext, public testing::WithParamInterface<StripCase>
{
};

TEST_P(Strips, AreRectanglesOfTheUnitSquare)
{
    StripFill(&context, GetParam().x0, GetParam().x1);
    EXPECT_EQ(host.Joined(), GetParam().calls);
}

const StripCase kStrips[] = {
    {"TheWholeSquare", 0, kFixedOne,
     "newpath; moveto 0 0; lineto 1 0; lineto 1 1; lineto 0 1; closepath; fill"},
    {"APart", 0x4000, 0x8000,
     "newpath; moveto 0.25 0; lineto 0.5 0; lineto 0.5 1; lineto 0.25 1; closepath; fill"},
};
INSTANTIATE_TEST_SUITE_P(Gradients, Strips, testing::ValuesIn(kStrips), CaseName());

struct DiscCase {
    const char *name;
    Fixed radius;
    const char *calls;
};

class Discs : public ParsingContext, public testing::WithParamInterface<DiscCase>
{
};

TEST_P(Discs, AreFourCurvesLeftOpen)
{
    RadialFill(&context, GetParam().radius);
    EXPECT_EQ(host.Joined(), GetParam().calls);
}

// The control points lie at the radius times 36194/65536 = 0.55228.
const DiscCase kDiscs[] = {
    {"Unit", kFixedOne,
     "newpath; moveto 1 0; curveto 1 0.55228 0.55228 1 0 1; curveto -0.55228 1 -1 0.55228 -1 0; "
     "curveto -1 -0.55228 -0.55228 -1 0 -1; curveto 0.55228 -1 1 -0.55228 1 0; fill"},
    // 36194 * 2 / 65536 = 1.10455
    {"OfRadiusTwo", 2 * kFixedOne,
     "newpath; moveto 2 0; curveto 2 1.10455 1.10455 2 0 2; curveto -1.10455 2 -2 1.10455 -2 0; "
     "curveto -2 -1.10455 -1.10455 -2 0 -2; curveto 1.10455 -2 2 -1.10455 2 0; fill"},
    // 1/65536 times 0.55228 rounds to 1/65536, which is 0.00002.
    {"Smallest", 1,
     "newpath; moveto 0.00002 0; curveto 0.00002 0.00002 0.00002 0.00002 0 0.00002; "
     "curveto -0.00002 0.00002 -0.00002 0.00002 -0.00002 0; "
     "curveto -0.00002 -0.00002 -0.00002 -0.00002 0 -0.00002; "
     "curveto 0.00002 -0.00002 0.00002 -0.00002 0.00002 0; fill"},
    {"OfNoRadiusIsPaintedAllTheSame", 0,
     "newpath; moveto 0 0; curveto 0 0 0 0 0 0; curveto 0 0 0 0 0 0; curveto 0 0 0 0 0 0; "
     "curveto 0 0 0 0 0 0; fill"},
    {"OfANegativeRadiusIsTurned", -kFixedOne,
     "newpath; moveto -1 0; curveto -1 -0.55228 -0.55228 -1 0 -1; curveto 0.55228 -1 1 -0.55228 1 0; "
     "curveto 1 0.55228 0.55228 1 0 1; curveto -0.55228 1 -1 0.55228 -1 0; fill"},
};
INSTANTIATE_TEST_SUITE_P(Gradients, Discs, testing::ValuesIn(kDiscs), CaseName());

} // namespace
