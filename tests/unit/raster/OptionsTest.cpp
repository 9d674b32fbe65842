// The size of a picture, and options that cannot be met.
#include "tests/unit/raster/Canvas.h"

#include <gtest/gtest.h>
#include <limits>

namespace vxhost
{
namespace
{

struct SizeCase {
    const char *name;
    double boxWidth, boxHeight;
    double dpi;
    int width, height, fit;
    int expectedWidth, expectedHeight;
};

const SizeCase kSizes[] = {
    {"APixelAPoint", 100, 50, 72, 0, 0, 0, 100, 50},
    {"Resolution", 72, 36, 150, 0, 0, 0, 150, 75},
    {"RoundsDown", 100.4, 50.4, 72, 0, 0, 0, 100, 50},
    {"RoundsUp", 100.5, 50.6, 72, 0, 0, 0, 101, 51},
    {"AtLeastOnePixel", 0.1, 200, 72, 0, 0, 0, 1, 200},
    {"WidthKeepsTheAspect", 100, 50, 72, 300, 0, 0, 300, 150},
    {"HeightKeepsTheAspect", 100, 50, 72, 0, 300, 0, 600, 300},
    {"WidthAndHeightAreBothKept", 100, 50, 72, 30, 40, 0, 30, 40},
    {"FitOfAWideBox", 100, 50, 72, 0, 0, 256, 256, 128},
    {"FitOfATallBox", 50, 100, 72, 0, 0, 256, 128, 256},
    {"FitWithAThinBox", 1000, 1, 72, 0, 0, 100, 100, 1},
};

TEST(PictureSizes, FollowTheOptions)
{
    for (const SizeCase &c : kSizes) {
        RasterOptions options;
        options.dpi = c.dpi;
        options.width = c.width;
        options.height = c.height;
        options.fit = c.fit;
        const PictureSize size = FindPictureSize({10, 20, 10 + c.boxWidth, 20 + c.boxHeight}, options);
        EXPECT_FALSE(size.failure) << c.name;
        EXPECT_EQ(size.width, c.expectedWidth) << c.name;
        EXPECT_EQ(size.height, c.expectedHeight) << c.name;
    }
}

TEST(PictureSizes, HaveLimits)
{
    RasterOptions options = PlainOptions();
    const Failure tooLarge = FindPictureSize({0, 0, 20000, 20000}, options).failure;
    EXPECT_EQ(tooLarge.kind, FailureKind::TooLarge);
    EXPECT_EQ(tooLarge.text,
              "a picture of 20000 by 20000 pixels is too large: choose a smaller size or resolution");
    EXPECT_TRUE(FindPictureSize({0, 0, 200000, 1}, options).failure);
    EXPECT_FALSE(FindPictureSize({0, 0, 16384, 16384}, options).failure);
    options.dpi = 1e300;
    EXPECT_TRUE(FindPictureSize({0, 0, 10, 10}, options).failure);
}

TEST(PictureSizes, NeedABox)
{
    const double none = std::numeric_limits<double>::quiet_NaN();
    for (const Box &box : {Box{5, 5, 5, 9}, Box{5, 9, 8, 9}, Box{8, 0, 5, 9}, Box{none, 0, 5, 9}})
        EXPECT_EQ(FindPictureSize(box, PlainOptions()).failure.text,
                  "the box to draw is empty: choose one with an area");
}

// 10.4 points become 10 pixels, and the box fills them to the edge.
TEST(PictureSizes, AreFilledByTheBox)
{
    const Picture picture = Draw("0 0 10.4 10.4 re f", 10.4, 10.4);
    EXPECT_EQ(picture.width, 10);
    EXPECT_EQ(Sketch(picture).find_first_not_of("#\n"), std::string::npos);
}

TEST(PictureSizes, FollowABoxThatDoesNotStartAtNought)
{
    Picture picture;
    EXPECT_EQ(TryDraw("100 200 101 201 re f", {100, 200, 104, 204}, PlainOptions(), &picture), "");
    EXPECT_EQ(Sketch(picture), "....\n....\n....\n#...\n");
}

TEST(BadOptions, AreNamed)
{
    Picture picture;
    RasterOptions options = PlainOptions();
    options.samples = 3;
    EXPECT_EQ(TryDraw("", {0, 0, 8, 8}, options, &picture),
              "3 samples a side are not possible: use 1, 2, 4 or 8");
}

// A device whose page could not begin takes everything else in silence.
TEST(BadBoxes, AreReportedAtTheEnd)
{
    Picture picture;
    EXPECT_EQ(TryDraw("q 0 0 8 8 re W 0 0 8 8 re f 0 0 m 8 8 l s Q", {0, 0, 0, 0}, PlainOptions(), &picture),
              "the box to draw is empty: choose one with an area");
}

} // namespace
} // namespace vxhost
