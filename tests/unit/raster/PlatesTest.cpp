// What each plate prints. A level is 255 times the amount of ink, rounded: half of it is 128, a quarter 64.
#include "devices/raster/Plates.h"

#include "tests/unit/raster/Canvas.h"
#include "tests/unit/raster/PlateInks.h"

#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <ostream>

namespace vxhost
{
namespace
{

// Keeps the plates that it is given, and how they came.
class KeptPlates final : public PlateSink
{
  public:
    Failure Begin(const PlateSheet &sheet, std::span<const std::string> inks) override
    {
        sheet_ = sheet;
        inks_.assign(inks.begin(), inks.end());
        for (const std::string &ink : inks) {
            order_ += (order_.empty() ? "" : " ") + ink;
            rows_[ink] = {};
        }
        return {};
    }
    Failure TakeRow(std::span<const uint8_t *const> plates) override
    {
        for (size_t i = 0; i < plates.size(); ++i)
            rows_[inks_[i]].emplace_back(plates[i], plates[i] + sheet_.width);
        return {};
    }
    Failure End() override
    {
        order_ += ";";
        return {};
    }

    const std::string &Order() const { return order_; }
    int At(const std::string &ink, size_t column, size_t row) const
    {
        const auto found = rows_.find(ink);
        return found == rows_.end() ? -1 : found->second.at(row).at(column);
    }

