// When a gradient is painted at all, and how many stops of it. The painting itself stands in the golden documents.
#include "plugin/gradients/BlendPreview.h"

#include "tests/support/CaseName.h"
#include "tests/unit/gradients/GradientContext.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace
{

using namespace vx;
using namespace vxtest;

TEST_F(GradientContext, PreviewWithoutStateFailsAfterTheOverprintCall)
{
    context.gradientSetup = nullptr;
    context.fillOverprint = 1;
    EXPECT_EQ(AutoBlendPreview(&context), kParserBadFormat);
    EXPECT_EQ(host.Joined(), "setoverprint 1");
}

TEST_F(GradientContext, PreviewWithoutAGradientFailsAfterTheOverprintCall)
{
    EXPECT_EQ(AutoBlendPreview(&context), kParserBadFormat);
    EXPECT_EQ(host.Joined(), "setoverprint 0");
}

int overprintCalls = 0;

void CountOverprint(void * /*drawing*/, int32_t /*overprint*/)
{
    ++overprintCalls;
}

TEST_F(GradientContext, PreviewWithoutADrawingFailsAfterTheOverprintCall)
{
    ASSERT_EQ(InSetup("(Sky) 0 2 Bd 0.5 0 50 100 Bs 0.5 0 50 0 Bs BD"), kOk);
    state->instanceGradient = state->firstGradient;
    ZRKProcs onlyOverprint = {};
    onlyOverprint.entry[kZRKSetOverprint] = reinterpret_cast<ZRKProc>(CountOverprint);
    context.procs = &onlyOverprint;
    context.refCon = nullptr;
    overprintCalls = 0;
    EXPECT_EQ(AutoBlendPreview(&context), kParserBadFormat);
    EXPECT_EQ(overprintCalls, 1);
}

TEST_F(GradientContext, PreviewForgetsTheLoadedColour)
{
    ASSERT_EQ(InSetup("(Sky) 0 2 Bd 0.5 0 50 100 Bs 0.5 0 50 0 Bs BD"), kOk);
    state->instanceGradient = state->firstGradient;
    context.loadedColour = kFillColour;
    EXPECT_EQ(AutoBlendPreview(&context), kOk);
    EXPECT_EQ(context.loadedColour, kNoColour);
}

struct CountCase {
    const char *name;
    int32_t type, declared, read;
    int fills; // of stops that are all alike; linear: two caps and a strip for each pair; radial: the path, a disc each
    Result result;
};

class StopCounts : public GradientContext, public testing::WithParamInterface<CountCase>
{
};

TEST_P(StopCounts, AreBounded)
{
    const CountCase &c = GetParam();
    ASSERT_EQ(InSetup("(Sky) " + std::to_string(c.type) + ' ' + std::to_string(c.declared) + " Bd"), kOk);
    for (int i = 0; i < c.read; ++i)
        ASSERT_EQ(InSetup("0.5 0 50 0 Bs"), kOk);
    state->instanceGradient = state->firstGradient;
    EXPECT_EQ(AutoBlendPreview(&context), c.result);
    EXPECT_EQ(std::count(host.lines.begin(), host.lines.end(), "fill"), c.fills);
}

const CountCase kCounts[] = {
    {"LinearAsDeclared", 0, 3, 3, 4, kOk},
    {"LinearDeclaredTooFew", 0, 2, 3, 3, kOk},
    {"LinearDeclaredTooMany", 0, 2000000000, 3, 4, kOk},
    {"LinearOfFifty", 0, 50, 50, 51, kOk},
    {"LinearOfMoreThanFifty", 0, 60, 60, 51, kOk},
    {"LinearOfOne", 0, 1, 1, 2, kOk},
    {"LinearOfNone", 0, 2, 0, 0, kParserBadFormat},
    {"LinearDeclaredNone", 0, 0, 2, 0, kParserBadFormat},
    {"LinearDeclaredNegative", 0, -2000000000, 2, 0, kParserBadFormat},
    {"RadialAsDeclared", 1, 3, 3, 3, kOk},
    {"RadialDeclaredTooFew", 1, 2, 3, 2, kOk},
    {"RadialDeclaredTooMany", 1, 2000000000, 3, 3, kOk},
    {"RadialOfFifty", 1, 50, 50, 50, kOk},
    {"RadialOfMoreThanFifty", 1, 60, 60, 50, kOk},
    {"RadialOfOne", 1, 1, 1, 1, kOk},
    {"RadialOfNone", 1, 2, 0, 0, kParserBadFormat},
    {"RadialDeclaredNegative", 1, -1, 2, 0, kParserBadFormat},
};
INSTANTIATE_TEST_SUITE_P(Gradients, StopCounts, testing::ValuesIn(kCounts), CaseName());

} // namespace
