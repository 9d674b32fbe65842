// From inks to the screen: plain arithmetic, the built-in profile, profiles from files, backgrounds.
#include "tests/unit/raster/Canvas.h"

#include "devices/colour/Fogra39.h"
#include "devices/colour/ScreenColours.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <span>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

namespace vxhost
{
namespace
{

std::string ColourOf(const std::string &inks, const RasterOptions &options)
{
    return PixelAt(Draw(inks + " k 0 0 8 8 re f", 8, 8, options), 0, 0);
}

TEST(PlainColours, AreProducts)
{
    const struct {
        const char *inks, *colour;
    } cases[] = {
        {"0 0 0 0", "255 255 255"},
        {"1 0 0 0", "0 255 255"},
        {"0 1 0 0", "255 0 255"},
        {"0 0 1 0", "255 255 0"},
        {"0 0 0 1", "0 0 0"},
        {"0.2 0.4 0.6 0", "204 153 102"},
        // (1 - 0.2)(1 - 0.6) and so on: 0.32, 0.24, 0.16 of 255.
        {"0.2 0.4 0.6 0.6", "82 61 41"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(ColourOf(c.inks, PlainOptions()), c.colour) << c.inks;
}

int Level(const std::string &colour, size_t component)
{
    size_t at = 0;
    for (; component > 0; --component)
        at = colour.find(' ', at) + 1;
    return std::stoi(colour.substr(at));
}

struct Range {
    const char *inks;
    int low[3], high[3];
};

// What printed sheets look like: the solids of coated offset paper are known to a few levels.
const Range kSolids[] = {
    {"0 0 0 0", {255, 255, 255}, {255, 255, 255}}, {"0 0 0 1", {25, 25, 25}, {40, 40, 40}},
    {"1 0 0 0", {0, 150, 217}, {10, 166, 237}},    {"0 1 0 0", {220, 0, 116}, {240, 10, 136}},
    {"0 0 1 0", {245, 227, 0}, {255, 247, 20}},    {"1 1 1 1", {0, 0, 0}, {10, 10, 10}},
};

class PressColours : public testing::TestWithParam<Intent>
{
};

TEST_P(PressColours, LookLikePrint)
{
    RasterOptions options = PlainOptions();
    options.profile = "fogra39";
    options.intent = GetParam();
    for (const Range &solid : kSolids) {
        const std::string colour = ColourOf(solid.inks, options);
        for (size_t i = 0; i < 3; ++i) {
            EXPECT_GE(Level(colour, i), solid.low[i]) << solid.inks << ": " << colour;
            EXPECT_LE(Level(colour, i), solid.high[i]) << solid.inks << ": " << colour;
        }
    }
}
INSTANTIATE_TEST_SUITE_P(Raster, PressColours, testing::Values(Intent::Relative, Intent::Perceptual),
                         [](const auto &test) { return test.index == 0 ? "Relative" : "Perceptual"; });

// The built-in profile has a way of its own. As the profile of a program it goes through Little CMS, which is slower and
// right by definition.
TEST_P(PressColours, AreThoseOfTheProfile)
{
    const auto make = [](ProfileBytes bytes) {
        std::string error;
        return ScreenColours::Make({"fogra39", std::move(bytes), GetParam()}, &error);
    };
    const std::span<const std::byte> profile = Fogra39Profile();
    const auto quick = make(nullptr);
    const auto plain = make(std::make_shared<std::vector<std::byte>>(profile.begin(), profile.end()));
    ASSERT_NE(plain, nullptr);
    EXPECT_EQ(quick->Describe(), plain->Describe());

    // Any inks, and those on the faces and edges of the space: most colours of documents have inks at an end.
    std::mt19937 random(39);
    constexpr int kColours = 1'000'000;
    for (int i = 0; i < kColours; ++i) {
        auto ink = static_cast<InkWord>(random());
        const auto kept = i % 2 == 0 ? ~InkWord{0} : static_cast<InkWord>(random());
        for (int shift = 0; shift < 32; shift += 8) {
            if ((kept >> shift & 3) == 0)
                ink |= InkWord{0xFF} << shift;
            else if ((kept >> shift & 3) == 1)
                ink &= ~(InkWord{0xFF} << shift);
        }
        ASSERT_EQ(quick->Convert(ink), plain->Convert(ink)) << std::hex << ink;
    }
    // Each ink alone, and each gray.
    for (InkWord level = 0; level < 256; ++level) {
        for (int shift = 0; shift < 32; shift += 8)
            ASSERT_EQ(quick->Convert(level << shift), plain->Convert(level << shift))
                << level << ' ' << shift;
        const InkWord gray = level * 0x010101U;
        ASSERT_EQ(quick->Convert(gray), plain->Convert(gray)) << level;
    }
}

TEST(GrayColours, AreBlackInk)
{
    RasterOptions options = PlainOptions();
    options.profile = "fogra39";
    EXPECT_EQ(PixelAt(Draw("0.4 g 0 0 8 8 re f", 8, 8, options), 0, 0), ColourOf("0 0 0 0.6", options));
}

class ProfileFiles : public testing::Test
{
  protected:
    ProfileFiles()
        : path_(std::filesystem::temp_directory_path() / ("profile-" + std::to_string(getpid()) + ".icc"))
    {
    }
    ~ProfileFiles() override { std::filesystem::remove(path_); }

    void Write(std::span<const std::byte> bytes)
    {
        std::ofstream(path_, std::ios::binary)
            .write(reinterpret_cast<const char *>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
    std::string Try(RasterOptions options = PlainOptions())
    {
        options.profile = path_.string();
        return TryDraw("", {0, 0, 8, 8}, options, &picture_);
    }

    std::filesystem::path path_;
    Picture picture_;
};

TEST_F(ProfileFiles, OfAPressServe)
{
    Write(Fogra39Profile());
    RasterOptions file = PlainOptions(), builtIn = PlainOptions();
    file.profile = path_.string();
    builtIn.profile = "fogra39";
    EXPECT_EQ(ColourOf("0.3 0.7 0.1 0.2", file), ColourOf("0.3 0.7 0.1 0.2", builtIn));
}

TEST_F(ProfileFiles, ThatAreNotThereAreNamed)
{
    EXPECT_EQ(Try(), "profile \"" + path_.string() + "\" cannot be read as an ICC profile");
}

TEST_F(ProfileFiles, OfOtherColoursAreRefused)
{
    std::vector<std::byte> bytes(Fogra39Profile().begin(), Fogra39Profile().end());
    const char colours[] = {'R', 'G', 'B', ' '}; // the data colour space stands at byte 16 of the header
    for (size_t i = 0; i < 4; ++i)
        bytes[16 + i] = static_cast<std::byte>(colours[i]);
    Write(bytes);
    EXPECT_EQ(Try(), "profile \"" + path_.string() + "\" is not for CMYK");
}

TEST_F(ProfileFiles, CutShortAreRefused)
{
    Write(Fogra39Profile().first(1000));
    EXPECT_NE(Try(), "");
}

TEST(Backgrounds, ShowWhereNothingIsPainted)
{
    RasterOptions options = PlainOptions();
    options.background = Rgb{10, 20, 30};
    const Picture picture = Draw("2 2 6.5 6 re f 0 0 0 0 k 0 0 1 1 re f", 8, 8, options);
    EXPECT_EQ(PixelAt(picture, 0, 0), "10 20 30");
    EXPECT_EQ(PixelAt(picture, 3, 3), "0 0 0");
    EXPECT_EQ(PixelAt(picture, 6, 3), "5 10 15");     // 8 samples of 16
    EXPECT_EQ(PixelAt(picture, 0, 7), "255 255 255"); // painted in the colour of paper
}

TEST(Backgrounds, NoneIsTransparent)
{
    RasterOptions options = PlainOptions();
    options.background.reset();
    const Picture picture = Draw("0 1 0 0 k 2 2 6.5 6 re f 0 0 0 0 k 0 0 1 1 re f", 8, 8, options);
    EXPECT_EQ(PixelAt(picture, 0, 0), "0 0 0 0");
    EXPECT_EQ(PixelAt(picture, 3, 3), "255 0 255");
    EXPECT_EQ(PixelAt(picture, 6, 3), "255 0 255 128"); // the colour is not mixed with anything
    EXPECT_EQ(PixelAt(picture, 0, 7), "255 255 255");
}

// Neither of two halves is all of a pixel; both together are.
TEST(Backgrounds, NoneIsOpaqueWhereShapesMeet)
{
    RasterOptions options = PlainOptions();
    options.background.reset();
    const Picture picture = Draw("0 0 2.5 8 re f 2.5 0 8 8 re f", 8, 8, options);
    EXPECT_EQ(PixelAt(picture, 2, 3), "0 0 0");
}

TEST(Backgrounds, OverprintOfNothingPaintsNothing)
{
    RasterOptions options = PlainOptions();
    options.background.reset();
    EXPECT_EQ(PixelAt(Draw("1 o 0 0 0 0 k 0 0 8 8 re f", 8, 8, options), 3, 3), "0 0 0 0");
}

} // namespace
} // namespace vxhost
