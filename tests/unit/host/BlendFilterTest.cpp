// What reaches a device behind the filter: blends as one shading, everything else as it came.
#include "host/drawing/BlendFilter.h"

#include "host/Plugin.h"
#include "host/fonts/FixedFontList.h"
#include "tests/support/CaseName.h"
#include "tests/unit/host/BlendSteps.h"
#include "tests/unit/host/RecordingDevice.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>

namespace vxhost
{
namespace
{

using vxtest::Cmyk;
using vxtest::Disc;
using vxtest::FillDiscs;
using vxtest::FillStrips;
using vxtest::Gray;
using vxtest::RecordingDevice;
using vxtest::Strip;

using Draw = std::function<void(Device *)>;

std::string DrawFiltered(const Draw &draw)
{
    RecordingDevice device;
    BlendFilter filter(&device);
    draw(&filter);
    EXPECT_FALSE(filter.EndPage());
    return device.calls;
}

std::string DrawDirectly(const Draw &draw)
{
    RecordingDevice device;
    draw(&device);
    EXPECT_FALSE(device.EndPage());
    return device.calls;
}

// The segment is 40 wide and 80 high, from (10, 5) on.
constexpr Matrix kSegment = {40, 0, 0, 80, 10, 5};
constexpr Matrix kNextSegment = {60, 0, 0, 80, 50, 5};

const Paint kBlack = Gray(0), kWhite = Gray(1);
const Path kTriangle = {{Verb::Move, Verb::Line, Verb::Line}, {{0, 0}, {90, 0}, {90, 90}}};

struct BlendCase {
    const char *name;
    Draw draw;
    const char *calls;
};

void PrintTo(const BlendCase &c, std::ostream *out)
{
    *out << c.name;
}

const BlendCase kBlends[] = {
    {"BlackToWhite", [](Device *to) { FillStrips(to, kSegment, 100, kBlack, kWhite); },
     "shade 40 0 0 80 10 5 to 1 100 gray 0 .. gray 1; end"},
    {"ThreeStepsAreEnough", [](Device *to) { FillStrips(to, kSegment, 3, Gray(0.5), Gray(0.53)); },
     "shade 40 0 0 80 10 5 to 1 3 gray 0.5 .. gray 0.53; end"},
    // The parameter's steps are 1337/65536, 49 of them 65513/65536.
    {"TurnedAndSkewed",
     [](Device *to) {
         FillStrips(to, {30, 40, -50, 20, 7, -9}, 50, kWhite, Gray(0.5));
     },
     "shade 30 40 -50 20 7 -9 to 1 50 gray 1 .. gray 0.500175; end"},
    {"OfInks", [](Device *to) { FillStrips(to, kSegment, 65, Cmyk(0, 1, 0.5, 0), Cmyk(0.25, 0.35, 0.5, 0)); },
     "shade 40 0 0 80 10 5 to 1 65 cmyk 0 1 0.5 0 .. cmyk 0.25 0.35 0.5 0; end"},
    {"WithTheMidpointAt75", [](Device *to) { FillStrips(to, kSegment, 100, kBlack, kWhite, 2.40942); },
     "shade 40 0 0 80 10 5 to 1 100 gray 0 .. gray 1; end"},
    // With the midpoint at an end all of the change is between two strips.
    {"AJumpStaysAnEdge", [](Device *to) { FillStrips(to, kSegment, 65, kBlack, Gray(0.65), 1e9); },
     "shade 40 0 0 80 10 5 to 0.984375 gray 0 to 1 gray 0.65; end"},
    // The caps reach 8 out on either side, so all is 40 + 2 · 8 long: 1/7 and 6/7. The second is drawn towards the ramp.
    {"BetweenCaps",
     [](Device *to) {
         to->FillPath(Strip({8, 0, 0, 80, 2, 5}, 0, 1), kBlack);
         FillStrips(to, kSegment, 100, kBlack, kWhite);
         to->FillPath(Strip({-8, 0, 0, 80, 58, 5}, 0, 1), kWhite);
     },
     "shade 56 0 0 80 2 5 to 0.142857 gray 0 to 0.857143 100 gray 0 .. gray 1 to 1 gray 1; end"},
    // The caps are drawn upside down, and on their side from the far corner.
    {"BetweenTurnedCaps",
     [](Device *to) {
         to->FillPath(Strip({8, 0, 0, -80, 2, 85}, 0, 1), kBlack);
         FillStrips(to, kSegment, 100, kBlack, kWhite);
         to->FillPath(Strip({0, -80, -8, 0, 58, 85}, 0, 1), kWhite);
     },
     "shade 56 0 0 80 2 5 to 0.142857 gray 0 to 0.857143 100 gray 0 .. gray 1 to 1 gray 1; end"},
    // 40 and 60 long.
    {"ThreeStops",
     [](Device *to) {
         FillStrips(to, kSegment, 30, kBlack, Gray(0.3));
         FillStrips(to, kNextSegment, 65, Gray(0.3), Gray(0.95));
     },
     "shade 100 0 0 80 10 5 to 0.4 30 gray 0 .. gray 0.3 to 1 65 gray 0.3 .. gray 0.95; end"},
    {"ThereAndBack",
     [](Device *to) {
         FillStrips(to, kSegment, 65, kBlack, Gray(0.65));
         FillStrips(to, {40, 0, 0, 80, 50, 5}, 65, Gray(0.65), kBlack);
     },
     "shade 80 0 0 80 10 5 to 0.5 65 gray 0 .. gray 0.65 to 1 65 gray 0.65 .. gray 0; end"},
    // The second segment is the other way up, in one colour, and the third changes by less than a step.
    {"SegmentsOfOneColour",
     [](Device *to) {
         FillStrips(to, kSegment, 65, kBlack, Gray(0.65));
         to->FillPath(Strip({20, 0, 0, -80, 50, 85}, 0, 1), Gray(0.65));
         to->FillPath(Strip({20, 0, 0, 80, 70, 5}, 0, 1), Gray(0.66));
     },
     "shade 80 0 0 80 10 5 to 0.5 65 gray 0 .. gray 0.65 to 0.75 gray 0.65 to 1 gray 0.66; end"},
    // Each number of the matrix is off by less than half of a thousandth.
    {"JointsOfThreeDecimals",
     [](Device *to) {
         FillStrips(to, kSegment, 65, kBlack, Gray(0.65));
         FillStrips(to, {40.0005, 0.0005, -0.0005, 80.0005, 50.0005, 4.9995}, 65, Gray(0.65), kBlack);
     },
     "shade 80.001 0 0 80 10 5 to 0.499994 65 gray 0 .. gray 0.65 to 1 65 gray 0.65 .. gray 0; end"},
    {"JointsThatGapStay",
     [](Device *to) {
         FillStrips(to, kSegment, 65, kBlack, Gray(0.65));
         FillStrips(to, {40, 0, 0, 80, 50.01, 5}, 65, Gray(0.65), kBlack);
     },
     "shade 40 0 0 80 10 5 to 1 65 gray 0 .. gray 0.65; shade 40 0 0 80 50.01 5 to 1 65 gray 0.65 .. gray 0; "
     "end"},
    {"ACapOfAnotherHeightStays",
     [](Device *to) {
         to->FillPath(Strip({8, 0, 0, 82, 2, 4}, 0, 1), kBlack);
         FillStrips(to, kSegment, 65, kBlack, Gray(0.65));
     },
     "fill M2 4 L10 4 L10 86 L2 86 Z; shade 40 0 0 80 10 5 to 1 65 gray 0 .. gray 0.65; end"},
    {"ACapOfAnotherSkewStays",
     [](Device *to) {
         FillStrips(to, kSegment, 65, kBlack, Gray(0.65));
         to->FillPath(Strip({8, 1, 0, 80, 50, 5}, 0, 1), Gray(0.65));
     },
     "shade 40 0 0 80 10 5 to 1 65 gray 0 .. gray 0.65; fill M50 5 L58 6 L58 86 L50 85 Z gray 0.65; end"},
    {"ACapUponTheRampStays",
     [](Device *to) {
         FillStrips(to, kSegment, 65, kBlack, Gray(0.65));
         to->FillPath(Strip({8, 0, 0, 80, 42, 5}, 0, 1), Gray(0.65));
     },
     "shade 40 0 0 80 10 5 to 1 65 gray 0 .. gray 0.65; fill M42 5 L50 5 L50 85 L42 85 Z gray 0.65; end"},
    {"GraySegmentsStayApartFromInks",
     [](Device *to) {
         FillStrips(to, kSegment, 65, kBlack, Gray(0.65));
         FillStrips(to, {40, 0, 0, 80, 50, 5}, 65, Cmyk(0, 0, 0, 0.35), Cmyk(0, 0, 0, 1));
     },
     "shade 40 0 0 80 10 5 to 1 65 gray 0 .. gray 0.65; "
     "shade 40 0 0 80 50 5 to 1 65 cmyk 0 0 0 0.35 .. cmyk 0 0 0 1; end"},
    {"Overprint", [](Device *to) { FillStrips(to, kSegment, 65, Gray(0, true), Gray(0.65, true)); },
     "shade 40 0 0 80 10 5 to 1 65 gray 0 .. gray 0.65 overprint; end"},
    // The first strip has no cyan and leaves that of the page; the last, no magenta. They are 1008/65536 wide, 64 of
    // them 64512/65536. A step of colour is 0.65 / 64 = 0.01015625.
    {"InksThatAreLeftAloneStayApart",
     [](Device *to) { FillStrips(to, kSegment, 65, Cmyk(0, 0.65, 0, 0, true), Cmyk(0.65, 0, 0, 0, true)); },
     "shade 40 0 0 80 10 5 to 0.0153809 cmyk 0 0.65 0 0 "
     "to 0.984375 63 cmyk 0.0101563 0.639844 0 0 .. cmyk 0.639844 0.0101562 0 0 "
     "to 1 cmyk 0.65 0 0 0 overprint; end"},
    {"BesideAnOrdinaryRectangle",
     [](Device *to) {
         to->FillPath(Strip({40, 0, 0, 7, 10, 90}, 0, 1), kBlack);
         FillStrips(to, kSegment, 65, kBlack, Gray(0.65));
         to->FillPath(Strip({40, 0, 0, 7, 10, 90}, 0, 1), kWhite);
     },
     "fill M10 90 L50 90 L50 97 L10 97 Z; shade 40 0 0 80 10 5 to 1 65 gray 0 .. gray 0.65; "
     "fill M10 90 L50 90 L50 97 L10 97 Z gray 1; end"},
    {"EndsBeforeAnotherCall",
     [](Device *to) {
         to->Save();
         FillStrips(to, kSegment, 65, kBlack, Gray(0.65));
         to->Restore();
         to->StrokePath(Strip(kSegment, 0, 1), {}, kBlack);
     },
     "save; shade 40 0 0 80 10 5 to 1 65 gray 0 .. gray 0.65; restore; "
     "stroke M10 5 L50 5 L50 85 L10 85 Z; end"},

    // 64 rings: the radius goes from 1 to 0 by equal steps. The parameter's steps are 1040/65536, and 63 of them
    // 65520/65536: the outer colour is not quite reached.
    {"Discs",
     [](Device *to) {
         FillDiscs(to, {30, 0, 0, 30, 50, 60}, 64, 0, Gray(0.36), 1, kWhite);
     },
     "shade 30 0 0 30 50 60 0,0+1 0,0+0 to 1 64 gray 0.999844 .. gray 0.36; end"},
    {"DiscsOfAnEllipse",
     [](Device *to) {
         FillDiscs(to, {30, 10, -5, 20, 50, 60}, 64, 0, Gray(0.36), 1, kWhite);
     },
     "shade 30 10 -5 20 50 60 0,0+1 0,0+0 to 1 64 gray 0.999844 .. gray 0.36; end"},
    // A hundred times 655/65536 is a little less than 1, which shows in the largest.
    {"AHundredDiscs",
     [](Device *to) {
         FillDiscs(to, {32, 0, 0, 32, 0, 0}, 100, 0, kBlack, 1, kWhite);
     },
     "shade 31.9824 0 0 31.9824 0 0 0,0+1 0,0+0 to 1 100 gray 1 .. gray 0; end"},
    // The centre stop's discs lie 6 to the right and 3 down on the page; the largest, 16/65536 of that, in 16.16.
    {"DiscsTowardsAHighlight",
     [](Device *to) {
         FillDiscs(to, {10, 0, 0, 10, 0, 0}, 64, 0, Gray(0.36), 1, kWhite, {6, -3});
     },
     "shade 10 0 0 10 0.00146484 -0.000732422 0,0+1 0.599854,-0.299927+0 to 1 64 gray 0.999844 .. gray 0.36; "
     "end"},
    // The inner stop lies at half of the radius, where the second blend begins, 65534/65536 of its way.
    {"DiscsOfThreeStops",
     [](Device *to) {
         FillDiscs(to, {30, 0, 0, 30, 50, 60}, 64, 0.5, Gray(0.36), 1, kWhite);
         FillDiscs(to, {30, 0, 0, 30, 50, 60}, 32, 0, Gray(0.68), 0.5, Gray(0.36));
     },
     "shade 30 0 0 30 50 60 0,0+1 0,0+0 to 0.5 64 gray 0.999844 .. gray 0.36 to 1 32 gray 0.36001 .. gray "
     "0.68; "
     "end"},
    // On the way to the highlight, 6 to the right, the joint lies half way.
    {"DiscsOfThreeStopsTowardsAHighlight",
     [](Device *to) {
         FillDiscs(to, {10, 0, 0, 10, 0, 0}, 64, 0.5, Gray(0.36), 1, kWhite, {6, 0});
         FillDiscs(to, {10, 0, 0, 10, 0, 0}, 32, 0, Gray(0.68), 0.5, Gray(0.36), {6, 0});
     },
     "shade 10 0 0 10 0.000732422 0 0,0+1 0.599927,0+0 to 0.5 64 gray 0.999844 .. gray 0.36 "
     "to 1 32 gray 0.36001 .. gray 0.68; end"},
    // The second goes on straight down from the joint. Its outer disc has 65534/65536 of half of the way, 6, behind it.
    {"DiscsThatTurn",
     [](Device *to) {
         FillDiscs(to, {30, 0, 0, 30, 50, 60}, 64, 0.5, Gray(0.36), 1, kWhite);
         FillDiscs(to, {30, 0, 0, 30, 50, 63}, 32, 0, Gray(0.68), 0.5, Gray(0.36), {0, -6});
     },
     "shade 30 0 0 30 50 60 0,0+1 0,0+0.5 to 1 64 gray 0.999844 .. gray 0.36; "
     "shade 15 0 0 15 50 59.9999 0,0+1 0,-0.199994+0 to 1 32 gray 0.36001 .. gray 0.68; end"},
    // Inks that the inner ones have not stay as the outer ones left them.
    {"OverprintedDiscsOfThreeStops",
     [](Device *to) {
         FillDiscs(to, {30, 0, 0, 30, 50, 60}, 64, 0.5, Gray(0.36, true), 1, Gray(1, true));
         FillDiscs(to, {30, 0, 0, 30, 50, 60}, 32, 0, Gray(0.68, true), 0.5, Gray(0.36, true));
     },
     "shade 30 0 0 30 50 60 0,0+1 0,0+0.5 to 1 64 gray 0.999844 .. gray 0.36 overprint; "
     "shade 15 0 0 15 50 60 0,0+1 0,0+0 to 1 32 gray 0.36001 .. gray 0.68 overprint; end"},
    {"ManyStopsOfDiscs",
     [](Device *to) {
         for (int stop = 8; stop > 0; --stop)
             FillDiscs(to, {64, 0, 0, 64, 0, 0}, 64, (stop - 1) / 8.0, Gray(stop % 2 * 0.64), stop / 8.0,
                       Gray((stop - 1) % 2 * 0.64));
     },
     "shade 64 0 0 64 0 0 0,0+1 0,0+0 to 0.125 64 gray 0.639844 .. gray 0 to 0.25 64 gray 0.00015625 .. gray "
     "0.64 "
     "to 0.375 64 gray 0.639844 .. gray 0 to 0.5 64 gray 0.00015625 .. gray 0.64 "
     "to 0.625 64 gray 0.639844 .. gray 0 to 0.75 64 gray 0.00015625 .. gray 0.64 "
     "to 0.875 64 gray 0.639844 .. gray 0 to 1 64 gray 0.00015625 .. gray 0.64; end"},
    {"DiscsThenStrips",
     [](Device *to) {
         FillDiscs(to, {30, 0, 0, 30, 50, 60}, 64, 0, Gray(0.36), 1, kWhite);
         FillStrips(to, kSegment, 65, kBlack, Gray(0.65));
         FillDiscs(to, {30, 0, 0, 30, 50, 60}, 64, 0, Gray(0.36), 1, kWhite);
     },
     "shade 30 0 0 30 50 60 0,0+1 0,0+0 to 1 64 gray 0.999844 .. gray 0.36; "
     "shade 40 0 0 80 10 5 to 1 65 gray 0 .. gray 0.65; "
     "shade 30 0 0 30 50 60 0,0+1 0,0+0 to 1 64 gray 0.999844 .. gray 0.36; end"},
    // What was just clipped to is filled with the outer stop's colour, which is where the shading begins then.
    {"DiscsOnTheirGround",
     [](Device *to) {
         to->ClipPath(kTriangle);
         to->FillPath(kTriangle, kWhite);
         FillDiscs(to, {30, 0, 0, 30, 50, 60}, 64, 0.5, Gray(0.36), 1, kWhite);
         FillDiscs(to, {30, 0, 0, 30, 50, 60}, 32, 0, Gray(0.68), 0.5, Gray(0.36));
     },
     "clip M0 0 L90 0 L90 90; "
     "shade 30 0 0 30 50 60 0,0+1 0,0+0 to 0.5 64 gray 1 .. gray 0.36 to 1 32 gray 0.36001 .. gray 0.68 "
     "around M0 0 L90 0 L90 90; end"},
    // A clip within lasts no longer than its level, and then it is not known what the clip is.
    {"DiscsOnWhatMayNotBeTheirGround",
     [](Device *to) {
         to->ClipPath(kTriangle);
         to->Save();
         to->ClipPath(kTriangle);
         to->Restore();
         to->FillPath(kTriangle, kWhite);
         FillDiscs(to, {30, 0, 0, 30, 50, 60}, 64, 0, Gray(0.36), 1, kWhite);
     },
     "clip M0 0 L90 0 L90 90; save; clip M0 0 L90 0 L90 90; restore; fill M0 0 L90 0 L90 90 gray 1; "
     "shade 30 0 0 30 50 60 0,0+1 0,0+0 to 1 64 gray 0.999844 .. gray 0.36; end"},
    // These grounds are 2 of 100 darker than the first disc, or of inks where it is gray, or overprint.
    {"DiscsOnOtherGrounds",
     [](Device *to) {
         for (const Paint &ground : {Gray(0.98), Cmyk(0, 0, 0, 0), Gray(1, true)}) {
             to->ClipPath(kTriangle);
             to->FillPath(kTriangle, ground);
             FillDiscs(to, {30, 0, 0, 30, 50, 60}, 64, 0, Gray(0.36), 1, kWhite);
         }
     },
     "clip M0 0 L90 0 L90 90; fill M0 0 L90 0 L90 90 gray 0.98; "
     "shade 30 0 0 30 50 60 0,0+1 0,0+0 to 1 64 gray 0.999844 .. gray 0.36; "
     "clip M0 0 L90 0 L90 90; fill M0 0 L90 0 L90 90 cmyk 0 0 0 0; "
     "shade 30 0 0 30 50 60 0,0+1 0,0+0 to 1 64 gray 0.999844 .. gray 0.36; "
     "clip M0 0 L90 0 L90 90; fill M0 0 L90 0 L90 90 gray 1 overprint; "
     "shade 30 0 0 30 50 60 0,0+1 0,0+0 to 1 64 gray 0.999844 .. gray 0.36; end"},
    // Overprinted, discs without cyan leave what the ground has of it.
    {"OverprintedDiscsOnTheirGround",
     [](Device *to) {
         to->ClipPath(kTriangle);
         to->FillPath(kTriangle, Cmyk(0.64, 0.5, 0, 0, true));
         FillDiscs(to, {30, 0, 0, 30, 50, 60}, 64, 0, Cmyk(0, 0.5, 0, 0, true), 1,
                   Cmyk(0.64, 0.5, 0, 0, true));
     },
     "clip M0 0 L90 0 L90 90; fill M0 0 L90 0 L90 90 cmyk 0.64 0.5 0 0 overprint; "
     "shade 30 0 0 30 50 60 0,0+1 0,0+0 to 0.984375 63 cmyk 0.639844 0.5 0 0 .. cmyk 0.0101563 0.5 0 0 "
     "to 1 cmyk 0 0.5 0 0 overprint; end"},
    // All of the highlight's way is all of the radius: the circles touch, and none of them reaches what lies there.
    {"DiscsThatTouchOnTheirGround",
     [](Device *to) {
         to->ClipPath(kTriangle);
         to->FillPath(kTriangle, kWhite);
         FillDiscs(to, {10, 0, 0, 10, 0, 0}, 64, 0, Gray(0.36), 1, kWhite, {9.96875, 0});
     },
     "clip M0 0 L90 0 L90 90; fill M0 0 L90 0 L90 90 gray 1; "
     "shade 10 0 0 10 0.00244141 0 0,0+1 0.996631,0+0 to 1 64 gray 0.999844 .. gray 0.36; end"},
};

class Blends : public testing::TestWithParam<BlendCase>
{
};

TEST_P(Blends, BecomeShadings)
{
    EXPECT_EQ(DrawFiltered(GetParam().draw), GetParam().calls);
}
INSTANTIATE_TEST_SUITE_P(BlendFilter, Blends, testing::ValuesIn(kBlends), vxtest::CaseName());

struct OrdinaryCase {
    const char *name;
    Draw draw;
};

void PrintTo(const OrdinaryCase &c, std::ostream *out)
{
    *out << c.name;
}

// Fills fields of these grays beside each other.
void FillFields(Device *to, const std::vector<double> &grays, double width = 10)
{
    double x = 0;
    for (const double gray : grays) {
        to->FillPath(Strip({width, 0, 0, 30, x, 0}, 0, 1), Gray(gray));
        x += width;
    }
}

const OrdinaryCase kOrdinary[] = {
    {"Nothing", [](Device *) {}},
    {"GroundsWithoutDiscs",
     [](Device *to) {
         to->ClipPath(kTriangle);
         to->FillPath(kTriangle, kWhite);
         to->FillPath(kTriangle, kBlack);
         to->Save();
         to->FillPath(kTriangle, kWhite);
         to->FillPath(Strip(kSegment, 0, 1), kBlack);
         to->FillPath(kTriangle, kWhite);
         to->FillPath(Disc(kSegment, 1), kBlack);
         to->FillPath(kTriangle, kWhite);
     }},
    {"TwoRectangles",
     [](Device *to) {
         FillFields(to, {0.5, 0.51});
     }},
    {"RectanglesOfOneColour", [](Device *to) { FillFields(to, std::vector<double>(150, 0.5)); }},
    {"AGrayWedge",
     [](Device *to) {
         std::vector<double> grays;
         for (int i = 0; i <= 20; ++i)
             grays.push_back(i * 0.05);
         FillFields(to, grays);
     }},
    {"AGrayWedgeOfFour",
     [](Device *to) {
         FillFields(to, {0, 0.33, 0.67, 1});
     }},
    // One field for each percent, the first among them: one more than a blend has.
    {"AGrayWedgeOfEachPercent",
     [](Device *to) {
         std::vector<double> grays;
         for (int i = 0; i <= 100; ++i)
             grays.push_back(i * 0.01);
         FillFields(to, grays);
     }},
    {"ColoursThatTurnBack",
     [](Device *to) {
         FillFields(to, {0.50, 0.52, 0.51, 0.53, 0.52, 0.54});
     }},
    {"StripsWithGaps",
     [](Device *to) {
         for (int i = 0; i < 64; ++i)
             to->FillPath(Strip({0.999, 0, 0, 30, double(i), 0}, 0, 1), Gray(i * 0.64 / 63));
     }},
    {"StripsThatOverlap",
     [](Device *to) {
         for (int i = 0; i < 64; ++i)
             to->FillPath(Strip({2, 0, 0, 30, double(i), 0}, 0, 1), Gray(i * 0.64 / 63));
     }},
    {"StripsThatGrow",
     [](Device *to) {
         double x = 0;
         for (int i = 0; i < 64; ++i) {
             to->FillPath(Strip({1 + i * 0.01, 0, 0, 30, x, 0}, 0, 1), Gray(i * 0.64 / 63));
             x += 1 + i * 0.01;
         }
     }},
    // The strips lie along an arc, so that each is turned from the one before it.
    {"StripsThatTurn",
     [](Device *to) {
         Point from = {0, 0};
         for (int i = 0; i < 64; ++i) {
             const double angle = i * 0.01;
             const Point step = {std::cos(angle), std::sin(angle)};
             to->FillPath(Strip({step.x, step.y, 0, 30, from.x, from.y}, 0, 1), Gray(i * 0.64 / 63));
             from = {from.x + step.x, from.y + step.y};
         }
     }},
    {"Wedges",
     [](Device *to) {
         for (int i = 0; i < 64; ++i)
             to->FillPath({{Verb::Move, Verb::Line, Verb::Line, Verb::Line, Verb::Close},
                           {{double(i), 0}, {i + 1.0, 0}, {i + 1.0, i + 2.0}, {double(i), i + 1.0}}},
                          Gray(i * 0.64 / 63));
     }},
    {"OverprintThatChanges",
     [](Device *to) {
         for (int i = 0; i < 64; ++i)
             to->FillPath(Strip({1, 0, 0, 30, double(i), 0}, 0, 1), Gray(i * 0.64 / 63, i % 2 == 0));
     }},
    {"ColourSpacesThatChange",
     [](Device *to) {
         for (int i = 0; i < 64; ++i)
             to->FillPath(Strip({1, 0, 0, 30, double(i), 0}, 0, 1),
                          i % 2 == 0 ? Gray(i * 0.64 / 63) : Cmyk(0, 0, 0, 1 - i * 0.64 / 63));
     }},
    {"AnInterruptedRun",
     [](Device *to) {
         for (int i = 0; i < 64; ++i) {
             to->FillPath(Strip({1, 0, 0, 30, double(i), 0}, 0, 1), Gray(i * 0.64 / 63));
             if (i % 2 != 0)
                 to->StrokePath(Strip({1, 0, 0, 30, double(i), 0}, 0, 1), {}, kBlack);
         }
     }},
    {"StripsOfNoHeight",
     [](Device *to) {
         FillStrips(to, {40, 0, 0, 0, 10, 5}, 64, kBlack, Gray(0.64));
     }},
    {"StripsOfNoWidth",
     [](Device *to) {
         FillStrips(to, {0, 0, 0, 80, 10, 5}, 64, kBlack, Gray(0.64));
     }},
    {"StripsOfNumbersThatAreNone",
     [](Device *to) {
         const double nan = std::numeric_limits<double>::quiet_NaN();
         FillStrips(to, {nan, 0, 0, 80, 10, 5}, 64, kBlack, Gray(0.64));
         FillStrips(to, {40, 0, 0, std::numeric_limits<double>::infinity(), 10, 5}, 64, kBlack, Gray(0.64));
         FillDiscs(to, {nan, 0, 0, 80, 10, 5}, 64, 0, Gray(0.36), 1, kWhite);
     }},

    {"ATargetOfTenRings",
     [](Device *to) {
         for (int i = 10; i > 0; --i)
             to->FillPath(Disc({30, 0, 0, 30, 50, 60}, i * 0.1), Gray(i * 0.1));
     }},
    {"DiscsOfOneSize",
     [](Device *to) {
         for (int i = 0; i < 64; ++i)
             to->FillPath(Disc({30, 0, 0, 30, 50, 60}, 1), Gray(i * 0.64 / 63));
     }},
    {"DiscsThatGrow",
     [](Device *to) {
         for (int i = 1; i <= 64; ++i)
             to->FillPath(Disc({30, 0, 0, 30, 50, 60}, i / 64.0), Gray(i * 0.64 / 63));
     }},
    {"DiscsOfNoSize",
     [](Device *to) {
         for (int i = 0; i < 64; ++i)
             to->FillPath(Disc({30, 0, 0, 30, 50, 60}, 0), Gray(i * 0.64 / 63));
     }},
    {"DiscsThatLeaveTheFirst",
     [](Device *to) {
         FillDiscs(to, {10, 0, 0, 10, 0, 0}, 64, 0, Gray(0.36), 1, kWhite, {11, 0});
     }},
    {"DiscsThatStepAside",
     [](Device *to) {
         for (int i = 64; i > 0; --i)
             to->FillPath(Disc({30, 0, 0, 30, i % 2 * 0.2, 0}, i / 64.0), Gray(i * 0.64 / 63));
     }},
    {"RoundedSquares",
     [](Device *to) {
         for (int i = 64; i > 0; --i) {
             Path path = Disc({30, 0, 0, 30, 50, 60}, i / 64.0);
             for (const size_t corner : {1U, 2U, 4U, 5U, 7U, 8U, 10U, 11U}) {
                 path.points[corner].x += path.points[corner].x > 50 ? 2 : -2;
                 path.points[corner].y += path.points[corner].y > 60 ? 2 : -2;
             }
             to->FillPath(path, Gray(i * 0.64 / 63));
         }
     }},
    {"ClosedCircles",
     [](Device *to) {
         for (int i = 64; i > 0; --i) {
             Path path = Disc({30, 0, 0, 30, 50, 60}, i / 64.0);
             path.verbs.push_back(Verb::Close);
             to->FillPath(path, Gray(i * 0.64 / 63));
         }
     }},
    {"PathsOfOtherShapes",
     [](Device *to) {
         to->FillPath({{Verb::Move}, {{1, 2}}}, kBlack);
         to->FillPath({{Verb::Move, Verb::Line, Verb::Line, Verb::Line, Verb::Line},
                       {{0, 0}, {1, 0}, {1, 1}, {0, 1}, {0, 0}}},
                      kBlack);
         to->FillPath({{Verb::Move, Verb::Line, Verb::Close, Verb::Move, Verb::Line},
                       {{0, 0}, {1, 0}, {1, 1}, {0, 1}}},
                      kBlack);
         to->FillPath({{Verb::Move, Verb::Move, Verb::Move, Verb::Move, Verb::Move},
                       {{0, 0}, {1, 0}, {1, 1}, {0, 1}, {0, 0}}},
                      kBlack);
     }},
};

class Ordinary : public testing::TestWithParam<OrdinaryCase>
{
};

TEST_P(Ordinary, ShapesGoOnAsTheyCame)
{
    EXPECT_EQ(DrawFiltered(GetParam().draw), DrawDirectly(GetParam().draw));
}
INSTANTIATE_TEST_SUITE_P(BlendFilter, Ordinary, testing::ValuesIn(kOrdinary), vxtest::CaseName());

// A strip that may begin a blend comes before the glyphs behind it, which come as they are.
TEST(BlendFilter, HandsOnGlyphsInTheirOrder)
{
    const auto draw = [](Device *to) {
        to->FillPath(Strip({1, 0, 0, 1, 0, 0}, 0, 1), Gray(0.5, false));
        EXPECT_TRUE(to->PaintsGlyphs({}));
        to->BeginGlyphs({10, 0, 0, 10, 0, 0}, Gray(0.5, false));
        to->FillGlyph(Strip({1, 0, 0, 1, 0, 0}, 0, 1), 7, {3, 4});
    };
    vxtest::RecordingDevice direct, filtered;
    direct.paintsGlyphs = filtered.paintsGlyphs = true;
    draw(&direct);
    BlendFilter filter(&filtered);
    draw(&filter);
    EXPECT_EQ(filtered.calls, direct.calls);
    EXPECT_NE(direct.calls.find("; glyph 7 "), std::string::npos);
}

// A device that keeps everything that it is given, bit for bit.
class KeepingDevice final : public Device
{
  public:
    std::vector<Path> paths;
    std::vector<Paint> paints;

