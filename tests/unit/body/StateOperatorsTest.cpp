// Operators that set line attributes, save and restore, and those that are kept for what they once did.
#include "plugin/body/StateOperators.h"

#include "tests/unit/body/LineCases.h"

#include <gtest/gtest.h>

namespace
{

using namespace vxtest;

class StateLines : public testing::TestWithParam<LineCase>
{
};

TEST_P(StateLines, MakeTheseCalls)
{
    ExpectCalls(GetParam());
}

const LineCase kStateLines[] = {
    {"GsaveAndGrestore", "q Q", "gsave; grestore", kVXOk},
    {"GsaveWithAnOperandFails", "1 q", "", kVXBadFormat},
    {"GrestoreWithAnOperandFails", "1 Q", "", kVXBadFormat},
    {"MaskSavesTakeAnyOperands", "1 2 Mb (a) MB", "gsave; grestore", kVXOk},
    {"GrestoreForgetsTheColour", "0.5 g F Q F",
     "comment path; setoverprint 0; setgray 0.5; fill; grestore; comment path; setoverprint 0; setgray 0.5; "
     "fill",
     kVXOk},
    {"GsaveKeepsTheColour", "0.5 g F q F",
     "comment path; setoverprint 0; setgray 0.5; fill; gsave; comment path; fill", kVXOk},
    {"MaskRestoreKeepsTheColour", "0.5 g F MB F",
     "comment path; setoverprint 0; setgray 0.5; fill; grestore; comment path; fill", kVXOk},
    {"WidthIsSent", "2.5 w", "setlinewidth 2.5", kVXOk},
    {"WidthIgnoresTwoOperands", "2 3 w 1 2 m", "moveto 1 2", kVXOk},
    {"WidthIgnoresNoOperand", "w 1 2 m", "moveto 1 2", kVXOk},
    {"AStringIsNoWidth", "(2) w", "", kVXBadFormat},
    {"JoinIsSent", "1 j", "setlinejoin 1", kVXOk},
    {"JoinMustBeAnInteger", "1.0 j", "", kVXBadFormat},
    {"JoinWithTwoOperandsFails", "1 2 j", "", kVXBadFormat},
    {"CapIsSent", "2 J", "setlinecap 2", kVXOk},
    {"CapIsNotChecked", "-7 J", "setlinecap -7", kVXOk},
    {"CapMustBeAnInteger", "2.0 J", "", kVXBadFormat},
    {"CapWithoutOperandFails", "J", "", kVXBadFormat},
    {"MitreLimitIsSent", "10 M", "setmiterlimit 10", kVXOk},
    {"MitreLimitWithTwoOperandsFails", "1 10 M", "", kVXBadFormat},
    {"AStringIsNoMitreLimit", "(a) M", "", kVXBadFormat},
    {"FlatnessAndItsLikeDiscardTheirOperand", "1 A 2 D 3 i", "", kVXOk},
    {"DiscardedOperandsMayBeOfAnyKind", "(a) A /b D [1] i", "", kVXOk},
    {"LargeAWithTwoOperandsFails", "1 2 A", "", kVXBadFormat},
    {"LargeDWithoutOperandFails", "D", "", kVXBadFormat},
    {"SmallIWithoutOperandFails", "i", "", kVXBadFormat},
    {"PostScriptFragmentsAreSavesWithOneReport", "1 ` 2 ~ `", "report 2; gsave; grestore; gsave", kVXOk},
    {"PostScriptFragmentEndIsReportedToo", "~ `", "report 2; grestore; gsave", kVXOk},
    {"PostScriptFragmentEndForgetsTheColour", "0.5 g F ~ F",
     "comment path; setoverprint 0; setgray 0.5; fill; report 2; grestore; comment path; setoverprint 0; "
     "setgray 0.5; fill",
     kVXOk},
    {"PostScriptFragmentsSaveInsideGroupsToo", "*u ` ~ *U", "report 2; gsave; grestore; comment path", kVXOk},
};
INSTANTIATE_TEST_SUITE_P(State, StateLines, testing::ValuesIn(kStateLines), CaseName());

} // namespace
