// What the operators of the body keep of an instance, and the calls around its painting.
#include "plugin/gradients/Instances.h"

#include "tests/support/CaseName.h"
#include "tests/unit/gradients/GradientContext.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace
{

using namespace vx;
using namespace vxtest;

constexpr Fixed Whole(int32_t x)
{
    return IntegerToFixed(x);
}

bool IsMatrix(const FixedMatrix &matrix, int32_t a, int32_t b, int32_t c, int32_t d, int32_t tx, int32_t ty)
{
    const FixedMatrix expected = {Whole(a), Whole(b), Whole(c), Whole(d), Whole(tx), Whole(ty)};
    return memcmp(&matrix, &expected, sizeof matrix) == 0;
}

const char *const kBindSky = "1 (Sky) 0 0 0 100 1 0 0 1 0 0 Bg";

class Instances : public GradientContext
{
  protected:
    Instances()
    {
        EXPECT_EQ(InSetup("(Sky) 0 2 Bd 0.5 0 50 100 Bs 0.5 0 50 0 Bs BD "
                          "(Sea) 1 0 Bd BD (Sky) 5 0 Bd BD (sky) 7 0 Bd BD () 8 0 Bd BD"),
                  kOk);
    }

    void Begin()
    {
        ASSERT_EQ(Interpret("Bb"), kOk);
        ASSERT_EQ(Interpret(kBindSky), kOk);
    }
};

// ---- Bb

TEST_F(Instances, BeginWithASaveAndAClip)
{
    EXPECT_EQ(Calls("1 (x) Bb"), "gsave; clip");
    EXPECT_EQ(state->instanceClosed, 0);
    EXPECT_EQ(state->instancePhase, kInstanceUnbound);
}

struct TextCase {
    const char *name;
    int32_t pathState, type;
    bool savesTwice;
};

class InstancesInText : public Instances, public testing::WithParamInterface<TextCase>
{
};

TEST_P(InstancesInText, SaveAndRestoreOnceMoreInATextPath)
{
    context.text.object.pathState = GetParam().pathState;
    context.text.object.type = GetParam().type;
    const bool twice = GetParam().savesTwice;
    EXPECT_EQ(Calls("Bb"), twice ? "gsave; gsave; clip" : "gsave; clip");
    EXPECT_EQ(Calls("3 BB"), twice ? "closepath; comment path; grestore" : "closepath; comment path");
    ASSERT_EQ(Interpret("Bb"), kOk);
    EXPECT_EQ(Calls("BB", kParserBadFormat), twice ? "grestore" : "") << "also when it fails";
}

const TextCase kTexts[] = {
    {"WithoutText", kNoTextPath, kNoTextObject, false},
    {"InAPathTextBeforeItsPath", kNoTextPath, kPathText, false},
    {"InAPathText", kTextPathBegun, kPathText, true},
    {"InAPointText", kTextPathBegun, kPointText, false},
    {"InAnAreaText", kTextPathBegun, kAreaText, false},
    {"AfterText", kTextPathBegun, kNoTextObject, false},
};
INSTANTIATE_TEST_SUITE_P(Gradients, InstancesInText, testing::ValuesIn(kTexts), CaseName());

// ---- Bg

TEST_F(Instances, KeepWhatTheyAreBoundWith)
{
    ASSERT_EQ(Interpret("Bb 1 0 0 1 0 0 Bc"), kOk);
    state->segmentMatrixCount = 3;
    state->clipMatrixCount = 1;
    ASSERT_EQ(Interpret("-7 (Sea) 10 20 30 40 1 2 3 4 5 6 Bg"), kOk);
    EXPECT_EQ(state->instanceFlag, -7);
    EXPECT_EQ(state->instanceGradient, state->firstGradient->next);
    EXPECT_EQ(state->instanceType, 1);
    EXPECT_EQ(state->instancePhase, kInstanceBound);
    EXPECT_EQ(state->segmentMatrixCount, 0);
    EXPECT_EQ(state->clipMatrixCount, 0);
    for (int i = 0; i < kGeometryValues; ++i)
        EXPECT_EQ(state->instanceGeometry[i], Whole(10 * (i + 1)));
    EXPECT_TRUE(IsMatrix(state->instanceMatrix, 1, 2, 3, 4, 5, 6));
}

struct LookUpCase {
    const char *name, *text;
    int32_t type;  // of the gradient found, or -1
    int32_t index; // where the look-up stops
};

class GradientLookUps : public Instances, public testing::WithParamInterface<LookUpCase>
{
};

TEST_P(GradientLookUps, FindTheFirstOfTheirName)
{
    const LookUpCase &c = GetParam();
    const std::string line = "1 " + std::string(c.text) + " 0 0 0 100 1 0 0 1 0 0 Bg";
    EXPECT_EQ(Interpret(line), c.type < 0 ? kParserBadFormat : kOk);
    EXPECT_EQ(state->lookupIndex, c.index);
    if (c.type < 0)
        EXPECT_EQ(state->instanceGradient, nullptr);
    else
        EXPECT_EQ(state->instanceGradient->gradientType, c.type);
}

const LookUpCase kLookUps[] = {
    {"TheFirst", "(Sky)", 0, 0},       {"AnotherOfTheSameLength", "(Sea)", 1, 1},
    {"CaseCounts", "(sky)", 7, 3},     {"InHex", "<536561>", 1, 1},
    {"AnUnknownName", "(SKY)", -1, 5}, {"APrefix", "(Sk)", -1, 5},
    {"ALongerName", "(Skyy)", -1, 5},  {"AnEmptyNameIsNotLookedUp", "()", -1, 0},
};
INSTANTIATE_TEST_SUITE_P(Gradients, GradientLookUps, testing::ValuesIn(kLookUps), CaseName());

TEST_F(GradientContext, LookUpsInAnEmptyListFail)
{
    EXPECT_EQ(Interpret(kBindSky), kParserBadFormat);
    EXPECT_EQ(state->instanceGradient, nullptr);
}

// ---- Bc, Bm, Bh

TEST_F(Instances, KeepTheFirstClipMatrixAndTheLast)
{
    Begin();
    ASSERT_EQ(Interpret("1 2 3 4 5 6 Bc"), kOk);
    EXPECT_EQ(state->clipMatrixCount, 1);
    ASSERT_EQ(Interpret("11 12 13 14 15 16 Bc 21 22 23 24 25 26 Bc"), kOk);
    EXPECT_EQ(state->clipMatrixCount, 1);
    EXPECT_TRUE(IsMatrix(state->clipMatrix[0], 1, 2, 3, 4, 5, 6));
    EXPECT_TRUE(IsMatrix(state->clipMatrix[1], 21, 22, 23, 24, 25, 26));
    ASSERT_EQ(Interpret(kBindSky), kOk);
    EXPECT_EQ(state->clipMatrixCount, 0);
    EXPECT_TRUE(IsMatrix(state->clipMatrix[1], 21, 22, 23, 24, 25, 26)) << "binding leaves it";
}

TEST_F(Instances, KeepSegmentMatricesInOrder)
{
    Begin();
    ASSERT_EQ(Interpret("1 2 3 4 5 6 Bm 0 0 0 0 0 7 Bm"), kOk);
    EXPECT_EQ(state->segmentMatrixCount, 2);
    EXPECT_TRUE(IsMatrix(state->segmentMatrix[0], 1, 2, 3, 4, 5, 6));
    EXPECT_TRUE(IsMatrix(state->segmentMatrix[1], 0, 0, 0, 0, 0, 7));
}

TEST_F(Instances, TakeThirtyOneSegmentMatrices)
{
    Begin();
    for (int i = 0; i < kMaxSegmentMatrices; ++i)
        ASSERT_EQ(Interpret("1 0 0 1 0 0 Bm"), kOk);
    EXPECT_EQ(Interpret("1 0 0 1 0 0 Bm"), kParserBadFormat);
    EXPECT_EQ(state->segmentMatrixCount, kMaxSegmentMatrices);
    ASSERT_EQ(Interpret(kBindSky), kOk);
    EXPECT_EQ(Interpret("1 0 0 1 0 0 Bm"), kOk) << "another instance starts anew";
}

TEST_F(Instances, IgnoreMatricesUntilTheyAreBound)
{
    ASSERT_EQ(Interpret("1 2 3 4 5 6 Bc 1 2 3 4 5 6 Bm"), kOk) << "outside any instance";
    ASSERT_EQ(Interpret("Bb"), kOk);
    for (int i = 0; i < 40; ++i)
        ASSERT_EQ(Interpret("1 2 3 4 5 6 Bc 1 2 3 4 5 6 Bm"), kOk);
    ASSERT_EQ(Interpret(kBindSky), kOk);
    ASSERT_EQ(Interpret("3 BB 1 2 3 4 5 6 Bc 1 2 3 4 5 6 Bm"), kOk) << "after the instance";
    EXPECT_EQ(state->clipMatrixCount, 0);
    EXPECT_EQ(state->segmentMatrixCount, 0);
    EXPECT_TRUE(IsMatrix(state->clipMatrix[0], 0, 0, 0, 0, 0, 0));
    EXPECT_TRUE(IsMatrix(state->segmentMatrix[0], 0, 0, 0, 0, 0, 0));
}

TEST_F(Instances, KeepTheHighlightCrosswise)
{
    ASSERT_EQ(Interpret("1 2 3 4 Bh"), kOk) << "bound or not";
    const Fixed expected[] = {Whole(4), Whole(3), Whole(1), Whole(2)};
    EXPECT_EQ(memcmp(state->highlight, expected, sizeof expected), 0);
    Begin();
    EXPECT_EQ(memcmp(state->highlight, expected, sizeof expected), 0) << "binding leaves it";
}

struct BadCase {
    const char *name, *line;
};

class BadGradientOperands : public Instances, public testing::WithParamInterface<BadCase>
{
};

TEST_P(BadGradientOperands, FailWithoutACall)
{
    Begin();
    EXPECT_EQ(Calls(GetParam().line, kParserBadFormat), "");
}

const BadCase kBadOperands[] = {
    {"BgWithElevenOperands", "(Sky) 0 0 0 100 1 0 0 1 0 0 Bg"},
    {"BgWithThirteenOperands", "1 1 (Sky) 0 0 0 100 1 0 0 1 0 0 Bg"},
    {"BgWithAnArrayForItsMatrix", "1 (Sky) 0 0 0 100 [1 0 0 1 0 0] Bg"},
    {"BgWithAStringInItsMatrix", "1 (Sky) 0 0 0 100 1 0 (0) 1 0 0 Bg"},
    {"BgWithAStringInItsGeometry", "1 (Sky) 0 (0) 0 100 1 0 0 1 0 0 Bg"},
    {"BgWithALiteralName", "1 /Sky 0 0 0 100 1 0 0 1 0 0 Bg"},
    {"BgWithAFractionForItsFlag", "0.5 (Sky) 0 0 0 100 1 0 0 1 0 0 Bg"},
    {"BcWithFiveOperands", "1 0 0 1 0 Bc"},
    {"BcWithSevenOperands", "1 1 0 0 1 0 0 Bc"},
    {"BcWithAString", "1 0 0 (1) 0 0 Bc"},
    {"BmWithFiveOperands", "1 0 0 1 0 Bm"},
    {"BmWithSevenOperands", "1 1 0 0 1 0 0 Bm"},
    {"BmWithAString", "1 0 0 (1) 0 0 Bm"},
    {"BhWithThreeOperands", "1 0 0 Bh"},
    {"BhWithFiveOperands", "1 0 0 0 0 Bh"},
    {"BhWithAString", "1 (0) 0 0 Bh"},
    {"BBWithoutOperand", "BB"},
    {"BBWithTwoOperands", "0 0 BB"},
    {"BBWithAFraction", "0.5 BB"},
    {"BBWithAString", "(0) BB"},
};
INSTANTIATE_TEST_SUITE_P(Gradients, BadGradientOperands, testing::ValuesIn(kBadOperands), CaseName());

TEST_F(Instances, CountOperandsEvenWhereMatricesAreIgnored)
{
    EXPECT_EQ(Interpret("1 0 0 1 0 Bc"), kParserBadFormat);
    EXPECT_EQ(Interpret("1 0 0 1 0 Bm"), kParserBadFormat);
}

TEST_F(Instances, LookAtNoOperandWhereMatricesAreIgnored)
{
    EXPECT_EQ(Interpret("1 0 0 (1) 0 0 Bc /a [1] (b) <00> 5 6 Bm"), kOk) << "outside any instance";
    ASSERT_EQ(Interpret("Bb"), kOk);
    EXPECT_EQ(Interpret("1 0 0 1 0 (0) Bc (1) 0 0 1 0 0 Bm"), kOk) << "before it is bound";
    ASSERT_EQ(Interpret(kBindSky), kOk);
    EXPECT_EQ(Interpret("1 0 0 1 0 (0) Bm"), kParserBadFormat) << "bound";
}

// ---- BB

struct ModeCase {
    const char *name, *mode, *calls; // after the restore
};

class GradientPaintModes : public Instances, public testing::WithParamInterface<ModeCase>
{
};

TEST_P(GradientPaintModes, UseThePath)
{
    ASSERT_EQ(Interpret("0.25 G"), kOk);
    Begin();
    const std::string line = std::string(GetParam().mode) + " BB";
    EXPECT_EQ(Calls(line), std::string("grestore; closepath; comment path") + GetParam().calls);
    EXPECT_EQ(state->instanceClosed, 1);
    EXPECT_EQ(state->instancePhase, kInstanceUnbound);
}

const ModeCase kModes[] = {
    {"ZeroDiscardsIt", "0", "; newpath"},
    {"OneStrokesIt", "1", "; setoverprint 0; setgray 0.25; stroke"},
    {"TwoStrokesItToo", "2", "; setoverprint 0; setgray 0.25; stroke"},
    {"ThreeLeavesIt", "3", ""},
    {"NegativeOnesLeaveIt", "-1", ""},
};
INSTANTIATE_TEST_SUITE_P(Gradients, GradientPaintModes, testing::ValuesIn(kModes), CaseName());

TEST_F(Instances, EndWithoutARestoreWhenNothingWasBound)
{
    ASSERT_EQ(Interpret("0.75 g F Bb"), kOk);
    EXPECT_EQ(Calls("3 BB F"), "closepath; comment path; comment path; setoverprint 0; setgray 0.75; fill")
        << "the colour is sent anew all the same";
}

TEST_F(Instances, MayEndWithoutABeginning)
{
    EXPECT_EQ(Calls("0 BB"), "closepath; comment path; newpath");
}

TEST_F(Instances, PutOffTheStrokeInAGroupButNotTheComment)
{
    ASSERT_EQ(Interpret("0.25 G *u"), kOk);
    Begin();
    EXPECT_EQ(Calls("1 BB"), "grestore; closepath; comment path");
    EXPECT_EQ(Calls("*U"), "comment path; setoverprint 0; setgray 0.25; stroke");
}

TEST_F(Instances, StayOpenWhenTheirEndFails)
{
    Begin();
    ASSERT_EQ(Interpret("BB"), kParserBadFormat);
    EXPECT_EQ(state->instanceClosed, 0);
    EXPECT_EQ(state->instancePhase, kInstanceBound);
}

// One matrix of either kind is enough for the gradient to be painted: two caps and a flat segment.
struct MatrixCase {
    const char *name, *line;
    bool paints;
};

class InstancePainting : public Instances, public testing::WithParamInterface<MatrixCase>
{
};

TEST_P(InstancePainting, NeedsAMatrix)
{
    Begin();
    ASSERT_EQ(Interpret(GetParam().line), kOk);
    const std::string calls = Calls("3 BB");
    EXPECT_EQ(calls.starts_with("setoverprint 0; gsave; "), GetParam().paints) << calls;
    EXPECT_TRUE(calls.ends_with("grestore; closepath; comment path")) << calls;
}

const MatrixCase kMatrices[] = {
    {"None", "0 0 0 0 Bh", false},
    {"AClipMatrix", "1 0 0 1 0 0 Bc", true},
    {"ASegmentMatrix", "1 0 0 1 0 0 Bm", true},
    {"Both", "1 0 0 1 0 0 Bc 1 0 0 1 0 0 Bm", true},
};
INSTANTIATE_TEST_SUITE_P(Gradients, InstancePainting, testing::ValuesIn(kMatrices), CaseName());

} // namespace
