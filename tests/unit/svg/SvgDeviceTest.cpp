// What shapes become: a script, and the elements that stand for it. Scripts are those of Canvas; x grows by 10 less on
// the page, and y is 70 less its own.
#include "tests/support/CaseName.h"
#include "tests/unit/raster/Canvas.h"
#include "tests/unit/svg/Markup.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>

namespace vxhost
{
namespace
{

std::string Body(const std::string &script, const SvgOptions &options = PlainSvg())
{
    return BodyOf(SvgOf([&](Device *device) { DrawScript(script, device); }, options));
}

struct ElementCase {
    const char *name, *script, *body;
};

const ElementCase kElements[] = {
    {"AFillIsAPath", "1 0 0 0 k 10 20 m 60 20 l 60 70 l h f",
     "<path d=\"M0 50L50 50L50 0Z\" fill=\"#00ffff\" data-cmyk=\"1 0 0 0\"/>\n"},
    {"ACurveHasThreePoints", "0.5 g 10 70 m 10.5 69.25 20 60 30.0001 20 c f",
     "<path d=\"M0 0C.5 .75 10 10 20.0001 50\" fill=\"#7f7f7f\" data-gray=\".5\"/>\n"},
    {"AnEmptyPathIsNothing", "f s", ""},
    {"AStrokeIsNotFilled", "10 20 m 20 20 l s",
     "<path d=\"M0 50L10 50\" fill=\"none\" stroke=\"#000000\" data-stroke-gray=\"0\" "
     "stroke-width=\"1\"/>\n"},
    {"FillAndStrokeOfOnePathAreOneElement",
     "0 0 1 0 k 10 20 m 60 20 l 60 70 l h f 0 g 10 20 m 60 20 l 60 70 l h s",
     "<path d=\"M0 50L50 50L50 0Z\" fill=\"#ffff00\" data-cmyk=\"0 0 1 0\" stroke=\"#000000\" "
     "data-stroke-gray=\"0\" "
     "stroke-width=\"1\"/>\n"},
    {"FillAndStrokeOfTwoPathsAreTwoElements", "10 20 m 60 20 l 60 70 l f 10 20 m 60 20 l 60 69 l s",
     "<path d=\"M0 50L50 50L50 0\" fill=\"#000000\" data-gray=\"0\"/>\n"
     "<path d=\"M0 50L50 50L50 1\" fill=\"none\" stroke=\"#000000\" data-stroke-gray=\"0\" "
     "stroke-width=\"1\"/>\n"},
    {"AStrokeJoinsOnlyTheElementBeforeIt", "10 20 m 60 20 l f q Q 10 20 m 60 20 l s",
     "<path d=\"M0 50L50 50\" fill=\"#000000\" data-gray=\"0\"/>\n"
     "<path d=\"M0 50L50 50\" fill=\"none\" stroke=\"#000000\" data-stroke-gray=\"0\" "
     "stroke-width=\"1\"/>\n"},
    {"OverprintMultiplies", "1 o 0 1 0 0 k 10 20 m 60 20 l 60 70 l f",
     "<path d=\"M0 50L50 50L50 0\" fill=\"#ff00ff\" data-cmyk=\"0 1 0 0\" data-overprint=\"true\" "
     "style=\"mix-blend-mode:multiply\"/>\n"},
    {"WhatMultipliesIsAnElementOfItsOwn", "10 20 m 60 20 l f 1 o 0 1 0 0 k 10 20 m 60 20 l s",
     "<path d=\"M0 50L50 50\" fill=\"#000000\" data-gray=\"0\"/>\n"
     "<path d=\"M0 50L50 50\" fill=\"none\" stroke=\"#ff00ff\" data-stroke-cmyk=\"0 1 0 0\" "
     "data-stroke-overprint=\"true\" stroke-width=\"1\" style=\"mix-blend-mode:multiply\"/>\n"},
    {"SolidBlackHidesWhateverItOverprints", "1 o 0 0 0 1 k 10 20 m 60 20 l f",
     "<path d=\"M0 50L50 50\" fill=\"#000000\" data-cmyk=\"0 0 0 1\" data-overprint=\"true\"/>\n"},
    {"AllInksLeaveNoneAsItIs", "1 o 0.2 0.2 0.2 0.2 k 10 20 m 60 20 l f",
     // 51 of 255 of each ink: (255 - 51)² / 255 is 163.2
     "<path d=\"M0 50L50 50\" fill=\"#a3a3a3\" data-cmyk=\".2 .2 .2 .2\" data-overprint=\"true\"/>\n"},
    {"ATurnedPenIsRoundAllTheSame", "0 2 -2 0 5 5 cm 3 w 10 20 m 20 20 l s",
     "<path d=\"M0 50L10 50\" fill=\"none\" stroke=\"#000000\" data-stroke-gray=\"0\" "
     "stroke-width=\"6\"/>\n"},
    {"AWidePenIsSqueezedInHeight", "2 0 0 1 0 0 cm 10 20 m 20 20 l s",
     "<path d=\"M0 100L10 100\" transform=\"matrix(1 0 0 .5 0 0)\" fill=\"none\" stroke=\"#000000\" "
     "data-stroke-gray=\"0\" stroke-width=\"2\"/>\n"},
    {"ATallPenIsSqueezedInWidth", "1 0 0 4 0 0 cm 10 20 m 20 20 l s",
     "<path d=\"M0 50L40 50\" transform=\"matrix(.25 0 0 1 0 0)\" fill=\"none\" stroke=\"#000000\" "
     "data-stroke-gray=\"0\" stroke-width=\"4\"/>\n"},
    {"AFlatPenKeepsAThousandth", "1 0 0 0 0 0 cm 4 w 10 20 m 20 20 l s",
     "<path d=\"M0 50000L10 50000\" transform=\"matrix(1 0 0 .001 0 0)\" fill=\"none\" stroke=\"#000000\" "
     "data-stroke-gray=\"0\" stroke-width=\"4\"/>\n"},
    {"APenWithoutSizeIsAsThinAsCanBeSeen", "0 0 0 0 0 0 cm 10 20 m 20 20 l s",
     "<path d=\"M0 50L10 50\" fill=\"none\" stroke=\"#000000\" data-stroke-gray=\"0\" stroke-width=\".5\" "
     "vector-effect=\"non-scaling-stroke\"/>\n"},
    {"AStretchedStrokeDoesNotJoin", "10 20 m 20 20 l f 2 0 0 1 0 0 cm 10 20 m 20 20 l s",
     "<path d=\"M0 50L10 50\" fill=\"#000000\" data-gray=\"0\"/>\n"
     "<path d=\"M0 100L10 100\" transform=\"matrix(1 0 0 .5 0 0)\" fill=\"none\" stroke=\"#000000\" "
     "data-stroke-gray=\"0\" stroke-width=\"2\"/>\n"},
    {"WidthNoneIsAsThinAsCanBeSeen", "0 w 10 20 m 20 20 l s",
     "<path d=\"M0 50L10 50\" fill=\"none\" stroke=\"#000000\" data-stroke-gray=\"0\" stroke-width=\".5\" "
     "vector-effect=\"non-scaling-stroke\"/>\n"},
    {"DashesOfTheThinnestLineStayInPoints", "0 w 3 1 0 d 10 20 m 20 20 l s",
     "<path d=\"M0 50L10 50\" fill=\"none\" stroke=\"#000000\" data-stroke-gray=\"0\" stroke-width=\".5\" "
     "stroke-dasharray=\"3 1\"/>\n"},
    {"RoundEndsBevelledCornersAndDashes", "1 J 2 j 4 M 3 1 0.5 d 2 0 0 2 0 0 cm 10 20 m 20 20 l s",
     "<path d=\"M0 50L10 50\" fill=\"none\" stroke=\"#000000\" data-stroke-gray=\"0\" stroke-width=\"2\" "
     "stroke-linecap=\"round\" stroke-linejoin=\"bevel\" stroke-dasharray=\"6 2\" "
     "stroke-dashoffset=\"1\"/>\n"},
    {"TheMitreLimitIsSaidWhereItIsNotTen", "2 J 4 M 10 20 m 20 20 l s",
     "<path d=\"M0 50L10 50\" fill=\"none\" stroke=\"#000000\" data-stroke-gray=\"0\" stroke-width=\"1\" "
     "stroke-linecap=\"square\" stroke-miterlimit=\"4\"/>\n"},
    {"DashesTooShortToWriteAreNone", "0.00001 0.00001 0 d 10 20 m 20 20 l s",
     "<path d=\"M0 50L10 50\" fill=\"none\" stroke=\"#000000\" data-stroke-gray=\"0\" "
     "stroke-width=\"1\"/>\n"},
    {"SquareEndsDoNotShowDots", "2 J 10 20 m 10 20 l h 30 20 m 40 20 l s 10 20 m 10 20 l s",
     "<path d=\"M20 50L30 50\" fill=\"none\" stroke=\"#000000\" data-stroke-gray=\"0\" stroke-width=\"1\" "
     "stroke-linecap=\"square\"/>\n"},
    {"RoundEndsShowDots", "1 J 10 20 m 10 20 l s",
     "<path d=\"M0 50L0 50\" fill=\"none\" stroke=\"#000000\" data-stroke-gray=\"0\" stroke-width=\"1\" "
     "stroke-linecap=\"round\"/>\n"},
    {"AClipIsAGroup", "q 10 20 60 70 re W 10 20 m 60 20 l f Q 10 20 m 60 20 l f",
     "<clipPath id=\"c1\"><path d=\"M0 50L50 50L50 0L0 0Z\"/></clipPath>\n"
     "<g clip-path=\"url(#c1)\">\n"
     "<path d=\"M0 50L50 50\" fill=\"#000000\" data-gray=\"0\"/>\n"
     "</g>\n"
     "<path d=\"M0 50L50 50\" fill=\"#000000\" data-gray=\"0\"/>\n"},
    {"ClipsIntersectAsGroupsInGroups", "q 10 20 60 70 re W q 10 20 20 30 re W Q 10 20 m 60 20 l f Q",
     "<clipPath id=\"c1\"><path d=\"M0 50L50 50L50 0L0 0Z\"/></clipPath>\n"
     "<g clip-path=\"url(#c1)\">\n"
     "<clipPath id=\"c2\"><path d=\"M0 50L10 50L10 40L0 40Z\"/></clipPath>\n"
     "<g clip-path=\"url(#c2)\">\n"
     "</g>\n"
     "<path d=\"M0 50L50 50\" fill=\"#000000\" data-gray=\"0\"/>\n"
     "</g>\n"},
    {"ARestoreEndsAllClipsSinceItsSave", "q 10 20 60 70 re W 10 20 20 30 re W Q",
     "<clipPath id=\"c1\"><path d=\"M0 50L50 50L50 0L0 0Z\"/></clipPath>\n"
     "<g clip-path=\"url(#c1)\">\n"
     "<clipPath id=\"c2\"><path d=\"M0 50L10 50L10 40L0 40Z\"/></clipPath>\n"
     "<g clip-path=\"url(#c2)\">\n"
     "</g>\n"
     "</g>\n"},
    {"ThePageEndsTheClipsThatAreLeft", "10 20 20 30 re W",
     "<clipPath id=\"c1\"><path d=\"M0 50L10 50L10 40L0 40Z\"/></clipPath>\n"
     "<g clip-path=\"url(#c1)\">\n"
     "</g>\n"},
    {"NothingIsPaintedUnderAnEmptyClip",
     "q W 10 20 m 60 20 l f 10 20 m 60 20 l s q 10 20 20 30 re W 10 20 m 60 20 l f Q Q 10 20 m 60 20 l f",
     "<path d=\"M0 50L50 50\" fill=\"#000000\" data-gray=\"0\"/>\n"},
};

class SvgElements : public testing::TestWithParam<ElementCase>
{
};

TEST_P(SvgElements, StandForWhatIsDrawn)
{
    EXPECT_EQ(Body(GetParam().script), GetParam().body);
}
INSTANTIATE_TEST_SUITE_P(Svg, SvgElements, testing::ValuesIn(kElements), vxtest::CaseName());

TEST(SvgDeviceTest, HasAHead)
{
    std::string text, error;
    SvgOptions options = PlainSvg();
    options.background = Rgb{255, 16, 0};
    const auto device = MakeSvgDevice(
        options,
        [&text](std::span<const std::byte> bytes) {
            text.append(reinterpret_cast<const char *>(bytes.data()), bytes.size());
            return Failure{};
        },
        &error);
    ASSERT_NE(device, nullptr);
    device->BeginPage({{-0.5, 0, 99.75, 40}, "Fish & \"Chips\"", "nobody"});
    EXPECT_FALSE(device->EndPage());
    EXPECT_EQ(text, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                    "<svg xmlns=\"http://www.w3.org/2000/svg\" xmlns:xlink=\"http://www.w3.org/1999/xlink\" "
                    "version=\"1.1\" width=\"100.25pt\" height=\"40pt\" viewBox=\"0 0 100.25 40\" "
                    "stroke-miterlimit=\"10\">\n"
                    "<title>Fish &amp; &quot;Chips&quot;</title>\n"
                    "<rect width=\"100.25\" height=\"40\" fill=\"#ff1000\"/>\n"
                    "</svg>\n");
}

TEST(SvgDeviceTest, OverprintThatIsNotShownIsNotedAllTheSame)
{
    SvgOptions options = PlainSvg();
    options.overprint = false;
    EXPECT_EQ(Body("1 o 0 1 0 0 k 10 20 m 60 20 l f", options),
              "<path d=\"M0 50L50 50\" fill=\"#ff00ff\" data-cmyk=\"0 1 0 0\" data-overprint=\"true\"/>\n");
}

TEST(SvgDeviceTest, RefusesAProfileThatIsNone)
{
    std::string error;
    SvgOptions options;
    options.profile = "no-such.icc";
    EXPECT_EQ(MakeSvgDevice(options, {}, &error), nullptr);
    EXPECT_EQ(error, "profile \"no-such.icc\" cannot be read as an ICC profile");
}

TEST(SvgDeviceTest, ReportsWhatTheSinkSays)
{
    std::string error;
    const auto device = MakeSvgDevice(
        PlainSvg(),
        [](std::span<const std::byte>) {
            return Failure{FailureKind::CannotWrite, "no room", ENOSPC};
        },
        &error);
    device->BeginPage({{0, 0, 10, 10}, {}, {}});
    const Failure failure = device->EndPage();
    EXPECT_EQ(failure.kind, FailureKind::CannotWrite);
    EXPECT_EQ(failure.text, "no room");
    EXPECT_EQ(failure.error, ENOSPC);
}

// Elements deeper than 256 are refused by the most careful readers.
TEST(SvgDeviceTest, DeepClipsDoNotNestDeeply)
{
    constexpr int kClips = 1000;
    std::string script;
    for (int i = 0; i < kClips; ++i)
        script += "q 10 20 60 70 re W ";
    script += "10 20 m 60 20 l f Q 10 20 m 60 20 l f ";
    for (int i = 1; i < kClips; ++i)
        script += "Q ";
    const std::string body = Body(script + "10 20 m 60 20 l f");

    int depth = 0, deepest = 0;
    for (size_t at = 0; (at = body.find('<', at)) != std::string::npos; ++at) {
        depth += body.compare(at, 3, "<g ") == 0 ? 1 : body.compare(at, 4, "</g>") == 0 ? -1 : 0;
        ASSERT_GE(depth, 0);
        deepest = std::max(deepest, depth);
    }
    EXPECT_EQ(depth, 0);
    EXPECT_EQ(deepest, 200);
    // From there each clip stands for itself and the one around it.
    EXPECT_NE(body.find("<clipPath id=\"c200\"><path"), std::string::npos);
    EXPECT_NE(body.find("<clipPath id=\"c201\" clip-path=\"url(#c200)\"><path"), std::string::npos);
    EXPECT_NE(body.find("<clipPath id=\"c1000\" clip-path=\"url(#c999)\"><path"), std::string::npos);
    EXPECT_NE(body.find("<g clip-path=\"url(#c1000)\">\n<path d=\"M0 50L50 50\" fill=\"#000000\" "
                        "data-gray=\"0\"/>\n</g>\n<g clip-path=\"url(#c999)\">\n<path "),
              std::string::npos);
}

} // namespace
} // namespace vxhost
