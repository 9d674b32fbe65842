// What the operators of the setup section leave in the list of gradients.
#include "plugin/gradients/Definitions.h"

#include "tests/support/CaseName.h"
#include "tests/unit/gradients/GradientContext.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using namespace vx;
using namespace vxtest;

constexpr Fixed kQuarter = 0x4000;
constexpr Fixed kHalf = 0x8000;
constexpr Fixed kThreeQuarters = 0xC000;

const std::string k99Bytes(99, 'n');
const std::string k100Bytes(100, 'n');

// ---- Bd, BD

struct BeginCase {
    const char *name;
    std::string line;
    std::string gradientName;
    int32_t type, stopCount;
};

class Definitions : public GradientContext, public testing::WithParamInterface<BeginCase>
{
};

TEST_P(Definitions, Begin)
{
    ASSERT_EQ(InSetup(GetParam().line), kOk);
    ASSERT_EQ(state->gradientCount, 1);
    const GradientObject *gradient = state->firstGradient;
    EXPECT_EQ(gradient, state->lastGradient);
    EXPECT_EQ(gradient->next, nullptr);
    EXPECT_EQ(std::string(gradient->name), GetParam().gradientName);
    EXPECT_EQ(gradient->nameLength, static_cast<int32_t>(GetParam().gradientName.size()));
    EXPECT_EQ(gradient->gradientType, GetParam().type);
    EXPECT_EQ(gradient->stopCount, GetParam().stopCount);
    EXPECT_EQ(gradient->stopsRead, 0);
    EXPECT_EQ(gradient->firstStop, nullptr);
    EXPECT_EQ(gradient->lastStop, nullptr);
    EXPECT_TRUE(IsInGradientDefinition(state));
}

const BeginCase kBegins[] = {
    {"Linear", "(Sky) 0 2 Bd", "Sky", 0, 2},
    {"Radial", "(Sun set) 1 3 Bd", "Sun set", 1, 3},
    {"AnyNumbers", "(a) -7 -2000000000 Bd", "a", -7, -2000000000},
    {"ANameInHex", "<536B79> 0 2 Bd", "Sky", 0, 2},
    {"AnEmptyName", "() 0 2 Bd", "", 0, 2},
    {"ANameOf99Bytes", "(" + k99Bytes + ") 0 2 Bd", k99Bytes, 0, 2},
};
INSTANTIATE_TEST_SUITE_P(Gradients, Definitions, testing::ValuesIn(kBegins), CaseName());

struct BadBeginCase {
    const char *name;
    std::string line;
    int32_t gradientCount;
};

class BadDefinitions : public GradientContext, public testing::WithParamInterface<BadBeginCase>
{
};

TEST_P(BadDefinitions, Fail)
{
    EXPECT_EQ(InSetup(GetParam().line), kParserBadFormat);
    EXPECT_EQ(state->gradientCount, GetParam().gradientCount);
    EXPECT_TRUE(IsInGradientDefinition(state)) << "it opens before it looks at its operands";
}

// A gradient is listed once it has its three operands, whatever they are.
const BadBeginCase kBadBegins[] = {
    {"WithoutOperands", "Bd", 0},
    {"WithTwoOperands", "0 2 Bd", 0},
    {"WithFourOperands", "1 (Sky) 0 2 Bd", 0},
    {"WithAFractionOfStops", "(Sky) 0 2.5 Bd", 1},
    {"WithAStringForType", "(Sky) (0) 2 Bd", 1},
    {"WithALiteralName", "/Sky 0 2 Bd", 1},
    {"WithANumberForName", "3 0 2 Bd", 1},
    {"WithANameOf100Bytes", "(" + k100Bytes + ") 0 2 Bd", 1},
};
INSTANTIATE_TEST_SUITE_P(Gradients, BadDefinitions, testing::ValuesIn(kBadBegins), CaseName());

TEST_F(GradientContext, DefinitionsAreListedInOrder)
{
    ASSERT_EQ(InSetup("(a) 0 2 Bd BD (b) 1 2 Bd BD (a) 0 3 Bd BD"), kOk);
    ASSERT_EQ(state->gradientCount, 3);
    const GradientObject *first = state->firstGradient;
    EXPECT_STREQ(first->name, "a");
    EXPECT_STREQ(first->next->name, "b");
    EXPECT_EQ(first->next->next, state->lastGradient);
    EXPECT_EQ(state->lastGradient->stopCount, 3);
    EXPECT_EQ(state->lastGradient->next, nullptr);
}

TEST_F(GradientContext, DefinitionsCloseWithAnyOperands)
{
    ASSERT_EQ(InSetup("(a) 0 2 Bd"), kOk);
    EXPECT_EQ(state->definitionClosed, 0);
    ASSERT_EQ(InSetup("1 (x) BD"), kOk);
    EXPECT_EQ(state->definitionClosed, 1);
}

