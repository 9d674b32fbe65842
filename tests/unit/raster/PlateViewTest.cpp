// Pictures of chosen plates. Colours are worked out by hand: without a profile a level of red is (255 - cyan) (255 - black) / 255.
#include "tests/unit/raster/Canvas.h"
#include "tests/unit/raster/PlateInks.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <sstream>

namespace vxhost
{
namespace
{

Path Left(double width)
{
    return {{Verb::Move, Verb::Line, Verb::Line, Verb::Line, Verb::Close},
            {{0, 0}, {width, 0}, {width, 8}, {0, 8}}};
}

RasterOptions PlainPlates(std::vector<std::string> inks, bool isGray = false)
{
    RasterOptions options = PlainOptions();
    options.plates = {std::move(inks), isGray};
    return options;
}

// Draws as often as the device wants on a page of 8 points each way, a pixel a point.
Picture DrawAll(const std::function<void(Device *)> &draw, const RasterOptions &options)
{
    Picture picture;
    std::string error;
    const auto device = MakePictureDevice(options, &picture, &error);
    EXPECT_NE(device, nullptr) << error;
    Page page;
    page.box = {0, 0, 8, 8};
    do {
        device->BeginPage(page);
        draw(device.get());
        const Failure failure = device->EndPage();
        EXPECT_FALSE(failure) << failure.text;
    } while (device->WantsPageAgain());
    return picture;
}

// A process colour with a spot ink over it.
void Overlay(Device *device, bool overprint)
{
    device->FillPath(Left(8), {Process(0.4, 0.2, 0, 0)});
    device->FillPath(Left(8), {Spot(kRed, 0.8), overprint});
}

std::string Shown(const std::vector<std::string> &inks, bool overprint, bool isGray = false)
{
    return PixelAt(DrawAll([=](Device *to) { Overlay(to, overprint); }, PlainPlates(inks, isGray)), 3, 3);
}

TEST(PlateView, ShowsWhatOverprintLeftOfAnInk)
{
    EXPECT_EQ(Shown({"Cyan"}, true), "153 255 255"); // 0.4 is 102
    EXPECT_EQ(Shown({"Cyan"}, false), "255 255 255");
    EXPECT_EQ(Shown({"Black"}, true), "255 255 255");
}

TEST(PlateView, ShowsASpotInkInItsOwnColour)
{
    EXPECT_EQ(Shown({"Red"}, true), "255 51 51"); // 0.8 is 204
    EXPECT_EQ(Shown({"Red"}, true, true), "51 51 51");
    EXPECT_EQ(Shown({"Blue"}, true), "255 255 255"); // nothing is painted with it
    EXPECT_EQ(Shown({"Red", "Red"}, true, true), "51 51 51");
}

TEST(PlateView, AddsInksOfSeveralDrawings)
{
    // Cyan 102, magenta 51 and 204, yellow 204.
    EXPECT_EQ(Shown({"Cyan", "Magenta", "Yellow", "Black", "Blue", "Red"}, true), "153 0 51");
    EXPECT_EQ(Shown({"Cyan", "Magenta", "Yellow", "Black", "Blue"}, true), "153 204 255");
    EXPECT_EQ(Shown({"Red", "Blue", "Black", "Yellow", "Cyan"}, true, true), "0 0 0"); // 306 of ink
    EXPECT_EQ(Shown({"Magenta", "Cyan"}, true, true), "102 102 102");                  // 153 of ink
}

TEST(PlateView, OfNoPlateIsPaper)
{
    EXPECT_EQ(Shown({}, true), "255 255 255");
    EXPECT_EQ(Shown({}, true, true), "255 255 255");
}

TEST(PlateView, IsTransparentWhereAnotherInkOverprints)
{
    RasterOptions options = PlainPlates({"Cyan"});
    options.background.reset();
    const auto paint = [&](bool overprint) {
        const Paint magenta = {Process(0, 1, 0, 0), overprint};
        return PixelAt(DrawAll([&](Device *to) { to->FillPath(Left(8), magenta); }, options), 3, 3);
    };
    EXPECT_EQ(paint(true), "0 0 0 0");
    EXPECT_EQ(paint(false), "255 255 255"); // it takes the cyan away
}

// Eight of the sixteen samples of the pixel are cyan. The plate has (8 * 255 + 8) / 16 = 128.
TEST(PlateView, MixesSamples)
{
    const auto half = [](Device *to) { to->FillPath(Left(3.5), {Process(1, 0, 0, 0)}); };
    EXPECT_EQ(PixelAt(DrawAll(half, PlainPlates({"Cyan"})), 3, 3), "128 255 255");
    EXPECT_EQ(PixelAt(DrawAll(half, PlainPlates({"Cyan"}, true)), 3, 3), "127 127 127");
    EXPECT_EQ(PixelAt(DrawAll(half, PlainPlates({"Magenta"})), 3, 3), "255 255 255");
}

// Of all process inks it is the picture itself, however inks lie over each other.
TEST(PlateView, OfAllInksIsThePicture)
{
    std::mt19937 random(7);
    const auto number = [&](double most) { return std::uniform_real_distribution<double>(0, most)(random); };
    for (int trial = 0; trial < 60; ++trial) {
        std::ostringstream script;
        for (int shape = 0; shape < 12; ++shape) {
            script << number(1) << ' ' << number(1) << ' ' << (shape % 3 == 0 ? 0 : number(1)) << ' '
                   << number(1) << (shape % 4 == 0 ? " k 1 o " : " k 0 o ");
            if (shape % 5 == 0)
                script << number(1) << " g ";
            for (int corner = 0; corner < 4; ++corner)
                script << number(9) - 0.5 << ' ' << number(9) - 0.5 << (corner == 0 ? " m " : " l ");
            script << (shape % 2 == 0 ? "f " : "0.3 w s ");
        }
        RasterOptions options = PlainOptions();
        options.samples = 1 << trial % 4;
        options.overprint = trial % 3 != 0;
        if (trial % 2 == 0)
            options.background.reset();
        const auto draw = [&](Device *to) { DrawScript(script.str(), to); };
        const Picture whole = DrawAll(draw, options);
        for (const char *more : {"", "Gold"}) {
            options.plates = {{"Yellow", "Black", "Cyan", "Magenta"}};
            if (*more != '\0')
                options.plates->inks.insert(options.plates->inks.begin(), {more, "Silver"});
            ASSERT_EQ(DrawAll(draw, options).rgba, whole.rgba) << script.str() << more;
        }
    }
}

} // namespace
} // namespace vxhost
