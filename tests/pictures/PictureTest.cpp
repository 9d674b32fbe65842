// The real drawings beside pictures of the same art that an independent renderer made.
#include "tests/pictures/Picture.h"
#include "devices/raster/RasterDevice.h"
#include "host/fonts/FixedFontList.h"
#include "host/reading/Reading.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace vxtest
{
namespace
{

// Two good renderers differ by a few levels along edges, and no more.
constexpr double kMostOverInk = 6;
constexpr double kMostInATile = 40;
constexpr int kLongestSide = 256;

std::vector<std::string> ReferenceNames()
{
    std::vector<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator(VX_SOURCE_DIR "/tests/pictures/reference"))
        names.push_back(entry.path().stem().string());
    std::sort(names.begin(), names.end());
    return names;
}

vxhost::Picture Render(const std::string &path, std::string *error)
{
    const vxhost::Installation installation = {
        vxhost::Plugin::Load(VX_PLUGIN_PATH, error),
        std::make_unique<vxhost::FixedFontList>(std::vector<std::string>{"Courier"})};
    const auto document = vxhost::Document::Open(path, error);
    if (installation.plugin == nullptr || document == nullptr)
        return {};
    vxhost::Reading reading(installation, *document, {});
    vxhost::RasterOptions raster;
    raster.fit = kLongestSide;
    raster.profile = "none"; // the references mix colours by plain arithmetic
    raster.samples = 8;      // and cover pixels by area: the finest grid comes nearest to that
    vxhost::Picture picture;
    const auto device = vxhost::MakePictureDevice(raster, &picture, error);
    if (device == nullptr)
        return {};
    const vxhost::Outcome outcome = reading.Draw(reading.PageFor(), *device);
    EXPECT_EQ(outcome.result, 0);
    EXPECT_FALSE(outcome.failure) << outcome.failure.text;
    return picture;
}

using RealDrawing = testing::TestWithParam<std::string>;
std::string CaseNameOf(const testing::TestParamInfo<std::string> &drawing)
{
    std::string name = drawing.param;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}
INSTANTIATE_TEST_SUITE_P(Pictures, RealDrawing, testing::ValuesIn(ReferenceNames()), CaseNameOf);

TEST_P(RealDrawing, LooksLikeTheReference)
{
    std::string error;
    const vxhost::Picture expected =
        ReadPng(VX_SOURCE_DIR "/tests/pictures/reference/" + GetParam() + ".png", &error);
    ASSERT_EQ(error, "");
    const vxhost::Picture made = Render(VX_SOURCE_DIR "/samples/" + GetParam() + ".vx", &error);
    ASSERT_EQ(error, "");
    ASSERT_EQ(made.width, expected.width);
    ASSERT_EQ(made.height, expected.height);
    const PictureDistance distance = Compare(expected, made);
    EXPECT_GT(distance.inkedPixels, 500u);
    EXPECT_LT(distance.inked, kMostOverInk);
    EXPECT_LT(distance.worstTile, kMostInATile) << "at " << distance.tileX << ", " << distance.tileY;
}

vxhost::Picture WhitePicture()
{
    return {32, 20, std::vector<uint8_t>(size_t{32} * 20 * 4, 255)};
}

// The measure itself: a check that cannot fail would prove nothing.
TEST(PictureDistance, OfEqualPicturesIsZero)
{
    const PictureDistance distance = Compare(WhitePicture(), WhitePicture());
    EXPECT_EQ(distance.inkedPixels, 0u);
    EXPECT_EQ(distance.inked, 0);
    EXPECT_EQ(distance.worstTile, 0);
}

TEST(PictureDistance, CountsInkAndTiles)
{
    vxhost::Picture inked = WhitePicture();
    // One pixel of the last tile, which is 16 wide and 4 high: 255, 0 and 0 levels away.
    inked.rgba[(size_t{18} * 32 + 20) * 4] = 0;
    const PictureDistance distance = Compare(WhitePicture(), inked);
    EXPECT_EQ(distance.inkedPixels, 1u);
    EXPECT_EQ(distance.inked, 85);
    EXPECT_DOUBLE_EQ(distance.worstTile, 85.0 / 64);
    EXPECT_EQ(distance.tileX, 16);
    EXPECT_EQ(distance.tileY, 16);
}

} // namespace
} // namespace vxtest