TEST_F(GradientContext, DefinitionsDropOpeningBracketsOnly)
{
    ASSERT_EQ(InSetup("(a) 0 2 Bd [ 0.5 0 [ 50 100 Bs"), kOk);
    EXPECT_EQ(state->lastGradient->lastStop->colour.gray, kHalf);
    EXPECT_EQ(InSetup("0.5 0 50 100 ] Bs"), kParserBadFormat) << "there is no mark for it";
}

TEST_F(GradientContext, DefinitionsMayHideTheirOperators)
{
    ASSERT_EQ(InSetup("(a) 0 1 %_Bd and more"), kOk);
    ASSERT_EQ(InSetup("0.5 0 50 100 %_Bs"), kOk);
    ASSERT_EQ(InSetup("%_BDs"), kOk) << "exactly two bytes are the operator";
    EXPECT_EQ(state->lastGradient->stopsRead, 1);
    EXPECT_EQ(state->definitionClosed, 1);
    EXPECT_EQ(InSetup("(b) 0 1 Bds"), kOk) << "a written word of three letters is no operator";
    EXPECT_EQ(state->gradientCount, 1);
}

TEST_F(GradientContext, DefinitionsFailWithoutMemory)
{
    host.failAllocation = 1;
    EXPECT_EQ(InSetup("(a) 0 2 Bd"), kParserBadFormat);
    EXPECT_EQ(state->gradientCount, 0);
    EXPECT_EQ(state->firstGradient, nullptr);
}

// ---- Bs

struct StopCase {
    const char *name;
    std::string line;
    Fixed rampPoint, midPoint;
    int32_t kind;
    Fixed gray, cyan, magenta, yellow, black, tint;
    std::string customName;
};

class Stops : public GradientContext, public testing::WithParamInterface<StopCase>
{
};

TEST_P(Stops, Hold)
{
    const StopCase &c = GetParam();
    ASSERT_EQ(InSetup("(Sky) 0 2 Bd"), kOk);
    ASSERT_EQ(InSetup(c.line), kOk);
    ASSERT_EQ(state->lastGradient->stopsRead, 1);
    const BlendStopObject *stop = state->lastGradient->firstStop;
    EXPECT_EQ(stop->rampPoint, c.rampPoint);
    EXPECT_EQ(stop->midPoint, c.midPoint);
    EXPECT_EQ(stop->colorKind, c.kind);
    EXPECT_EQ(stop->colour.gray, c.gray);
    EXPECT_EQ(stop->colour.process.cyan, c.cyan);
    EXPECT_EQ(stop->colour.process.magenta, c.magenta);
    EXPECT_EQ(stop->colour.process.yellow, c.yellow);
    EXPECT_EQ(stop->colour.process.black, c.black);
    EXPECT_EQ(stop->colour.tint, c.tint);
    EXPECT_EQ(std::string(stop->customName), c.customName);
}

constexpr Fixed k50 = IntegerToFixed(50);
constexpr Fixed k100 = IntegerToFixed(100);

const StopCase kStops[] = {
    {"Gray", "0.25 0 50 100 Bs", k100, k50, 0, kQuarter, 0, 0, 0, 0, 0, ""},
    {"GrayOutOfRange", "-3 0 50.5 -200 Bs", IntegerToFixed(-200), k50 + kHalf, 0, IntegerToFixed(-3), 0, 0, 0,
     0, 0, ""},
    {"Process", "0.25 0.5 0.75 1 1 50 100 Bs", k100, k50, 1, 0, kQuarter, kHalf, kThreeQuarters, kFixedOne, 0,
     ""},
    {"Custom", "0.25 0.5 0.75 1 (Rose) 0.5 3 50 100 Bs", k100, k50, 3, 0, kQuarter, kHalf, kThreeQuarters,
     kFixedOne, kHalf, "Rose"},
    {"CustomWithANameOf99Bytes", "0 0 0 1 (" + k99Bytes + ") 0.5 3 50 100 Bs", k100, k50, 3, 0, 0, 0, 0,
     kFixedOne, kHalf, k99Bytes},
    {"CustomWithALongerName", "0 0 0 1 (" + k100Bytes + "xyz) 0.5 3 50 100 Bs", k100, k50, 3, 0, 0, 0, 0,
     kFixedOne, kHalf, k99Bytes},
    {"NoColour", "2 50 100 Bs", k100, k50, 2, 0, 0, 0, 0, 0, 0, ""},
    {"NoColourLeavesOperandsAlone", "0.25 (x) 2 50 100 Bs", k100, k50, 2, 0, 0, 0, 0, 0, 0, ""},
    {"AnUnknownKindReadsNothing", "0.25 -9 50 100 Bs", k100, k50, -9, 0, 0, 0, 0, 0, 0, ""},
    // Operands that do not fit are no error: the stop stays, with what was read before the misfit.
    {"GrayWithoutOperand", "0 50 100 Bs", k100, k50, 0, 0, 0, 0, 0, 0, 0, ""},
    {"GrayWithTwoOperands", "0.25 0.25 0 50 100 Bs", k100, k50, 0, 0, 0, 0, 0, 0, 0, ""},
    {"GrayOfAString", "(x) 0 50 100 Bs", k100, k50, 0, 0, 0, 0, 0, 0, 0, ""},
    {"ProcessWithThreeOperands", "1 1 1 1 50 100 Bs", k100, k50, 1, 0, 0, 0, 0, 0, 0, ""},
    {"ProcessWithAStringIsReadUpToIt", "0.25 (x) 0.75 1 1 50 100 Bs", k100, k50, 1, 0, 0, 0, kThreeQuarters,
     kFixedOne, 0, ""},
    {"CustomWithFiveOperands", "1 1 1 (x) 0.5 3 50 100 Bs", k100, k50, 3, 0, 0, 0, 0, 0, 0, ""},
    {"CustomWithALiteralNameKeepsItsTint", "1 1 1 1 /x 0.5 3 50 100 Bs", k100, k50, 3, 0, 0, 0, 0, 0, kHalf,
     ""},
};
INSTANTIATE_TEST_SUITE_P(Gradients, Stops, testing::ValuesIn(kStops), CaseName());

