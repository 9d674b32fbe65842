// Which colour the host is given and when, what clipping adds to painting, and dashes.
#include "plugin/body/Paint.h"

#include "tests/unit/body/LineCases.h"

#include <gtest/gtest.h>

namespace
{

using namespace vxtest;

class PaintLines : public testing::TestWithParam<LineCase>
{
};

TEST_P(PaintLines, MakeTheseCalls)
{
    ExpectCalls(GetParam());
}

const LineCase kClipLines[] = {
    {"PendingClipAloneMakesNoCall", "W", "", kVXOk},
    {"PendingClipWithAnOperandFails", "1 W", "", kVXBadFormat},
    {"ClipThenDiscardClipsOnce", "W n n", "comment path; clip; newpath; comment path; newpath", kVXOk},
    // The fill comes first, in a gsave of its own; then the path becomes the clip, and since grestore took the
    // colour away it is sent again, so that the second fill need not send it.
    {"ClipThenFillFillsFirst", "0.5 g W F F",
     "comment path; gsave; setoverprint 0; setgray 0.5; fill; grestore; clip; newpath; setoverprint 0; "
     "setgray 0.5; comment path; fill",
     kVXOk},
    {"ClipThenStrokeStrokesFirst", "0.5 G W S S",
     "comment path; gsave; setoverprint 0; setgray 0.5; stroke; grestore; clip; newpath; setoverprint 0; "
     "setgray 0.5; comment path; stroke",
     kVXOk},
    {"ClipThenFillBeforeAnyColourStillClips", "W F", "comment path; gsave; grestore; clip; newpath", kVXOk},
    // The fill's half runs the whole clip sequence inside the outer gsave, the stroke's half runs it outside.
    {"ClipThenBothClipsTwice", "0.5 g 0 G W B S",
     "comment path; gsave; gsave; setoverprint 0; setgray 0.5; fill; grestore; clip; newpath; setoverprint "
     "0; "
     "setgray 0.5; grestore; gsave; setoverprint 0; setgray 0; stroke; grestore; clip; newpath; "
     "setoverprint 0; setgray 0; comment path; stroke",
     kVXOk},
    {"PendingClipOutlivesItsLine", "W\n0 0 m\nn", "moveto 0 0; comment path; clip; newpath", kVXOk},
    {"PendingClipOutlivesGrestore", "W Q n", "grestore; comment path; clip; newpath", kVXOk},
};
INSTANTIATE_TEST_SUITE_P(Clips, PaintLines, testing::ValuesIn(kClipLines), CaseName());

const LineCase kColourLines[] = {
    {"GrayIsSentOnce", "0.5 g F F", "comment path; setoverprint 0; setgray 0.5; fill; comment path; fill",
     kVXOk},
    {"TheSameGrayAgainIsSentAgain", "0.5 g F 0.5 g F",
     "comment path; setoverprint 0; setgray 0.5; fill; comment path; setoverprint 0; setgray 0.5; fill",
     kVXOk},
    {"ColoursAloneMakeNoCall", "0.5 g 1 G 0 0 0 1 k 1 0 0 0 K 1 O 1 R p P", "", kVXOk},
    {"StrokeAfterFillSendsItsColourAndBack", "0.25 g 0.75 G F S F",
     "comment path; setoverprint 0; setgray 0.25; fill; comment path; setoverprint 0; setgray 0.75; stroke; "
     "comment path; setoverprint 0; setgray 0.25; fill",
     kVXOk},
    {"StrokeColourIsSentOnce", "0.75 G S S",
     "comment path; setoverprint 0; setgray 0.75; stroke; comment path; stroke", kVXOk},
    {"AStrokeColourForgetsTheLoadedFillColour", "0.5 g F 1 G F",
     "comment path; setoverprint 0; setgray 0.5; fill; comment path; setoverprint 0; setgray 0.5; fill",
     kVXOk},
    {"GrayMustBeANumber", "(a) g", "", kVXBadFormat},
    {"GrayWithoutOperandFails", "g", "", kVXBadFormat},
    {"GrayWithTwoOperandsFails", "0 1 g", "", kVXBadFormat},
    {"StrokeGrayWithTwoOperandsFails", "0 1 G", "", kVXBadFormat},
    {"FillColourIsFourInks", "0 0.25 0.5 1 k F",
     "comment path; setoverprint 0; setcmykcolor 0 0.25 0.5 1; fill", kVXOk},
    {"FillColourIsSentOnce", "0 0 0 1 k F F",
     "comment path; setoverprint 0; setcmykcolor 0 0 0 1; fill; comment path; fill", kVXOk},
    {"StrokeColourIsFourInks", "1 0.5 0.25 0 K S",
     "comment path; setoverprint 0; setcmykcolor 1 0.5 0.25 0; stroke", kVXOk},
    {"FillAndStrokeInksAreKeptApart", "1 0 0 0 k 0 1 0 0 K F S",
     "comment path; setoverprint 0; setcmykcolor 1 0 0 0; fill; comment path; setoverprint 0; "
     "setcmykcolor 0 1 0 0; stroke",
     kVXOk},
    {"InksAreNotClamped", "2 -1 0 300 k F", "comment path; setoverprint 0; setcmykcolor 2 -1 0 300; fill",
     kVXOk},
    {"FiveOperandsForFourFail", "0 1 0 0 0 k", "", kVXBadFormat},
    {"ThreeOperandsForFourFail", "0 1 0 k", "", kVXBadFormat},
    {"FiveOperandsForFourStrokeInksFail", "0 1 0 0 0 K", "", kVXBadFormat},
    {"InksMustBeNumbers", "0 (a) 0 0 k", "", kVXBadFormat},
    {"TintOfZeroIsTheFullColour", "1 0.5 0 0.25 (Spot) 0 x F",
     "comment path; setoverprint 0; setcmykcolor 1 0.5 0 0.25; fill", kVXOk},
    {"TintLessensEveryInk", "1 0.5 0 0.25 (Spot) 0.5 x F",
     "comment path; setoverprint 0; setcmykcolor 0.5 0.25 0 0.125; fill", kVXOk},
    {"TintOfOneIsNoInk", "1 0.5 0 0.25 (Spot) 1 x F",
     "comment path; setoverprint 0; setcmykcolor 0 0 0 0; fill", kVXOk},
    {"StrokeTintLessensEveryInk", "1 0.5 0 0.25 (Spot) 0.75 X S",
     "comment path; setoverprint 0; setcmykcolor 0.25 0.125 0 0.0625; stroke", kVXOk},
    {"SpotNamesMayHoldParentheses", "0 0 0 1 (a(b)c\\)) 0 x F",
     "comment path; setoverprint 0; setcmykcolor 0 0 0 1; fill", kVXOk},
    {"SpotNamesMayBeHexadecimal", "0 0 0 1 <53 70> 0 x F",
     "comment path; setoverprint 0; setcmykcolor 0 0 0 1; fill", kVXOk},
    {"SpotNamesMayNotBeLiteralNames", "0 0 0 1 /Spot 0 x", "", kVXBadFormat},
    {"SpotColourWithFiveOperandsFails", "0 0 0 1 (Spot) x", "", kVXBadFormat},
    {"SpotStrokeWithSevenOperandsFails", "0 0 0 0 1 (Spot) 0 X", "", kVXBadFormat},
    {"SpotTintMustBeANumber", "0 0 0 1 (Spot) (0) x", "", kVXBadFormat},
    {"OverprintIsSentBeforeTheColour", "1 O 0.5 g F", "comment path; setoverprint 1; setgray 0.5; fill",
     kVXOk},
    {"AnyNonZeroOverprintIsOne", "-2 O 0 0 0 1 k F",
     "comment path; setoverprint 1; setcmykcolor 0 0 0 1; fill", kVXOk},
    {"OverprintForgetsTheColour", "0.5 g F 1 O F 0 O F",
     "comment path; setoverprint 0; setgray 0.5; fill; comment path; setoverprint 1; setgray 0.5; fill; "
     "comment path; setoverprint 0; setgray 0.5; fill",
     kVXOk},
    {"StrokeOverprintIsItsOwn", "1 R 0.5 g 0.5 G F S",
     "comment path; setoverprint 0; setgray 0.5; fill; comment path; setoverprint 1; setgray 0.5; stroke",
     kVXOk},
    {"StrokeOverprintGoesWithInks", "1 R 0 0 0 1 K S",
     "comment path; setoverprint 1; setcmykcolor 0 0 0 1; stroke", kVXOk},
    {"OverprintMustBeAnInteger", "1.0 O", "", kVXBadFormat},
    {"StrokeOverprintMustBeAnInteger", "(a) R", "", kVXBadFormat},
    {"OverprintWithoutOperandFails", "O", "", kVXBadFormat},
    {"StrokeOverprintWithTwoOperandsFails", "0 1 R", "", kVXBadFormat},
    {"PatternFillsInHalfGrayWithOneReport", "1 0 0 1 p F F",
     "comment path; report 1; setoverprint 0; setgray 0.5; fill; comment path; setoverprint 0; setgray 0.5; "
     "fill",
     kVXOk},
    {"PatternTakesOverprintOff", "1 O 1 R p P F S",
     "comment path; report 1; setoverprint 0; setgray 0.5; fill; comment path; setoverprint 0; setgray 0.5; "
     "stroke",
     kVXOk},
    {"PatternStrokesAreReportedAsPatterns", "(Bricks) P s",
     "closepath; comment path; report 1; setoverprint 0; setgray 0.5; stroke", kVXOk},
    {"PatternLeavesTheGrayAlone", "0.25 g p F 0.25 g F",
     "comment path; report 1; setoverprint 0; setgray 0.5; fill; comment path; setoverprint 0; setgray 0.25; "
     "fill",
     kVXOk},
};
INSTANTIATE_TEST_SUITE_P(Colours, PaintLines, testing::ValuesIn(kColourLines), CaseName());

const LineCase kDashLines[] = {
    {"DashKeepsDocumentOrder", "[1 2 3] 0 d", "setdash 0 [1 2 3]", kVXOk},
    {"DashTakesFractionsAndAPhase", "[0.5 -1] 2.5 d", "setdash 2.5 [0.5 -1]", kVXOk},
    {"EmptyDashIsASolidLine", "[] 0 d", "setdash 0 []", kVXOk},
    {"EmptyDashWithABlankIsOneToo", "[ ]1 d", "setdash 1 []", kVXOk},
    {"DashArraysMaySpanLines", "[1\n2\n] 0\nd", "setdash 0 [1 2]", kVXOk},
    {"DashWithoutArrayFails", "3 d", "", kVXBadFormat},
    {"DashWithoutOperandsFails", "d", "", kVXBadFormat},
    {"DashWithoutPhaseFails", "[1 2] d", "", kVXBadFormat},
    {"DashWithAnOperandTooManyFails", "1 [1 2] 0 d", "", kVXBadFormat},
    {"DashOfANumberFails", "1 0 d", "", kVXBadFormat},
    {"DashOfAStringFails", "(a) 0 d", "", kVXBadFormat},
    {"DashLengthsMustBeNumbers", "[1 (a)] 0 d", "", kVXBadFormat},
    {"DashArraysDoNotNest", "[1 [2]] 0 d", "", kVXBadFormat},
    {"DashPhaseMustBeANumber", "[1] (a) d", "", kVXBadFormat},
};
INSTANTIATE_TEST_SUITE_P(Dashes, PaintLines, testing::ValuesIn(kDashLines), CaseName());

} // namespace
