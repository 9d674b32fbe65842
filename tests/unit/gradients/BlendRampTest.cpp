// The numbers between two stops: colours, steps, shape.
#include "plugin/gradients/BlendRamp.h"

#include "tests/support/CaseName.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

namespace
{

using namespace vx;
using namespace vxtest;

constexpr Fixed kOne = kFixedOne;
constexpr Fixed kQuarter = 0x4000;
constexpr Fixed kHalf = 0x8000;
constexpr Fixed kThreeQuarters = 0xC000;

constexpr Fixed Percent(int32_t x)
{
    return IntegerToFixed(x);
}

BlendStopObject GrayStop(Fixed gray, Fixed midPoint = Percent(50))
{
    BlendStopObject stop = {};
    stop.midPoint = midPoint;
    stop.colorKind = kStopGray;
    stop.colour.gray = gray;
    return stop;
}

BlendStopObject ProcessStop(const CMYKColour &inks)
{
    BlendStopObject stop = GrayStop(0);
    stop.colorKind = kStopCMYK;
    stop.colour.process = inks;
    return stop;
}

BlendStopObject CustomStop(const CMYKColour &inks, Fixed tint)
{
    BlendStopObject stop = ProcessStop(inks);
    stop.colorKind = kStopCustom;
    stop.colour.tint = tint;
    return stop;
}

bool IsColour(const CMYKColour &colour, const CMYKColour &expected)
{
    return memcmp(&colour, &expected, sizeof colour) == 0;
}

// ---- Colours of stops

constexpr StopColour kSomeColour = {kQuarter, {kOne, kHalf, kQuarter, 0x2000}, kHalf};

struct StyleCase {
    const char *name;
    int32_t kind;
    bool forceBlack, forceNone;
    CMYKColour inks;
    bool inColour;
};

class ColourStyles : public testing::TestWithParam<StyleCase>
{
};

TEST_P(ColourStyles, GiveTheseInks)
{
    const StyleCase &c = GetParam();
    CMYKColour inks = {1, 2, 3, 4};
    EXPECT_EQ(ColorStyleToCMYK(c.kind, c.forceBlack, c.forceNone, &inks, &kSomeColour), c.inColour);
    EXPECT_TRUE(IsColour(inks, c.inks))
        << inks.cyan << ' ' << inks.magenta << ' ' << inks.yellow << ' ' << inks.black;
}

const StyleCase kStyles[] = {
    {"GrayIsTheRestOfBlack", kStopGray, false, false, {0, 0, 0, kThreeQuarters}, false},
    {"ProcessIsItself", kStopCMYK, false, false, {kOne, kHalf, kQuarter, 0x2000}, true},
    {"CustomIsLightenedByItsTint", kStopCustom, false, false, {kHalf, kQuarter, 0x2000, 0x1000}, true},
    {"WithoutColourIsHalfBlack", kStopNoColour, false, false, {0, 0, 0, kHalf}, false},
    {"BlankIsNothing", kStopBlank, false, false, {0, 0, 0, 0}, false},
    {"UnknownIsHalfBlack", 99, false, false, {0, 0, 0, kHalf}, false},
    {"NegativeIsHalfBlack", -1, false, false, {0, 0, 0, kHalf}, false},
    {"ForcedBlack", kStopCMYK, true, false, {0, 0, 0, kOne}, false},
    {"ForcedNone", kStopCMYK, false, true, {0, 0, 0, 0}, false},
    {"ForcedBlackComesFirst", kStopCustom, true, true, {0, 0, 0, kOne}, false},
};
INSTANTIATE_TEST_SUITE_P(Gradients, ColourStyles, testing::ValuesIn(kStyles), CaseName());

TEST(ColourStylesTest, ACustomColourOfTintZeroIsAtFullStrength)
{
    StopColour colour = kSomeColour;
    colour.tint = 0;
    CMYKColour inks;
    EXPECT_TRUE(ColorStyleToCMYK(kStopCustom, false, false, &inks, &colour));
    EXPECT_TRUE(IsColour(inks, colour.process));
}

struct WhiteCase {
    const char *name;
    int32_t kind;
    StopColour colour;
    bool white;
};

class WhiteStops : public testing::TestWithParam<WhiteCase>
{
};

TEST_P(WhiteStops, AreThese)
{
    EXPECT_EQ(IsWhite(GetParam().kind, &GetParam().colour), GetParam().white);
}

constexpr CMYKColour kNoInk = {0, 0, 0, 0};
constexpr CMYKColour kSomeInk = {0, 0, 1, 0};

const WhiteCase kWhites[] = {
    {"GrayOne", kStopGray, {kOne, kSomeInk, 0}, true},
    {"GrayJustBelowOne", kStopGray, {kOne - 1, kSomeInk, 0}, false},
    {"GrayWithNoInks", kStopGray, {0, kNoInk, 0}, true}, // black too, as a stop holds no inks then
    {"ProcessWithoutInks", kStopCMYK, {0, kNoInk, 0}, true},
    {"ProcessWithAnInk", kStopCMYK, {kOne, kSomeInk, 0}, false},
    {"CustomOfTintZero", kStopCustom, {0, kSomeInk, 0}, true},
    {"CustomWithATint", kStopCustom, {0, kSomeInk, 1}, false},
    {"CustomWithoutInks", kStopCustom, {0, kNoInk, kOne}, true},
    {"WithoutColour", kStopNoColour, {0, kNoInk, 0}, true},
    {"WithoutColourButWithAnInk", kStopNoColour, {kOne, kSomeInk, 0}, false},
    {"CyanAlone", kStopCMYK, {0, {1, 0, 0, 0}, 0}, false},
    {"MagentaAlone", kStopCMYK, {0, {0, 1, 0, 0}, 0}, false},
    {"BlackAlone", kStopCMYK, {0, {0, 0, 0, 1}, 0}, false},
};
INSTANTIATE_TEST_SUITE_P(Gradients, WhiteStops, testing::ValuesIn(kWhites), CaseName());

// ---- Custom colours of a ramp

struct CustomCase {
    const char *name;
    BlendStopObject a, b;
    CustomRamp ramp;
};

class CustomRamps : public testing::TestWithParam<CustomCase>
{
};

TEST_P(CustomRamps, AreRecorded)
{
    const CustomCase &c = GetParam();
    const CustomRamp ramp = AutoBlendCalcTwoColorRamp(&c.a, &c.b).custom;
    EXPECT_EQ(ramp.involved, c.ramp.involved);
    EXPECT_EQ(ramp.mode, c.ramp.mode);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(ramp.tint[i].start, c.ramp.tint[i].start) << i;
        EXPECT_EQ(ramp.tint[i].end, c.ramp.tint[i].end) << i;
        EXPECT_EQ(ramp.tint[i].difference, c.ramp.tint[i].difference) << i;
    }
}

