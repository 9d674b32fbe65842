// Operators that build, paint, clip and group paths.
#include "plugin/body/PathOperators.h"

#include "tests/unit/body/LineCases.h"

#include <gtest/gtest.h>

namespace
{

using namespace vxtest;

class PathLines : public testing::TestWithParam<LineCase>
{
};

TEST_P(PathLines, MakeTheseCalls)
{
    ExpectCalls(GetParam());
}

const LineCase kPathLines[] = {
    {"MovetoTakesAPoint", "1 2 m", "moveto 1 2", kVXOk},
    {"MovetoTakesFractions", "-3.25 0.5 m", "moveto -3.25 0.5", kVXOk},
    {"SmallAndLargeLinetoAreOne", "1 2 l 3 4 L", "lineto 1 2; lineto 3 4", kVXOk},
    {"CurvetoKeepsPointOrder", "1 2 3 4 5 6 c", "curveto 1 2 3 4 5 6", kVXOk},
    {"CornerCurvetoIsTheSame", "1 2 3 4 5 6 C", "curveto 1 2 3 4 5 6", kVXOk},
    {"VStartsAtTheCurrentPoint", "3 4 5 6 v", "curveto-from-current 3 4 5 6", kVXOk},
    {"LargeVIsTheSame", "3 4 5 6 V", "curveto-from-current 3 4 5 6", kVXOk},
    {"YRepeatsItsLastPoint", "1 2 5 6 y", "curveto 1 2 5 6 5 6", kVXOk},
    {"LargeYIsTheSame", "1 2 5 6 Y", "curveto 1 2 5 6 5 6", kVXOk},
    {"HClosesThePath", "h", "closepath", kVXOk},
    {"LargeHDoesNothing", "H", "", kVXOk},
    {"SimpleGroupMarksDoNothing", "u U", "", kVXOk},
    {"NDiscardsThePath", "n", "comment path; newpath", kVXOk},
    {"LargeNDiscardsThePath", "N", "comment path; newpath", kVXOk},
    {"StarIsNewpathWithAnyOperands", "1 (a) /b *", "newpath", kVXOk},
    {"SpacesAndTabsSeparateOperands", "\t 1\t2   m  ", "moveto 1 2", kVXOk},
    {"ManyOperatorsShareALine", "0 0 m 9 0 l 9 9 l h n",
     "moveto 0 0; lineto 9 0; lineto 9 9; closepath; comment path; newpath", kVXOk},
    {"OperandsMayStandOnEarlierLines", "1\n2\nm", "moveto 1 2", kVXOk},
    {"CarriageReturnsEndLines", "1\r2\rm\r", "moveto 1 2", kVXOk},
    {"CarriageReturnAndLineFeedEndOneLine", "1\r\n2\r\nm\r\n", "moveto 1 2", kVXOk},
    {"IntegersBeyondFixedWrap", "40000 65537 m", "moveto -25536 1", kVXOk},
    {"BracesDoNotDeferExecution", "{ 0 0 m }", "moveto 0 0", kVXOk},
    {"CommentsEndTheLine", "1 2 m % 3 4 m", "moveto 1 2", kVXOk},
    {"CommentsNeedNoBlankBefore", "1 2 m%3 4 m\n5 6 l", "moveto 1 2; lineto 5 6", kVXOk},
    {"MovetoWithOneOperandFails", "1 m", "", kVXBadFormat},
    {"MovetoWithThreeOperandsFails", "1 2 3 m", "", kVXBadFormat},
    {"LinetoWithThreeOperandsFails", "1 2 3 l", "", kVXBadFormat},
    {"CurvetoWithFiveOperandsFails", "1 2 3 4 5 c", "", kVXBadFormat},
    {"VWithSixOperandsFails", "1 2 3 4 5 6 v", "", kVXBadFormat},
    {"YWithTwoOperandsFails", "1 2 y", "", kVXBadFormat},
    {"ClosepathWithAnOperandFails", "1 h", "", kVXBadFormat},
    {"LargeHWithAnOperandFails", "1 H", "", kVXBadFormat},
    {"SimpleGroupStartWithAnOperandFails", "1 u", "", kVXBadFormat},
    {"SimpleGroupEndWithAnOperandFails", "1 U", "", kVXBadFormat},
    {"NWithAnOperandFails", "1 n", "", kVXBadFormat},
    {"LargeNWithAnOperandFails", "1 N", "", kVXBadFormat},
    {"AStringIsNoCoordinate", "1 (2) m", "", kVXBadFormat},
    {"ANameIsNoCoordinate", "/x 2 m", "", kVXBadFormat},
    {"AnArrayIsNoCoordinate", "1 [2] m", "", kVXBadFormat},
    {"NothingIsDrawnAfterAFailure", "1 2 m 3 l 5 6 l\n7 8 l", "moveto 1 2", kVXBadFormat},
    {"FourOperandsForMovetoFailBeforeTheColour", "0 0 0 1 m 0 0 0 1 k", "", kVXBadFormat},
};
INSTANTIATE_TEST_SUITE_P(Building, PathLines, testing::ValuesIn(kPathLines), CaseName());

const LineCase kPaintingLines[] = {
    {"FillingBeforeAnyColourSendsNoColour", "f F", "closepath; comment path; comment path", kVXOk},
    {"StrokingBeforeAnyColourSendsNoColour", "s S", "closepath; comment path; comment path", kVXOk},
    {"SmallFClosesAndLargeFDoesNot", "0.5 g F f",
     "comment path; setoverprint 0; setgray 0.5; fill; closepath; comment path; fill", kVXOk},
    {"SmallSClosesAndLargeSDoesNot", "0.5 G S s",
     "comment path; setoverprint 0; setgray 0.5; stroke; closepath; comment path; stroke", kVXOk},
    {"BothFillsInAGsaveThenStrokes", "0.5 g 0 G B",
     "comment path; gsave; setoverprint 0; setgray 0.5; fill; grestore; setoverprint 0; setgray 0; stroke",
     kVXOk},
    {"SmallBClosesFirst", "0.5 g 0 G b",
     "closepath; comment path; gsave; setoverprint 0; setgray 0.5; fill; grestore; setoverprint 0; setgray "
     "0; "
     "stroke",
     kVXOk},
    {"FillWithAnOperandFails", "1 F", "", kVXBadFormat},
    {"ClosingFillWithAnOperandFails", "1 f", "", kVXBadFormat},
    {"StrokeWithAnOperandFails", "1 S", "", kVXBadFormat},
    {"ClosingStrokeWithAnOperandFails", "1 s", "", kVXBadFormat},
    {"BothWithAnOperandFails", "1 B", "", kVXBadFormat},
    {"ClosingBothWithAnOperandFails", "1 b", "", kVXBadFormat},
};
INSTANTIATE_TEST_SUITE_P(Painting, PathLines, testing::ValuesIn(kPaintingLines), CaseName());

const LineCase kGroupLines[] = {
    {"AGroupPaintsOnceWithItsLastPainting", "0.5 g 1 G *u 0 0 m 10 10 l f 0 0 m 5 5 l S *U",
     "moveto 0 0; lineto 10 10; closepath; moveto 0 0; lineto 5 5; comment path; setoverprint 0; setgray 1; "
     "stroke",
     kVXOk},
    {"AnEmptyGroupOnlyCommentsItsPath", "*u *U", "comment path", kVXOk},
    {"InnerGroupsDoNotPaint", "0.5 g *u *u F *U 1 1 l *U",
     "lineto 1 1; comment path; setoverprint 0; setgray 0.5; fill", kVXOk},
    {"AGroupMayFillAndStroke", "0.5 g 0 G *u B *U",
     "comment path; gsave; setoverprint 0; setgray 0.5; fill; grestore; setoverprint 0; setgray 0; stroke",
     kVXOk},
    {"AGroupMayBecomeTheClip", "*u 0 0 m W n *U", "moveto 0 0; comment path; clip; newpath", kVXOk},
    {"ThePaintingOfAGroupIsKeptForTheNext", "0.5 g *u F *U *u *U",
     "comment path; setoverprint 0; setgray 0.5; fill; comment path; fill", kVXOk},
    {"PaintingOutsideLeavesTheGroupsPaintingAlone", "0.5 g 0 G *u F *U S *u *U",
     "comment path; setoverprint 0; setgray 0.5; fill; comment path; setoverprint 0; setgray 0; stroke; "
     "comment path; setoverprint 0; setgray 0.5; fill",
     kVXOk},
    {"AGroupSpansLines", "0.5 g *u\n0 0 m\nF\n*U",
     "moveto 0 0; comment path; setoverprint 0; setgray 0.5; fill", kVXOk},
    {"SavingAndRestoringWaitForTheGroupsEnd", "*u q Q 1 Mb 2 MB 3 * *U q", "comment path; gsave", kVXOk},
    {"ASurplusGroupEndDefersPainting", "0.5 g *U F 0 0 m", "moveto 0 0", kVXOk},
    {"AGroupStartMakesUpForASurplusEnd", "0.5 g *U F *u F", "comment path; setoverprint 0; setgray 0.5; fill",
     kVXOk},
    {"OtherStarOperatorsDoNothing", "*w *W", "", kVXOk},
    {"GroupStartWithAnOperandFails", "1 *u", "", kVXBadFormat},
    {"GroupEndWithAnOperandFails", "1 *U", "", kVXBadFormat},
    {"StarSmallWWithAnOperandFails", "1 *w", "", kVXBadFormat},
    {"StarLargeWWithAnOperandFails", "1 *W", "", kVXBadFormat},
};
INSTANTIATE_TEST_SUITE_P(Groups, PathLines, testing::ValuesIn(kGroupLines), CaseName());

} // namespace
