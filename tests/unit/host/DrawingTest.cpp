// The graphics state: what a device receives for a run of drawing calls.
#include "host/drawing/Drawing.h"

#include "tests/support/CaseName.h"
#include "tests/unit/host/RecordingDevice.h"

#include <gtest/gtest.h>

#include <limits>

namespace vxhost
{
namespace
{

using vxtest::RecordingDevice;

struct DrawingCase {
    const char *name;
    void (*draw)(Drawing &d);
    const char *calls;
};

void Line(Drawing &d)
{
    d.MoveTo({0, 0});
    d.LineTo({9, 0});
}

void SetDash(Drawing &d, double phase, std::initializer_list<double> lengths)
{
    d.SetDash(phase, {lengths.begin(), lengths.size()});
}

const DrawingCase kPathCases[] = {
    {"AFillConsumesThePath",
     [](Drawing &d) {
         Line(d);
         d.Fill();
         d.Fill();
     },
     "fill M0 0 L9 0"},
    {"AStrokeConsumesThePath",
     [](Drawing &d) {
         Line(d);
         d.Stroke();
         d.Stroke();
     },
     "stroke M0 0 L9 0"},
    {"AClipKeepsThePath",
     [](Drawing &d) {
         Line(d);
         d.Clip();
         d.Fill();
     },
     "clip M0 0 L9 0; fill M0 0 L9 0"},
    {"NewPathForgets",
     [](Drawing &d) {
         Line(d);
         d.NewPath();
         d.Fill();
     },
     ""},
    {"AClipWithoutAPathIsHandedOn", [](Drawing &d) { d.Clip(); }, "clip"},
    {"OfTwoMovesTheLastCounts",
     [](Drawing &d) {
         d.MoveTo({1, 1});
         Line(d);
         d.Fill();
     },
     "fill M0 0 L9 0"},
    {"ALoneMoveAtTheEndStays",
     [](Drawing &d) {
         Line(d);
         d.MoveTo({5, 5});
         d.Stroke();
     },
     "stroke M0 0 L9 0 M5 5"},
    {"ALineWithoutACurrentPointMoves",
     [](Drawing &d) {
         d.LineTo({3, 4});
         d.LineTo({5, 6});
         d.Fill();
     },
     "fill M3 4 L5 6"},
    {"ACurveWithoutACurrentPointStartsAtItsFirstControlPoint",
     [](Drawing &d) {
         d.CurveTo({1, 1}, {2, 2}, {3, 3});
         d.Fill();
     },
     "fill M1 1 C1 1 2 2 3 3"},
    {"ACurveFromNowhereStartsAtItsControlPoint",
     [](Drawing &d) {
         d.CurveToFromCurrent({2, 2}, {3, 3});
         d.Fill();
     },
     "fill M2 2 C2 2 2 2 3 3"},
    {"ACurveFromCurrentTakesTheCurrentPointTwice",
     [](Drawing &d) {
         Line(d);
         d.CurveToFromCurrent({2, 2}, {3, 3});
         d.CurveToFromCurrent({4, 4}, {5, 5});
         d.Fill();
     },
     "fill M0 0 L9 0 C9 0 2 2 3 3 C3 3 4 4 5 5"},
    {"ALineAfterACloseStartsWhereTheSubpathDid",
     [](Drawing &d) {
         d.MoveTo({1, 2});
         d.LineTo({9, 0});
         d.ClosePath();
         d.LineTo({5, 5});
         d.Fill();
     },
     "fill M1 2 L9 0 Z M1 2 L5 5"},
    {"ACurveFromCurrentAfterACloseStartsThereToo",
     [](Drawing &d) {
         d.MoveTo({1, 2});
         d.LineTo({9, 0});
         d.ClosePath();
         d.CurveToFromCurrent({3, 3}, {4, 4});
         d.Fill();
     },
     "fill M1 2 L9 0 Z M1 2 C1 2 3 3 4 4"},
    {"ClosingTwiceIsClosingOnce",
     [](Drawing &d) {
         Line(d);
         d.ClosePath();
         d.ClosePath();
         d.Fill();
     },
     "fill M0 0 L9 0 Z"},
    {"ClosingNothingIsNothing",
     [](Drawing &d) {
         d.ClosePath();
         d.Fill();
     },
     ""},
    {"ClosingAMoveIsAPoint",
     [](Drawing &d) {
         d.MoveTo({1, 2});
         d.ClosePath();
         d.Stroke();
     },
     "stroke M1 2 Z"},
    {"ALineAfterAFillStartsAnew",
     [](Drawing &d) {
         Line(d);
         d.Fill();
         d.LineTo({1, 1});
         d.Stroke();
     },
     "fill M0 0 L9 0; stroke M1 1"},
};

const DrawingCase kSaveCases[] = {
    {"ThePathOfTheSaveComesBackAfterAFill",
     [](Drawing &d) {
         Line(d);
         d.Save();
         d.Fill();
         d.Restore();
         d.Stroke();
     },
     "fill M0 0 L9 0; stroke M0 0 L9 0"},
    {"FillThenClipAsDocumentsDo",
     [](Drawing &d) {
         Line(d);
         d.Save();
         d.Fill();
         d.Restore();
         d.Clip();
         d.NewPath();
         d.Fill();
     },
     "fill M0 0 L9 0; clip M0 0 L9 0"},
    {"WhatIsAddedInsideIsGoneOutside",
     [](Drawing &d) {
         Line(d);
         d.Save();
         d.LineTo({9, 9});
         d.Stroke();
         d.Restore();
         d.LineTo({0, 9});
         d.Stroke();
     },
     "stroke M0 0 L9 0 L9 9; stroke M0 0 L9 0 L0 9"},
    {"AMoveInsideDoesNotTouchTheMoveOutside",
     [](Drawing &d) {
         d.MoveTo({1, 1});
         d.Save();
         d.MoveTo({5, 5});
         d.Restore();
         d.LineTo({2, 2});
         d.Fill();
     },
     "fill M1 1 L2 2"},
    {"AClosedSubpathIsClosedAgainAfterARestore",
     [](Drawing &d) {
         Line(d);
         d.ClosePath();
         d.Save();
         d.MoveTo({5, 5});
         d.Restore();
         d.LineTo({2, 2});
         d.Fill();
     },
     "fill M0 0 L9 0 Z M0 0 L2 2"},
    {"APathBuiltAfterAFillInsideIsGoneOutside",
     [](Drawing &d) {
         Line(d);
         d.Save();
         d.Fill();
         d.MoveTo({3, 3});
         d.LineTo({4, 4});
         d.Save();
         d.Fill();
         d.MoveTo({7, 7});
         d.Restore();
         d.Stroke();
         d.Restore();
         d.Stroke();
     },
     "fill M0 0 L9 0; fill M3 3 L4 4; stroke M3 3 L4 4; stroke M0 0 L9 0"},
    {"NewPathInsideAnEmptySaveLeavesNothingOutside",
     [](Drawing &d) {
         d.Save();
         Line(d);
         d.NewPath();
         Line(d);
         d.Restore();
         d.Fill();
     },
     ""},
    {"ASaveAloneCostsTheDeviceNothing",
     [](Drawing &d) {
         d.Save();
         Line(d);
         d.Fill();
         d.Restore();
     },
     "fill M0 0 L9 0"},
    {"AClipInsideIsSavedOnce",
     [](Drawing &d) {
         d.Save();
         Line(d);
         d.Clip();
         d.Clip();
         d.Restore();
         d.Restore();
     },
     "save; clip M0 0 L9 0; clip M0 0 L9 0; restore"},
    {"AClipOutsideIsNotSaved",
     [](Drawing &d) {
         Line(d);
         d.Clip();
         d.Save();
         d.Restore();
     },
     "clip M0 0 L9 0"},
    {"EachLevelThatClipsIsSaved",
     [](Drawing &d) {
         Line(d);
         d.Save();
         d.Clip();
         d.Save();
         d.Save();
         d.Clip();
         d.Restore();
         d.Restore();
         d.Restore();
     },
     "save; clip M0 0 L9 0; save; clip M0 0 L9 0; restore; restore"},
    {"AClipAfterAnInnerRestoreIsSavedForItsOwnLevel",
     [](Drawing &d) {
         Line(d);
         d.Save();
         d.Save();
         d.Clip();
         d.Restore();
         d.Clip();
         d.Restore();
     },
     "save; clip M0 0 L9 0; restore; save; clip M0 0 L9 0; restore"},
    {"ASurplusRestoreChangesNothing",
     [](Drawing &d) {
         d.SetGray(0.5);
         Line(d);
         d.Restore();
         d.Fill();
     },
     "fill M0 0 L9 0 gray 0.5"},
    {"OpenSavesAreRestoredAtTheEnd",
     [](Drawing &d) {
         Line(d);
         d.Save();
         d.Clip();
         d.Save();
         d.Save();
         d.Clip();
         d.EndAll();
     },
     "save; clip M0 0 L9 0; save; clip M0 0 L9 0; restore; restore"},
    {"AllOfTheStateComesBack",
     [](Drawing &d) {
         d.Save();
         d.SetGray(0.5);
         d.SetOverprint(true);
         d.SetLineWidth(2);
         d.SetLineCap(1);
         d.SetLineJoin(2);
         d.SetMiterLimit(4);
         SetDash(d, 1, {3, 2});
         d.Translate(1, 1);
         Line(d);
         d.Stroke();
         d.Restore();
         Line(d);
         d.Stroke();
     },
     "stroke M1 1 L10 1 width 2 cap 1 join 2 limit 4 dash 1 [3 2] matrix 1 0 0 1 1 1 gray 0.5 overprint; "
     "stroke M0 0 L9 0"},
    {"TheDashOfALevelBelowSurvivesADashAbove",
     [](Drawing &d) {
         SetDash(d, 0, {1, 2});
         d.Save();
         SetDash(d, 0, {3});
         SetDash(d, 0, {4, 5, 6});
         Line(d);
         d.Stroke();
         d.Restore();
         Line(d);
         d.Stroke();
     },
     "stroke M0 0 L9 0 dash 0 [4 5 6]; stroke M0 0 L9 0 dash 0 [1 2]"},
    {"ADashIsInheritedByTheLevelAbove",
     [](Drawing &d) {
         SetDash(d, 0, {1, 2});
         d.Save();
         Line(d);
         d.Stroke();
         d.Restore();
     },
     "stroke M0 0 L9 0 dash 0 [1 2]"},
};

const DrawingCase kMatrixCases[] = {
    {"PointsAreMappedWhenThePathIsBuilt",
     [](Drawing &d) {
         d.MoveTo({1, 1});
         d.Translate(10, 20);
         d.LineTo({1, 1});
         d.Fill();
     },
     "fill M1 1 L11 21"},
    {"TheCurrentPointStaysOnThePage",
     [](Drawing &d) {
         d.MoveTo({1, 1});
         d.Translate(10, 0);
         d.CurveToFromCurrent({0, 0}, {5, 5});
         d.Fill();
     },
     "fill M1 1 C1 1 10 0 15 5"},
    // (1, 0) is first scaled to (2, 0), then moved.
    {"AConcatComesBeforeWhatWasThere",
     [](Drawing &d) {
         d.Translate(10, 20);
         d.Concat({2, 0, 0, 3, 0, 0});
         d.MoveTo({1, 1});
         d.LineTo({0, 0});
         d.Fill();
     },
     "fill M12 23 L10 20"},
    // (x, y) to (a x + c y + tx, b x + d y + ty) = (y·3 + 5, x·2 + 6)
    {"ConcatTakesPostScriptsOrder",
     [](Drawing &d) {
         d.Concat({0, 2, 3, 0, 5, 6});
         d.MoveTo({1, 10});
         d.LineTo({0, 0});
         d.Fill();
     },
     "fill M35 8 L5 6"},
    {"AStrokeIsToldTheMatrix",
     [](Drawing &d) {
         d.Concat({2, 0, 0, 3, 0, 0});
         Line(d);
         d.Stroke();
     },
     "stroke M0 0 L18 0 matrix 2 0 0 3 0 0"},
    {"AMatrixBeyondAllBoundsIsNotTaken",
     [](Drawing &d) {
         for (int i = 0; i < 100; ++i)
             d.Concat({32767, 0, 0, 32767, 0, 0});
         d.Concat({std::numeric_limits<double>::quiet_NaN(), 0, 0, 1, 0, 0});
         d.Concat({0, 0, 0, 0, 1, 1});
         Line(d);
         d.Fill();
     },
     // 32767 twice is 1.07e9, a third time 3.5e13 and too much; the last matrix maps all to (1, 1) of that.
     "fill M1.07368e+09 1.07368e+09 L1.07368e+09 1.07368e+09"},
};

const DrawingCase kAttributeCases[] = {
    {"ThePenStartsAsPostScriptsDoes",
     [](Drawing &d) {
         Line(d);
         d.Stroke();
     },
     "stroke M0 0 L9 0"},
    {"GrayIsClamped",
     [](Drawing &d) {
         d.SetGray(1.5);
         Line(d);
         d.Fill();
         d.SetGray(-1);
         Line(d);
         d.Fill();
     },
     "fill M0 0 L9 0 gray 1; fill M0 0 L9 0"},
    {"InksAreClamped",
     [](Drawing &d) {
         d.SetCMYKColor(-1, 0.25, 2, 1);
         Line(d);
         d.Fill();
     },
     "fill M0 0 L9 0 cmyk 0 0.25 1 1"},
    {"GrayAfterCmykIsGray",
     [](Drawing &d) {
         d.SetCMYKColor(0, 1, 1, 1);
         d.SetGray(0.5);
         Line(d);
         d.Fill();
     },
     "fill M0 0 L9 0 gray 0.5"},
    {"ANegativeWidthIsItsSize",
     [](Drawing &d) {
         d.SetLineWidth(-3);
         Line(d);
         d.Stroke();
     },
     "stroke M0 0 L9 0 width 3"},
    {"AWidthOfZeroStays",
     [](Drawing &d) {
         d.SetLineWidth(0);
         Line(d);
         d.Stroke();
     },
     "stroke M0 0 L9 0 width 0"},
    {"AMitreLimitIsAtLeastOne",
     [](Drawing &d) {
         d.SetMiterLimit(0.5);
         Line(d);
         d.Stroke();
     },
     "stroke M0 0 L9 0 limit 1"},
    {"UnknownCapsAndJoinsChangeNothing",
     [](Drawing &d) {
         d.SetLineCap(2);
         d.SetLineCap(3);
         d.SetLineCap(-1);
         d.SetLineJoin(1);
         d.SetLineJoin(3);
         d.SetLineJoin(-1);
         Line(d);
         d.Stroke();
     },
     "stroke M0 0 L9 0 cap 2 join 1"},
    {"AnOddDashIsHandedOn",
     [](Drawing &d) {
         SetDash(d, 0.5, {3});
         Line(d);
         d.Stroke();
     },
     "stroke M0 0 L9 0 dash 0.5 [3]"},
    {"ADashWithANegativeLengthIsSolid",
     [](Drawing &d) {
         SetDash(d, 1, {3, -1});
         Line(d);
         d.Stroke();
     },
     "stroke M0 0 L9 0"},
    {"ADashOfNothingIsSolid",
     [](Drawing &d) {
         SetDash(d, 1, {0, 0});
         Line(d);
         d.Stroke();
     },
     "stroke M0 0 L9 0"},
    {"AnEmptyDashEndsDashing",
     [](Drawing &d) {
         SetDash(d, 1, {3});
         SetDash(d, 1, {});
         Line(d);
         d.Stroke();
     },
     "stroke M0 0 L9 0"},
    {"AZeroAmongOthersIsADash",
     [](Drawing &d) {
         SetDash(d, 0, {0, 2});
         Line(d);
         d.Stroke();
     },
     "stroke M0 0 L9 0 dash 0 [0 2]"},
    // -1 in a pattern of 5 is 4; -7 in an odd pattern of 3, which repeats after 6, is 5.
    {"ANegativePhaseIsTheSamePlaceFurtherOn",
     [](Drawing &d) {
         SetDash(d, -1, {3, 2});
         Line(d);
         d.Stroke();
     },
     "stroke M0 0 L9 0 dash 4 [3 2]"},
    {"ANegativePhaseOfAnOddDashCountsTwoRounds",
     [](Drawing &d) {
         SetDash(d, -7, {3});
         Line(d);
         d.Stroke();
     },
     "stroke M0 0 L9 0 dash 5 [3]"},
    {"ShapesLeaveThePathAsItIs",
     [](Drawing &d) {
         const Path shape = {{Verb::Move, Verb::Line}, {{1, 1}, {2, 2}}};
         Line(d);
         d.FillShape(shape);
         d.StrokeShape(shape);
         d.ClipToShape(shape);
         d.Fill();
     },
     "fill M1 1 L2 2; stroke M1 1 L2 2; clip M1 1 L2 2; fill M0 0 L9 0"},
};

class Drawings : public testing::TestWithParam<DrawingCase>
{
};

TEST_P(Drawings, GiveTheDevice)
{
    RecordingDevice device;
    Drawing drawing(&device);
    GetParam().draw(drawing);
    EXPECT_EQ(device.calls, GetParam().calls);
}

INSTANTIATE_TEST_SUITE_P(Paths, Drawings, testing::ValuesIn(kPathCases), vxtest::CaseName());
INSTANTIATE_TEST_SUITE_P(Saves, Drawings, testing::ValuesIn(kSaveCases), vxtest::CaseName());
INSTANTIATE_TEST_SUITE_P(Matrices, Drawings, testing::ValuesIn(kMatrixCases), vxtest::CaseName());
INSTANTIATE_TEST_SUITE_P(Attributes, Drawings, testing::ValuesIn(kAttributeCases), vxtest::CaseName());

TEST(DrawingCounts, TellWhatReachedTheDevice)
{
    RecordingDevice device;
    Drawing drawing(&device);
    Line(drawing);
    drawing.CurveTo({0, 0}, {1, 1}, {2, 2});
    drawing.Fill();
    drawing.Fill();
    EXPECT_FALSE(drawing.GetCounts().cmyk);
    drawing.SetCMYKColor(0, 0, 0, 1);
    drawing.SetOverprint(true);
    EXPECT_FALSE(drawing.GetCounts().overprint) << "nothing was painted with it";
    Line(drawing);
    drawing.Clip();
    drawing.Stroke();
    drawing.CountShow();
    const Counts &counts = drawing.GetCounts();
    EXPECT_EQ(counts.fills, 1u);
    EXPECT_EQ(counts.strokes, 1u);
    EXPECT_EQ(counts.clips, 1u);
    EXPECT_EQ(counts.segments, 3u);
    EXPECT_EQ(counts.shows, 1u);
    EXPECT_TRUE(counts.gray);
    EXPECT_TRUE(counts.cmyk);
    EXPECT_TRUE(counts.overprint);
}

} // namespace
} // namespace vxhost