constexpr CMYKColour kRose = {0, kOne, 0, 0};
constexpr CustomRamp kNotInvolved = {};

const CustomCase kCustoms[] = {
    {"NoneInGrays", GrayStop(kOne), GrayStop(0), kNotInvolved},
    {"NoneBesideAProcessColour", CustomStop(kRose, kHalf), ProcessStop(kRose), kNotInvolved},
    // Each fades to nothing on its own: 1.0 is no ink.
    {"TwoColours",
     CustomStop(kRose, kQuarter),
     CustomStop(kRose, kHalf),
     {1, kTwoCustomColours, {{kQuarter, kOne, kThreeQuarters}, {kOne, kHalf, -kHalf}}}},
    {"WhiteToCustom",
     GrayStop(kOne),
     CustomStop(kRose, kQuarter),
     {1, kOneCustomColour, {{kOne, kQuarter, -kThreeQuarters}, {}}}},
    {"CustomToWhite",
     CustomStop(kRose, kQuarter),
     ProcessStop(kNoInk),
     {1, kOneCustomColour, {{kQuarter, kOne, kThreeQuarters}, {}}}},
    // The custom colour of tint 0 counts as white as well.
    {"WhiteToFullStrength",
     ProcessStop(kNoInk),
     CustomStop(kRose, 0),
     {1, kOneCustomColour, {{kOne, kOne, 0}, {}}}},
};
INSTANTIATE_TEST_SUITE_P(Gradients, CustomRamps, testing::ValuesIn(kCustoms), CaseName());

