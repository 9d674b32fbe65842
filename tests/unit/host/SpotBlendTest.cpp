#include "host/drawing/SpotBlend.h"
#include "tests/unit/host/RecordingDevice.h"

#include "host/drawing/Drawing.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vxhost
{

namespace
{

const SpotInk kLake = {"Lake", {1, 0.5, 0, 0}};
const SpotInk kMoss = {"Moss", {0.5, 0, 1, 0}};
const SpotInk kTwin = {"Twin", {1, 0.5, 0, 0}}; // the numbers of the first

SpotColour Spot(const SpotInk &ink, double amount)
{
    SpotColour colour = {{&ink, amount}};
    for (size_t i = 0; i < 4; ++i)
        colour.process[i] = ink.alternate[i] * amount;
    return colour;
}

SpotColour Process(double c, double m, double y, double k)
{
    return {{}, {c, m, y, k}};
}

// The spot inks of each step, by what is sent for it; "none" for a step that has none, "other" for what is no step.
std::string SharesOf(const SpotBlend &blend, const std::vector<std::vector<double>> &sent)
{
    SpotBlendSteps steps;
    steps.Begin(&blend);
    std::string text;
    for (const std::vector<double> &inks : sent) {
        Colour colour;
        colour.space = ColourSpace::Cmyk;
        std::copy_n(inks.begin(), 4, colour.ink);
        text += text.empty() ? "" : ", ";
        if (!steps.AddSpots(&colour))
            text += "other";
        else if (colour.spots[0].ink == nullptr)
            text += "none";
        for (const SpotShare &share : colour.spots) {
            if (share.ink == nullptr)
                continue;
            text += share.ink == colour.spots[0].ink ? "" : " + ";
            text += share.ink->name + " " + std::to_string(static_cast<int>(share.amount * 100 + 0.5));
        }
    }
    return text;
}

TEST(SpotBlend, StepsHaveTheInksBetweenWhichTheyLie)
{
    EXPECT_EQ(SharesOf({{{Spot(kLake, 1), Spot(kLake, 0.5)}}},
                       {{1, 0.5, 0, 0}, {0.75, 0.375, 0, 0}, {0.5, 0.25, 0, 0}}),
              "Lake 100, Lake 75, Lake 50");
    EXPECT_EQ(SharesOf({{{Spot(kLake, 1), Process(0, 0, 0, 0)}}}, {{0.25, 0.125, 0, 0}, {0, 0, 0, 0}}),
              "Lake 25, Lake 0");
    EXPECT_EQ(SharesOf({{{Process(0, 0, 0, 1), Spot(kLake, 1)}}}, {{0, 0, 0, 1}, {0.25, 0.125, 0, 0.75}}),
              "Lake 0, Lake 25");
    // Halfway from 1 0.5 0 0 to 0.25 0 0.5 0, which is half of the other ink.
    EXPECT_EQ(SharesOf({{{Spot(kLake, 1), Spot(kMoss, 0.5)}}}, {{0.625, 0.25, 0.25, 0}}),
              "Lake 50 + Moss 25");
    EXPECT_EQ(SharesOf({{{Process(0, 0, 0, 0), Process(0, 1, 0, 0)}}}, {{0, 0.5, 0, 0}}), "none");
    // The products that are sent are rounded to 1/65536.
    EXPECT_EQ(SharesOf({{{Spot(kLake, 1), Spot(kLake, 0.5)}}}, {{0.75 + 1.0 / 65536, 0.375, 0, 0}}),
              "Lake 75");
}

TEST(SpotBlend, LeavesOtherColoursAlone)
{
    const SpotBlend blend = {{{Spot(kLake, 1), Spot(kMoss, 0.5)}}};
    EXPECT_EQ(SharesOf(blend, {{0.625, 0.25, 0.25, 0.01}, {0, 0, 0, 0}, {0.625, 0.25, 0.26, 0}}),
              "other, other, other");
    SpotBlendSteps steps;
    Colour gray;
    steps.Begin(&blend);
    EXPECT_FALSE(steps.AddSpots(&gray));
    Colour step = {ColourSpace::Cmyk, {1, 0.5, 0, 0}};
    steps.Begin(nullptr);
    EXPECT_FALSE(steps.AddSpots(&step));
    EXPECT_FALSE(SpotBlendSteps().AddSpots(&step));
    const SpotBlend empty;
    steps.Begin(&empty);
    EXPECT_FALSE(steps.AddSpots(&step));
}

// A part is told from another of the same colours by its turn.
TEST(SpotBlend, PartsFollowEachOther)
{
    const SpotBlend there = {{{Spot(kLake, 1), Process(0, 0, 0, 0)}, {Process(0, 0, 0, 0), Spot(kTwin, 1)}}};
    EXPECT_EQ(SharesOf(there, {{1, 0.5, 0, 0},
                               {0.5, 0.25, 0, 0},
                               {0, 0, 0, 0},
                               {0, 0, 0, 0},
                               {0.5, 0.25, 0, 0},
                               {1, 0.5, 0, 0}}),
              "Lake 100, Lake 50, Lake 0, Twin 0, Twin 50, Twin 100");
    // Small changes have one step, at a part's start.
    EXPECT_EQ(SharesOf(there, {{1, 0.5, 0, 0}, {0.5, 0.25, 0, 0}, {0.75, 0.375, 0, 0}}),
              "Lake 100, Lake 50, Twin 75");
    // Without a change there is one step, of the first ink.
    EXPECT_EQ(SharesOf({{{Spot(kLake, 1), Spot(kTwin, 1)}}}, {{1, 0.5, 0, 0}, {1, 0.5, 0, 0}}),
              "Lake 100 + Twin 0, Lake 100 + Twin 0");
}

// Steps are filled; strokes have an ink of their own, and what is no step has the ink that was chosen.
TEST(SpotBlend, IsOfWhatIsFilledWhileItLasts)
{
    vxtest::RecordingDevice device;
    Drawing drawing(&device);
    const SpotBlend blend = {{{Spot(kLake, 1), Spot(kLake, 0)}}};
    const auto paint = [&](bool isFill) {
        device.calls.clear();
        drawing.MoveTo({0, 0});
        drawing.LineTo({9, 0});
        isFill ? drawing.Fill() : drawing.Stroke();
        return device.calls.substr(std::string("fill M0 0 L9 0").size() + (isFill ? 0 : 2));
    };
    drawing.SetFillSpot(Spot(kTwin, 0.5));
    drawing.SetFillBlend(&blend);
    drawing.SetCMYKColor(0.5, 0.25, 0, 0);
    EXPECT_EQ(paint(true), " cmyk 0.5 0.25 0 0 Lake 0.5");
    EXPECT_EQ(paint(false), " cmyk 0.5 0.25 0 0");
    drawing.SetCMYKColor(1, 0.5, 0, 0); // the blend does not go back
    EXPECT_EQ(paint(true), " cmyk 1 0.5 0 0");
    drawing.SetFillBlend(nullptr);
    drawing.SetCMYKColor(0.5, 0.25, 0, 0);
    EXPECT_EQ(paint(true), " cmyk 0.5 0.25 0 0 Twin 0.5");
    ASSERT_EQ(drawing.SpotsUsed().size(), 2u);
    EXPECT_EQ(drawing.SpotsUsed()[0].name, "Lake");
    EXPECT_EQ(drawing.SpotsUsed()[0].leastTint, 0.5);
}

} // namespace

} // namespace vxhost