struct BadStopCase {
    const char *name, *line;
};

class BadStops : public GradientContext, public testing::WithParamInterface<BadStopCase>
{
};

TEST_P(BadStops, FailButStayListed)
{
    ASSERT_EQ(InSetup("(Sky) 0 2 Bd"), kOk);
    EXPECT_EQ(InSetup(GetParam().line), kParserBadFormat);
    EXPECT_EQ(state->lastGradient->stopsRead, 1);
    EXPECT_NE(state->lastGradient->firstStop, nullptr);
}

const BadStopCase kBadStops[] = {
    {"WithoutOperands", "Bs"},
    {"WithoutKind", "50 100 Bs"},
    {"WithAFractionForKind", "0.5 0.5 50 100 Bs"},
    {"WithAStringForKind", "0.5 (0) 50 100 Bs"},
    {"WithAStringForMidpoint", "0.5 0 (50) 100 Bs"},
    {"WithAStringForRampPoint", "0.5 0 50 (100) Bs"},
};
INSTANTIATE_TEST_SUITE_P(Gradients, BadStops, testing::ValuesIn(kBadStops), CaseName());

TEST_F(GradientContext, StopsBeforeAnyDefinitionFailWithoutAsking)
{
    const int before = host.allocations;
    EXPECT_EQ(InSetup("0.5 0 50 100 Bs"), kParserBadFormat);
    EXPECT_EQ(host.allocations, before);
}

TEST_F(GradientContext, StopsFailWithoutMemory)
{
    ASSERT_EQ(InSetup("(Sky) 0 2 Bd"), kOk);
    host.failAllocation = 1;
    EXPECT_EQ(InSetup("0.5 0 50 100 Bs"), kParserBadFormat);
    EXPECT_EQ(state->lastGradient->stopsRead, 0);
    EXPECT_EQ(state->lastGradient->firstStop, nullptr);
}

TEST_F(GradientContext, StopsBelongToTheLastDefinition)
{
    ASSERT_EQ(InSetup("(a) 0 2 Bd 0 0 50 0 Bs BD (b) 1 2 Bd 0 0 50 0 Bs BD 0 0 50 100 Bs"), kOk);
    EXPECT_EQ(state->firstGradient->stopsRead, 1);
    EXPECT_EQ(state->lastGradient->stopsRead, 2);
}

struct OrderCase {
    const char *name;
    int32_t type;
    std::vector<int32_t> rampPoints; // of the list, in percent
};

class StopOrder : public GradientContext, public testing::WithParamInterface<OrderCase>
{
};

TEST_P(StopOrder, DependsOnTheType)
{
    ASSERT_EQ(InSetup("(Sky) " + std::to_string(GetParam().type) + " 3 Bd"), kOk);
    ASSERT_EQ(InSetup("0 0 50 0 Bs 0 0 50 50 Bs 0 0 50 100 Bs"), kOk);
    std::vector<int32_t> rampPoints;
    const BlendStopObject *last = nullptr;
    for (const BlendStopObject *stop = state->lastGradient->firstStop; stop != nullptr; stop = stop->next) {
        rampPoints.push_back(stop->rampPoint / kFixedOne);
        last = stop;
    }
    EXPECT_EQ(rampPoints, GetParam().rampPoints);
    EXPECT_EQ(last, state->lastGradient->lastStop);
    EXPECT_EQ(state->lastGradient->stopsRead, 3);
}

const OrderCase kOrders[] = {
    {"LinearIsBackToFront", 0, {100, 50, 0}},
    {"RadialKeepsTheOrder", 1, {0, 50, 100}},
    {"AnotherTypeIsBackToFront", 2, {100, 50, 0}},
    {"ANegativeTypeIsBackToFront", -1, {100, 50, 0}},
};
INSTANTIATE_TEST_SUITE_P(Gradients, StopOrder, testing::ValuesIn(kOrders), CaseName());

} // namespace