TEST(CustomRampsTest, OfOneStopHaveOneColour)
{
    const BlendStopObject stop = CustomStop(kRose, kQuarter);
    const CustomRamp ramp = AutoBlendCalcTwoColorRamp(&stop, &stop).custom;
    EXPECT_EQ(ramp.involved, 1);
    EXPECT_EQ(ramp.mode, kOneCustomColour);
    EXPECT_EQ(ramp.tint[0].start, kQuarter);
    EXPECT_EQ(ramp.tint[0].end, kQuarter);
    EXPECT_EQ(ramp.tint[0].difference, 0);
}

// ---- Steps

struct StepCase {
    const char *name;
    Fixed from, to;
    int steps;
};

class GraySteps : public testing::TestWithParam<StepCase>
{
};

TEST_P(GraySteps, AreOneForEachPercent)
{
    const BlendStopObject a = GrayStop(GetParam().from);
    const BlendStopObject b = GrayStop(GetParam().to);
    const BlendRamp ramp = AutoBlendCalcTwoColorRamp(&a, &b);
    EXPECT_EQ(ramp.steps, GetParam().steps);
    EXPECT_EQ(ramp.levels, 100);
    EXPECT_EQ(ramp.firstStop, &a);
    EXPECT_TRUE(ramp.grayOnly);
    EXPECT_EQ(ramp.grayStart, GetParam().from);
    EXPECT_EQ(ramp.grayEnd, GetParam().to);
}

const StepCase kSteps[] = {
    {"BlackToWhite", 0, kOne, 100},
    {"WhiteToBlack", kOne, 0, 100},
    {"HalfOfIt", kQuarter, kThreeQuarters, 50},
    {"NoChange", kHalf, kHalf, 1},
    // 0.004 is 262/65536: 26200 + 32768 = 58968 is less than 65536.
    {"LessThanHalfAPercent", 0, 262, 1},
    // 100 * 983 + 32768 = 131068, just below 2 * 65536; 100 * 984 + 32768 = 131168, just above.
    {"JustBelowOneAndAHalfPercent", 0, 983, 1},
    {"JustAboveOneAndAHalfPercent", 0, 984, 2},
    // 100 * 21474508 + 32768 = 2147483568, the largest multiple that is less than 2^31 = 2147483648.
    {"TheMostThatFits", 0, 21474508, 32767},
    // 100 * 21474509 + 32768 = 2147483668 wraps to a negative number.
    {"OneMoreWraps", 0, 21474509, 1},
    {"TheProductSaturates", 0, 30000 * kOne, 1},
    // 20000 + 20000 wraps to -25536, whose size is far too large as well.
    {"TheDifferenceWraps", -20000 * kOne, 20000 * kOne, 1},
    // This one number has no positive counterpart.
    {"TheMostNegativeDifference", 0, INT32_MIN, 1},
};
INSTANTIATE_TEST_SUITE_P(Gradients, GraySteps, testing::ValuesIn(kSteps), CaseName());

TEST(ProcessRamps, StepByTheLargestChange)
{
    const BlendStopObject a = ProcessStop({kOne, 0, kHalf, kQuarter});
    const BlendStopObject b = ProcessStop({kThreeQuarters, kHalf, kHalf, kThreeQuarters});
    const BlendRamp ramp = AutoBlendCalcTwoColorRamp(&a, &b);
    EXPECT_FALSE(ramp.grayOnly);
    EXPECT_EQ(ramp.steps, 50);
    EXPECT_TRUE(IsColour(ramp.startCMYK, a.colour.process));
    EXPECT_TRUE(IsColour(ramp.endCMYK, b.colour.process));
    EXPECT_TRUE(IsColour(ramp.deltaCMYK, {-kQuarter, kHalf, 0, kHalf}));
}