    void BeginPage(const Page &) override {}
    void Save() override {}
    void Restore() override {}
    void ClipPath(const Path &) override {}
    void FillPath(const Path &path, const Paint &paint) override
    {
        paths.push_back(path);
        paints.push_back(paint);
    }
    void StrokePath(const Path &, const StrokeStyle &, const Paint &) override {}
    Failure EndPage() override { return {}; }
};

// Rectangles that often join, under a matrix that rounds, in colours that jump: no digit may change.
TEST(BlendFilter, KeepsEveryBitOfOrdinaryShapes)
{
    const auto draw = [](Device *to) {
        uint64_t state = 1;
        const auto below = [&](uint64_t limit) {
            state = state * 6364136223846793005U + 1442695040888963407U;
            return static_cast<double>((state >> 33) % limit);
        };
        Matrix m = {0.1, 0.7, -0.3, 0.9, 1.0 / 3, 2.0 / 7};
        for (int i = 0; i < 3000; ++i) {
            const Paint paint = Gray(below(7) / 7, below(9) == 0);
            if (below(5) == 0)
                to->FillPath(Disc(m, 1 + below(20)), paint);
            else
                to->FillPath(Strip(m, 0, 1), paint);
            m.tx += m.a * below(2);
            m.ty += m.b * below(3);
        }
    };
    KeepingDevice direct, filtered;
    draw(&direct);
    BlendFilter filter(&filtered);
    draw(&filter);
    EXPECT_FALSE(filter.EndPage());
    ASSERT_EQ(filtered.paths.size(), direct.paths.size());
    for (size_t i = 0; i < direct.paths.size(); ++i) {
        ASSERT_EQ(filtered.paths[i].verbs, direct.paths[i].verbs) << i;
        ASSERT_EQ(filtered.paths[i].points, direct.paths[i].points) << i;
        ASSERT_EQ(filtered.paints[i], direct.paints[i]) << i;
    }
}

// What is held back is bounded: strips that could go on for ever are handed on while they come.
TEST(BlendFilter, HoldsLittleBack)
{
    for (const bool discs : {false, true}) {
        KeepingDevice device;
        BlendFilter filter(&device);
        constexpr int kSteps = 5000;
        size_t held = 0;
        for (int i = 0; i < kSteps; ++i) {
            const Paint paint = Gray(i % 2);
            if (discs)
                filter.FillPath(Disc({1, 0, 0, 1, 0, 0}, kSteps - i), paint);
            else
                filter.FillPath(Strip({1, 0, 0, 1, double(i), 0}, 0, 1), paint);
            held = std::max(held, static_cast<size_t>(i + 1) - device.paths.size());
        }
        EXPECT_LE(held, 200U);
        EXPECT_FALSE(filter.EndPage());
        EXPECT_EQ(device.paths.size(), size_t{kSteps});
    }
}

// From a document to a device: the plug-in's own strips, through the drawing's matrices.
struct DocumentCase {
    const char *name;
    const char *definition, *body, *calls;
};

void PrintTo(const DocumentCase &c, std::ostream *out)
{
    *out << c.body;
}

const DocumentCase kDocuments[] = {
    // Stops are listed from the far end to the near one. 100 steps, of which the last is at 1.
    {"BlackToWhite", "(Ramp) 0 2 Bd\n[\n1 0 50 100 Bs\n0 0 50 0 Bs\nBD\n",
     "1 (Ramp) 0 0 0 80 1 0 0 1 0 0 Bg\n-8 0 0 80 10 5 Bc\n40 0 0 80 10 5 Bm\n8 0 0 80 50 5 Bc\n",
     "shade 56 0 0 80 2 5 to 0.142857 gray 0 to 0.857143 100 gray 0 .. gray 1 to 1 gray 1"},
    {"ThreeStops", "(Ramp) 0 3 Bd\n[\n0 1 0 0 1 50 100 Bs\n1 0 0 0 1 50 50 Bs\n0 0 1 0 1 50 0 Bs\nBD\n",
     "1 (Ramp) 0 0 0 80 1 0 0 1 0 0 Bg\n-8 0 0 80 10 5 Bc\n20 0 0 80 10 5 Bm\n20 0 0 80 30 5 Bm\n"
     "8 0 0 80 50 5 Bc\n",
     "shade 56 0 0 80 2 5 to 0.142857 cmyk 0 0 1 0 to 0.5 100 cmyk 0 0 1 0 .. cmyk 1 0 0 0 "
     "to 0.857143 100 cmyk 1 0 0 0 .. cmyk 0 1 0 0 to 1 cmyk 0 1 0 0"},
    // The outermost colour comes first, in the clip's path. Of the change to 0.36, which is 23593/65536, and of the
    // highlight's 3 and 4 the largest of the 64 discs has 65520/65536.
    {"Radial", "(Ramp) 1 2 Bd\n[\n0.36 0 50 0 Bs\n1 0 50 100 Bs\nBD\n",
     "1 (Ramp) 0 0 0 80 1 0 0 1 0 0 Bg\n3 4 0 0 Bh\n10 0 0 10 0 0 Bm\n",
     "shade 10 0 0 10 0.000732422 0.000976562 0,0+1 0.299927,0.399902+0 to 1 64 gray 1 .. gray 0.360001 "
     "around M0 0 L90 0 L90 90 Z"},
};

class BlendDocuments : public testing::TestWithParam<DocumentCase>
{
};

TEST_P(BlendDocuments, ReachDevicesAsShadings)
{
    const std::string text = std::string("%!PS-Tavro-3.0\n%%BoundingBox: 0 0 100 100\n%VX5_FileFormat 3\n"
                                         "%%EndComments\n%%BeginSetup\n%VX5_BeginGradient: (Ramp)\n") +
                             GetParam().definition + "%VX5_EndGradient\n%%EndSetup\n" +
                             "0 0 m\n90 0 l\n90 90 l\nh\nBb\n" + GetParam().body + "f\n0 BB\n%%EOF\n";
    std::string error;
    const auto plugin = Plugin::Load(VX_PLUGIN_PATH, &error);
    ASSERT_NE(plugin, nullptr) << error;
    const FixedFontList fonts({"Helvetica"});
    ParseOptions options;
    options.fonts = &fonts;
    RecordingDevice device;
    const auto document = Document::FromMemory(std::as_bytes(std::span(text)), &error);
    EXPECT_EQ(plugin->Draw(*document, options, {{0, 0, 100, 100}, {}, {}}, device).result, kVXOk);
    EXPECT_EQ(device.calls, std::string("begin 100 100; save; clip M0 0 L90 0 L90 90 Z; ") +
                                GetParam().calls + "; restore; end");
}
INSTANTIATE_TEST_SUITE_P(BlendFilter, BlendDocuments, testing::ValuesIn(kDocuments), vxtest::CaseName());

} // namespace
} // namespace vxhost
