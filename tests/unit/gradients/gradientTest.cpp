// Which gradient operators run in which section, and how an instance changes the painting around it.
#include "plugin/gradients/gradient.h"

#include "tests/support/CaseName.h"
#include "tests/unit/gradients/GradientContext.h"

#include <gtest/gtest.h>

namespace
{

using namespace vx;
using namespace vxtest;

TEST_F(GradientContext, StartsClosed)
{
    EXPECT_FALSE(IsInGradientDefinition(state));
    EXPECT_FALSE(IsInGradientInstance(state));
    EXPECT_FALSE(IsInGradientDefinition(nullptr));
    EXPECT_FALSE(IsInGradientInstance(nullptr));
}

enum Effect : uint8_t { kNothing, kOpensDefinition, kClosesDefinition, kOpensInstance, kBinds };

struct DispatchCase {
    const char *name, *operatorText; // what follows the "B"
    int32_t setupEnded;
    Effect effect;
    Result result;
};

class Dispatch : public GradientContext, public testing::WithParamInterface<DispatchCase>
{
};

// With no operand on the stack, operators that need some fail, and so show that they ran.
TEST_P(Dispatch, LooksAtOneLetterAndTheSection)
{
    context.setupEnded = GetParam().setupEnded;
    EXPECT_EQ(ParseGradientData(GetParam().operatorText, &context), GetParam().result);
    const Effect effect = GetParam().effect;
    EXPECT_EQ(state->definitionClosed, effect == kOpensDefinition    ? 0
                                       : effect == kClosesDefinition ? 1
                                                                     : kNeverOpened);
    EXPECT_EQ(state->instanceClosed, effect == kOpensInstance ? 0 : kNeverOpened);
    EXPECT_EQ(host.Joined(), effect == kOpensInstance ? "gsave; clip" : "");
}

const DispatchCase kDispatches[] = {
    {"BdInTheSetup", "d", 0, kOpensDefinition, kParserBadFormat},
    {"BsInTheSetup", "s", 0, kNothing, kParserBadFormat},
    {"BDInTheSetup", "D", 0, kClosesDefinition, kOk},
    {"BsWithFurtherLetters", "sxyz", 0, kNothing, kParserBadFormat},
    {"BDWithFurtherLetters", "Ds", 0, kClosesDefinition, kOk},
    {"BbInTheSetup", "b", 0, kNothing, kOk},
    {"BBInTheSetup", "B", 0, kNothing, kOk},
    {"BgInTheSetup", "g", 0, kNothing, kOk},
    {"BcInTheSetup", "c", 0, kNothing, kOk},
    {"BmInTheSetup", "m", 0, kNothing, kOk},
    {"BhInTheSetup", "h", 0, kNothing, kOk},
    {"BbInTheBody", "b", 1, kOpensInstance, kOk},
    {"BbWithFurtherLetters", "bD", 1, kOpensInstance, kOk},
    {"BBInTheBody", "B", 1, kNothing, kParserBadFormat},
    {"BgInTheBody", "g", 1, kNothing, kParserBadFormat},
    {"BcInTheBody", "c", 1, kNothing, kParserBadFormat},
    {"BmInTheBody", "m", 1, kNothing, kParserBadFormat},
    {"BhInTheBody", "h", 1, kNothing, kParserBadFormat},
    {"BdInTheBody", "d", 1, kNothing, kOk},
    {"BsInTheBody", "s", 1, kNothing, kOk},
    {"BDInTheBody", "D", 1, kNothing, kOk},
    {"AnotherLetterInTheSetup", "x", 0, kNothing, kOk},
    {"AnotherLetterInTheBody", "x", 1, kNothing, kOk},
    {"NoLetter", "", 0, kNothing, kOk},
};
INSTANTIATE_TEST_SUITE_P(Gradients, Dispatch, testing::ValuesIn(kDispatches), CaseName());

struct NoStateCase {
    const char *name, *line;
};

class WithoutGradientState : public GradientContext, public testing::WithParamInterface<NoStateCase>
{
};

TEST_P(WithoutGradientState, EveryOperatorFails)
{
    context.gradientSetup = nullptr;
    EXPECT_EQ(Calls(GetParam().line, kParserBadFormat), "");
    EXPECT_EQ(InSetup(GetParam().line), kParserBadFormat);
}

const NoStateCase kNoStates[] = {
    {"Bb", "Bb"},
    {"BB", "0 BB"},
    {"Bg", "1 (Sky) 0 0 0 100 1 0 0 1 0 0 Bg"},
    {"Bc", "1 0 0 1 0 0 Bc"},
    {"Bm", "1 0 0 1 0 0 Bm"},
    {"Bh", "0 0 0 0 Bh"},
    {"Bd", "(Sky) 0 2 Bd"},
    {"Bs", "0 0 50 0 Bs"},
    {"BD", "BD"},
};
INSTANTIATE_TEST_SUITE_P(Gradients, WithoutGradientState, testing::ValuesIn(kNoStates), CaseName());

struct InsideCase {
    const char *name, *line, *calls;
    Result result;
};

class InsideAnInstance : public GradientContext, public testing::WithParamInterface<InsideCase>
{
};

TEST_P(InsideAnInstance, PaintsLikeThis)
{
    ASSERT_EQ(Interpret("0.75 g 0.25 G Bb"), kOk);
    EXPECT_EQ(Calls(GetParam().line, GetParam().result), GetParam().calls);
}

const InsideCase kInsides[] = {
    {"SmallFIsTheGradients", "f", "", kOk},
    {"SmallFLooksAtNoOperands", "1 (a) f", "", kOk},
    {"LargeFIsTheGradients", "F", "", kOk},
    {"LargeFStillTakesNoOperand", "1 F", "", kParserBadFormat},
    {"BothBracketThemselves", "B",
     "gsave; gsave; setoverprint 0; setgray 0.75; fill; grestore; setoverprint 0; setgray 0.25; stroke; "
     "grestore",
     kOk},
    {"StrokingIsNotTouched", "S", "comment path; setoverprint 0; setgray 0.25; stroke", kOk},
};
INSTANTIATE_TEST_SUITE_P(Gradients, InsideAnInstance, testing::ValuesIn(kInsides), CaseName());

TEST_F(GradientContext, PaintingIsItselfAgainAfterTheInstance)
{
    ASSERT_EQ(Interpret("0.75 g Bb 3 BB"), kOk);
    EXPECT_EQ(Calls("F"), "comment path; setoverprint 0; setgray 0.75; fill");
}

} // namespace