TEST(ProcessRamps, TakeAGrayAsBlackInk)
{
    const BlendStopObject gray = GrayStop(kQuarter);
    const BlendStopObject process = ProcessStop({0, 0, 0, kOne});
    for (const bool grayFirst : {true, false}) {
        const BlendRamp ramp = grayFirst ? AutoBlendCalcTwoColorRamp(&gray, &process)
                                         : AutoBlendCalcTwoColorRamp(&process, &gray);
        EXPECT_FALSE(ramp.grayOnly);
        EXPECT_EQ(ramp.steps, 25);
        EXPECT_TRUE(IsColour(ramp.deltaCMYK, {0, 0, 0, grayFirst ? kQuarter : -kQuarter}));
    }
}

struct FlatCase {
    const char *name;
    BlendStopObject a, b;
    bool flat;
};

class FlatRamps : public testing::TestWithParam<FlatCase>
{
};

TEST_P(FlatRamps, HaveNoChange)
{
    const BlendRamp ramp = AutoBlendCalcTwoColorRamp(&GetParam().a, &GetParam().b);
    EXPECT_EQ(HasNoChange(&ramp), GetParam().flat);
}

const FlatCase kFlats[] = {
    {"SameGrays", GrayStop(kHalf), GrayStop(kHalf), true},
    {"Grays", GrayStop(kHalf), GrayStop(kHalf + 1), false},
    {"SameInks", ProcessStop(kRose), ProcessStop(kRose), true},
    {"OtherInks", ProcessStop(kRose), ProcessStop({0, kOne - 1, 0, 0}), false},
    {"TheSameInkUnderTwoKinds", ProcessStop(kRose), CustomStop(kRose, 0), true},
    {"TheSameBlackUnderTwoKinds", GrayStop(kQuarter), ProcessStop({0, 0, 0, kThreeQuarters}), true},
};
INSTANTIATE_TEST_SUITE_P(Gradients, FlatRamps, testing::ValuesIn(kFlats), CaseName());

// ---- Shape

struct ShapeCase {
    const char *name;
    Fixed midPoint;
    bool high;
    double exponent;
};

class Shapes : public testing::TestWithParam<ShapeCase>
{
};

TEST_P(Shapes, FollowFromTheFirstMidpoint)
{
    const BlendStopObject a = GrayStop(0, GetParam().midPoint);
    const BlendStopObject b = GrayStop(kOne, Percent(99));
    const BlendRamp ramp = AutoBlendCalcTwoColorRamp(&a, &b);
    EXPECT_EQ(ramp.midpointHigh != 0, GetParam().high);
    EXPECT_DOUBLE_EQ(ramp.exponent, GetParam().exponent);
}

// log10 0.5 / log10 0.75
constexpr double kExponent75 = 2.4094208396532090;

const ShapeCase kShapes[] = {
    {"SeventyFive", Percent(75), true, kExponent75},
    {"TwentyFiveIsItsMirror", Percent(25), false, kExponent75},
    // 13/100 is 8520/65536, and log10 0.5 / log10 (57016/65536) is
    {"Thirteen", Percent(13), false, 4.9770857220264852},
    // 51/100 is 33423.36/65536, so 33423; log10 0.5 / log10 (33423/65536) is
    {"FiftyOne", Percent(51), true, 1.0293928860677372},
    {"Zero", 0, false, HUGE_VAL},
    {"BelowZeroIsZero", Percent(-30), false, HUGE_VAL},
    {"SoLittleThatItRoundsToZero", 30, false, HUGE_VAL},
    {"AHundred", Percent(100), true, HUGE_VAL},
    {"AboveAHundredIsAHundred", INT32_MAX, true, HUGE_VAL},
};
INSTANTIATE_TEST_SUITE_P(Gradients, Shapes, testing::ValuesIn(kShapes), CaseName());