  private:
    PlateSheet sheet_;
    std::string order_;
    std::vector<std::string> inks_;
    std::map<std::string, std::vector<std::vector<uint8_t>>> rows_;
};

std::shared_ptr<PlateSink> Lent(KeptPlates *plates)
{
    return {plates, [](PlateSink *) {}};
}

Path Rectangle(double left, double bottom, double right, double top)
{
    return {{Verb::Move, Verb::Line, Verb::Line, Verb::Line, Verb::Close},
            {{left, bottom}, {right, bottom}, {right, top}, {left, top}}};
}

// Draws as often as the device wants on a page of 8 points each way, a pixel a point.
void DrawPlates(const std::function<void(Device *)> &draw, KeptPlates *plates,
                std::optional<std::vector<std::string>> spotInks = std::nullopt,
                const RasterOptions &options = PlainOptions())
{
    std::string error;
    const auto device = MakePlatesDevice(options, std::move(spotInks), Lent(plates), &error);
    ASSERT_NE(device, nullptr) << error;
    Page page;
    page.box = {0, 0, 8, 8};
    do {
        device->BeginPage(page);
        draw(device.get());
        const Failure failure = device->EndPage();
        ASSERT_FALSE(failure) << failure.text;
    } while (device->WantsPageAgain());
}

// One colour over another. Levels are those of cyan, magenta, yellow, black, red and blue.
struct OverCase {
    const char *name;
    Colour below, above;
    bool overprint;
    const char *levels;
};

void PrintTo(const OverCase &c, std::ostream *out)
{
    *out << c.name;
}

const Colour kGrayBelow = Gray(0.5), kProcessBelow = Process(0.4, 0.2, 0, 0), kSpotBelow = Spot(kRed, 0.8);
const Colour kGrayAbove = Gray(0.25), kProcessAbove = Process(0, 0.6, 0, 0.2), kSpotAbove = Spot(kBlue, 0.4);

const OverCase kOver[] = {
    // What does not overprint takes every other ink away, on every plate.
    {"GrayOnGray", kGrayBelow, kGrayAbove, false, "0 0 0 191 0 0"},
    {"GrayOnProcess", kProcessBelow, kGrayAbove, false, "0 0 0 191 0 0"},
    {"GrayOnSpot", kSpotBelow, kGrayAbove, false, "0 0 0 191 0 0"},
    {"ProcessOnGray", kGrayBelow, kProcessAbove, false, "0 153 0 51 0 0"},
    {"ProcessOnProcess", kProcessBelow, kProcessAbove, false, "0 153 0 51 0 0"},
    {"ProcessOnSpot", kSpotBelow, kProcessAbove, false, "0 153 0 51 0 0"},
    {"SpotOnGray", kGrayBelow, kSpotAbove, false, "0 0 0 0 0 102"},
    {"SpotOnProcess", kProcessBelow, kSpotAbove, false, "0 0 0 0 0 102"},
    {"SpotOnSpot", kSpotBelow, kSpotAbove, false, "0 0 0 0 0 102"},
    {"SpotOnItself", Spot(kBlue, 0.8), kSpotAbove, false, "0 0 0 0 0 102"},
    // Gray that overprints is black ink alone, process colours the inks that they have some of, a spot ink itself.
    {"GrayOverGray", kGrayBelow, kGrayAbove, true, "0 0 0 191 0 0"},
    {"GrayOverProcess", kProcessBelow, kGrayAbove, true, "102 51 0 191 0 0"},
    {"GrayOverSpot", kSpotBelow, kGrayAbove, true, "0 0 0 191 204 0"},
    {"ProcessOverGray", kGrayBelow, kProcessAbove, true, "0 153 0 51 0 0"},
    {"ProcessOverProcess", kProcessBelow, kProcessAbove, true, "102 153 0 51 0 0"},
    {"ProcessOverSpot", kSpotBelow, kProcessAbove, true, "0 153 0 51 204 0"},
    {"SpotOverGray", kGrayBelow, kSpotAbove, true, "0 0 0 128 0 102"},
    {"SpotOverProcess", kProcessBelow, kSpotAbove, true, "102 51 0 0 0 102"},
    {"SpotOverSpot", kSpotBelow, kSpotAbove, true, "0 0 0 0 204 102"},
    {"SpotOverItself", Spot(kBlue, 0.8), kSpotAbove, true, "0 0 0 0 0 102"},
    // None of an ink is not the same as another ink: it takes its own away.
    {"NoneOfASpotOverItself", Spot(kBlue, 0.8), Spot(kBlue, 0), true, "0 0 0 0 0 0"},
    {"WhiteGrayOverBlack", kGrayBelow, Gray(1), true, "0 0 0 0 0 0"},
    {"NoInkOverAnything", kProcessBelow, Process(0, 0, 0, 0), true, "102 51 0 0 0 0"},
};

class OneOverAnother : public testing::TestWithParam<OverCase>
{
};

TEST_P(OneOverAnother, PrintsTheseInks)
{
    const OverCase &c = GetParam();
    KeptPlates plates;
    const auto draw = [&](Device *device) {
        device->FillPath(Rectangle(0, 0, 8, 8), {c.below, false});
        device->FillPath(Rectangle(0, 0, 4, 8), {c.above, c.overprint});
    };
    DrawPlates(draw, &plates, std::vector<std::string>{"Red", "Blue"});
    std::string levels;
    for (const char *ink : {"Cyan", "Magenta", "Yellow", "Black", "Red", "Blue"})
        levels.append(levels.empty() ? "" : " ").append(std::to_string(plates.At(ink, 1, 4)));
    EXPECT_EQ(levels, c.levels);
}
INSTANTIATE_TEST_SUITE_P(Plates, OneOverAnother, testing::ValuesIn(kOver),
                         [](const auto &tested) { return std::string(tested.param.name); });

TEST(Plates, CanIgnoreOverprint)
{
    KeptPlates plates;
    RasterOptions options = PlainOptions();
    options.overprint = false;
    const auto draw = [&](Device *device) {
        device->FillPath(Rectangle(0, 0, 8, 8), {kProcessBelow, false});
        device->FillPath(Rectangle(0, 0, 4, 8), {kSpotAbove, true});
    };
    DrawPlates(draw, &plates, std::nullopt, options);
    EXPECT_EQ(plates.At("Cyan", 1, 4), 0);
    EXPECT_EQ(plates.At("Cyan", 5, 4), 102);
    EXPECT_EQ(plates.At("Blue", 1, 4), 102);
}

std::string InkName(int number)
{
    return std::string("S").append(std::to_string(number));
}

TEST(Plates, ComeInFoursInTheOrderOfTheirFirstUses)
{
    KeptPlates plates;
    std::vector<SpotInk> inks;
    for (int i = 0; i < 5; ++i)
        inks.push_back({InkName(i), {0, 0, 0, 0.5}});
    const auto draw = [&](Device *device) {
        for (const int i : {3, 1, 3, 4, 0, 2})
            device->FillPath(Rectangle(i, 0, i + 1, 8), {Spot(inks[static_cast<size_t>(i)], 1), false});
    };
    DrawPlates(draw, &plates);
    EXPECT_EQ(plates.Order(), "Cyan Magenta Yellow Black; S3 S1 S4 S0; S2;");
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(plates.At(InkName(i), static_cast<size_t>(i), 4), 255);
        EXPECT_EQ(plates.At(InkName(i), static_cast<size_t>(i) + 1, 4), 0);
        EXPECT_EQ(plates.At("Black", static_cast<size_t>(i), 4), 0);
    }
}

TEST(Plates, AreThereForInksThatAreKnownAndNotUsed)
{
    KeptPlates plates;
    DrawPlates([](Device *) {}, &plates, std::vector<std::string>{"Red"});
    EXPECT_EQ(plates.Order(), "Cyan Magenta Yellow Black; Red;");
    EXPECT_EQ(plates.At("Red", 4, 4), 0);
}

TEST(Plates, OfProcessInksHaveSpotInksOfTheirNames)
{
    KeptPlates plates;
    const SpotInk black = {"Black", {0, 0, 0, 1}};
    DrawPlates(
        [&](Device *device) {
            device->FillPath(Rectangle(0, 0, 8, 8), {Spot(black, 0.5), false});
        },
        &plates);
    EXPECT_EQ(plates.Order(), "Cyan Magenta Yellow Black;");
    EXPECT_EQ(plates.At("Black", 4, 4), 128);
}

TEST(Plates, OfProcessInksHaveWhatStandsInForAnInkWithoutPlate)
{
    KeptPlates plates;
    const SpotInk all = {"All", {0, 1, 0, 0.5}};
    DrawPlates(
        [&](Device *device) {
            device->FillPath(Rectangle(0, 0, 8, 8), {Spot(all, 1), false});
        },
        &plates);
    EXPECT_EQ(plates.Order(), "Cyan Magenta Yellow Black;");
    EXPECT_EQ(plates.At("Magenta", 4, 4), 255);
    EXPECT_EQ(plates.At("Black", 4, 4), 128);
}

TEST(Plates, ShareAPixelByItsSamples)
{
    KeptPlates plates;
    // Of the 16 samples of the third pixel 8 are covered: half of 255 is 127.5, which is rounded up.
    DrawPlates(
        [&](Device *device) {
            device->FillPath(Rectangle(0, 0, 8, 8), {Process(1, 0, 0, 0), false});
            device->FillPath(Rectangle(0, 0, 2.5, 8), {Spot(kRed, 1), false});
        },
        &plates);
    EXPECT_EQ(plates.At("Red", 1, 4), 255);
    EXPECT_EQ(plates.At("Red", 2, 4), 128);
    EXPECT_EQ(plates.At("Red", 3, 4), 0);
    EXPECT_EQ(plates.At("Cyan", 1, 4), 0);
    EXPECT_EQ(plates.At("Cyan", 2, 4), 128);
    EXPECT_EQ(plates.At("Cyan", 3, 4), 255);
}

TEST(Plates, OfABlendHaveItsShareOfEach)
{
    KeptPlates plates;
    Shading shading;
    shading.matrix = {8, 0, 0, 8, 0, 0};
    shading.spans = {{0, 1, {Spot(kRed, 1), Process(0, 0, 0, 1)}}};
    DrawPlates([&](Device *device) { device->Shade(shading); }, &plates);
    for (size_t x = 0; x < 8; ++x) {
        // There are two places a pixel: an ink is that of a place at most a quarter of a pixel away, 8 of 255.
        const double part = (static_cast<double>(x) + 0.5) / 8;
        EXPECT_NEAR(plates.At("Red", x, 4), 255 * (1 - part), 8) << x;
        EXPECT_NEAR(plates.At("Black", x, 4), 255 * part, 8) << x;
        EXPECT_EQ(plates.At("Magenta", x, 4), 0) << x;
    }
}

TEST(Plates, SayWhichSamplesThereAre)
{
    RasterOptions options = PlainOptions();
    options.samples = 3;
    KeptPlates plates;
    std::string error;
    EXPECT_EQ(MakePlatesDevice(options, std::nullopt, Lent(&plates), &error), nullptr);
    EXPECT_EQ(error, "3 samples a side are not possible: use 1, 2, 4 or 8");
}

} // namespace
} // namespace vxhost