TEST(ShapesTest, AtFiftyAreExactlyEven)
{
    const BlendStopObject a = GrayStop(0);
    const BlendRamp ramp = AutoBlendCalcTwoColorRamp(&a, &a);
    EXPECT_EQ(ramp.exponent, 1.0);
    EXPECT_FALSE(ramp.midpointHigh);
    for (Fixed t = 0; t <= kOne; t += 97)
        EXPECT_EQ(ShapeParameter(&ramp, t), t);
}

struct ParameterCase {
    const char *name;
    int32_t midPoint; // percent
    Fixed t, shaped;
};

class ShapedParameters : public testing::TestWithParam<ParameterCase>
{
};

TEST_P(ShapedParameters, AreShaped)
{
    const BlendStopObject a = GrayStop(0, Percent(GetParam().midPoint));
    const BlendRamp ramp = AutoBlendCalcTwoColorRamp(&a, &a);
    EXPECT_EQ(ShapeParameter(&ramp, GetParam().t), GetParam().shaped);
}

// The values were calculated with 60 digits; the last digit shown decides the rounding.
const ParameterCase kParameters[] = {
    {"HighIsHalfWayAtItsMidpoint", 75, 49152, 32768},
    {"HighAtAQuarter", 75, 16384, 2322},        // 2322.010
    {"HighAtAHalf", 75, 32768, 12336},          // 12335.933
    {"HighJustBeforeTheEnd", 75, 65535, 65534}, // 65533.591
    {"LowIsHalfWayAtItsMidpoint", 25, 16384, 32768},
    {"LowJustAfterTheStart", 25, 1, 2},       // 2.409
    {"LowAtAHalf", 25, 32768, 53200},         // 53200.067, and 65536 - 53200 is the mirrored 12336
    {"LowAtThreeQuarters", 25, 49152, 63214}, // 63213.990
    {"ThirteenAtItsMidpoint", 13, 8520, 32768},
    {"ThirteenAtANinth", 13, 7282, 29071}, // 29070.582
    {"ThirteenAtAHalf", 13, 32768, 63455}, // 63455.212
    {"EightySevenAtItsMidpoint", 87, 57016, 32768},
    {"EightySevenAtAHalf", 87, 32768, 2081}, // 2080.788
    {"FiftyOneAtAHalf", 51, 32768, 32107},   // 32107.153
    {"NinetyNineAtItsMidpoint", 99, 64881, 32768},
    // The ends stay; between them 0 jumps at once and 100 as late as possible.
    {"ZeroAtTheStart", 0, 0, 0},
    {"ZeroRightAfterIt", 0, 1, kOne},
    {"ZeroAtTheEnd", 0, kOne, kOne},
    {"AHundredAtTheStart", 100, 0, 0},
    {"AHundredRightBeforeTheEnd", 100, kOne - 1, 0},
    {"AHundredAtTheEnd", 100, kOne, kOne},
    {"TheStartStays", 75, 0, 0},
    {"TheEndStays", 75, kOne, kOne},
    {"TheMirroredStartStays", 25, 0, 0},
    {"TheMirroredEndStays", 25, kOne, kOne},
};
INSTANTIATE_TEST_SUITE_P(Gradients, ShapedParameters, testing::ValuesIn(kParameters), CaseName());

TEST(ShapesTest, NeverGoBack)
{
    for (int32_t midPoint = 0; midPoint <= 100; ++midPoint) {
        const BlendStopObject a = GrayStop(0, Percent(midPoint));
        const BlendRamp ramp = AutoBlendCalcTwoColorRamp(&a, &a);
        Fixed before = 0;
        for (Fixed t = 0; t <= kOne; t += 64) {
            const Fixed shaped = ShapeParameter(&ramp, t);
            ASSERT_GE(shaped, before) << midPoint << " at " << t;
            ASSERT_LE(shaped, kOne) << midPoint << " at " << t;
            before = shaped;
        }
    }
}

} // namespace
