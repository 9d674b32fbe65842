// Shadings as gradients. The page is 100 by 50, its lower left corner at (10, 20).
#include "devices/svg/RampStops.h"
#include "tests/unit/svg/Markup.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

namespace vxhost
{
namespace
{

Colour Cyan(double amount)
{
    return {ColourSpace::Cmyk, {amount, 0, 0, 0}};
}

Shading Axial(const Matrix &matrix)
{
    Shading shading;
    shading.matrix = matrix;
    shading.spans = {{0, 1, {Cyan(0), Cyan(1)}}};
    return shading;
}

Shading Radial(const Matrix &matrix, Shading::Circle first, Shading::Circle last)
{
    Shading shading = Axial(matrix);
    shading.kind = ShadingKind::Radial;
    shading.first = first;
    shading.last = last;
    return shading;
}

std::string Body(const std::vector<Shading> &shadings)
{
    return BodyOf(SvgOf([&](Device *device) {
        for (const Shading &shading : shadings)
            device->Shade(shading);
    }));
}

const std::string kWhiteToCyan = "<linearGradient id=\"r1\">"
                                 "<stop offset=\"0\" stop-color=\"#ffffff\" data-cmyk=\"0 0 0 0\"/>"
                                 "<stop offset=\"1\" stop-color=\"#00ffff\" data-cmyk=\"1 0 0 0\"/>"
                                 "</linearGradient>\n";

TEST(SvgGradientTest, ABandIsALinearGradient)
{
    EXPECT_EQ(Body({Axial({100, 0, 0, 50, 10, 20})}),
              kWhiteToCyan +
                  "<linearGradient id=\"g1\" xlink:href=\"#r1\" gradientUnits=\"userSpaceOnUse\" x1=\"0\" "
                  "y1=\"50\" x2=\"100\" y2=\"50\"/>\n"
                  "<path d=\"M0 50L100 50L100 0L0 0Z\" fill=\"url(#g1)\"/>\n");
}

// From (0, 50) the lines of one colour go up to the right at 45 degrees. The gradient's own direction is square to
// that: down to the right, as far as the foot of the perpendicular from (100, 50).
TEST(SvgGradientTest, ASlantedBandKeepsItsLinesOfOneColour)
{
    EXPECT_EQ(Body({Axial({100, 0, 50, 50, 10, 20})}),
              kWhiteToCyan +
                  "<linearGradient id=\"g1\" xlink:href=\"#r1\" gradientUnits=\"userSpaceOnUse\" x1=\"0\" "
                  "y1=\"50\" x2=\"50\" y2=\"100\"/>\n"
                  "<path d=\"M0 50L100 50L150 0L50 0Z\" fill=\"url(#g1)\"/>\n");
}

TEST(SvgGradientTest, ARampIsWrittenOnce)
{
    const Shading band = Axial({100, 0, 0, 50, 10, 20});
    const std::string first = Body({band});
    EXPECT_EQ(Body({band, band}), first + "<linearGradient id=\"g2\" xlink:href=\"#r1\" "
                                          "gradientUnits=\"userSpaceOnUse\" x1=\"0\" y1=\"50\" "
                                          "x2=\"100\" y2=\"50\"/>\n"
                                          "<path d=\"M0 50L100 50L100 0L0 0Z\" fill=\"url(#g2)\"/>\n");
    Shading other = band;
    other.spans[0].colours[1].ink[0] = 0.5;
    EXPECT_NE(Body({band, other}).find("<linearGradient id=\"r2\">"), std::string::npos);
}

TEST(SvgGradientTest, ColoursMayJump)
{
    Shading shading = Axial({100, 0, 0, 50, 10, 20});
    shading.spans = {{0, 0.25, {Cyan(0)}}, {0.25, 1, {Cyan(1)}}};
    EXPECT_NE(Body({shading}).find("<stop offset=\"0\" stop-color=\"#ffffff\" data-cmyk=\"0 0 0 0\"/>"
                                   "<stop offset=\".25\" stop-color=\"#ffffff\" data-cmyk=\"0 0 0 0\"/>"
                                   "<stop offset=\".25\" stop-color=\"#00ffff\" data-cmyk=\"1 0 0 0\"/>"
                                   "<stop offset=\"1\" stop-color=\"#00ffff\" data-cmyk=\"1 0 0 0\"/>"),
              std::string::npos);
}

// A gradient starts at the middle: the inner circle, a quarter of the outer, has the last colour throughout.
TEST(SvgGradientTest, CirclesAreARadialGradient)
{
    EXPECT_EQ(
        Body({Radial({1, 0, 0, 1, 60, 45}, {{0, 0}, 20}, {{0, 0}, 5})}),
        "<linearGradient id=\"r1\"><stop offset=\".25\" stop-color=\"#00ffff\" data-cmyk=\"1 0 0 0\"/>"
        "<stop offset=\"1\" stop-color=\"#ffffff\" data-cmyk=\"0 0 0 0\"/></linearGradient>\n"
        "<radialGradient id=\"g1\" xlink:href=\"#r1\" gradientUnits=\"userSpaceOnUse\" cx=\"50\" cy=\"25\" "
        "r=\"20\"/>\n"
        "<circle cx=\"50\" cy=\"25\" r=\"20\" fill=\"url(#g1)\"/>\n");
}

// The circles shrink from 20 to 10 while they go 6 to the right and 3 up; gone on, they vanish after twice that way.
TEST(SvgGradientTest, CirclesOffCentreShrinkToTheirFocus)
{
    EXPECT_EQ(
        Body({Radial({1, 0, 0, 1, 60, 45}, {{0, 0}, 20}, {{6, 3}, 10})}),
        "<linearGradient id=\"r1\"><stop offset=\".5\" stop-color=\"#00ffff\" data-cmyk=\"1 0 0 0\"/>"
        "<stop offset=\"1\" stop-color=\"#ffffff\" data-cmyk=\"0 0 0 0\"/></linearGradient>\n"
        "<radialGradient id=\"g1\" xlink:href=\"#r1\" gradientUnits=\"userSpaceOnUse\" cx=\"50\" cy=\"25\" "
        "r=\"20\" fx=\"62\" fy=\"19\"/>\n"
        "<circle cx=\"50\" cy=\"25\" r=\"20\" fill=\"url(#g1)\"/>\n");
}

TEST(SvgGradientTest, CirclesThatBecomeEllipsesAreTransformed)
{
    const std::string body = Body({Radial({2, 0, 0, 1, 60, 45}, {{0, 0}, 20}, {{0, 0}, 0})});
    EXPECT_NE(
        body.find(
            "<radialGradient id=\"g1\" xlink:href=\"#r1\" gradientUnits=\"userSpaceOnUse\" cx=\"50\" "
            "cy=\"50\" r=\"40\"/>\n"
            "<circle cx=\"50\" cy=\"50\" r=\"40\" transform=\"matrix(1 0 0 .5 0 0)\" fill=\"url(#g1)\"/>\n"),
        std::string::npos)
        << body;
}

TEST(SvgGradientTest, WhatNoGradientShowsIsShapes)
{
    const Shading::Circle disc = {{0, 0}, 20};
    const Shading shadings[] = {
        Axial({0, 0, 0, 50, 10, 20}),                     // no width
        Axial({100, 50, 50, 25, 10, 20}),                 // both axes along one line
        Radial({1, 0, 0, 0, 60, 45}, disc, {{0, 0}, 5}),  // no height
        Radial({1, 0, 0, 1, 60, 45}, disc, {{40, 0}, 5}), // side by side
        Radial({1, 0, 0, 1, 60, 45}, disc, {{15, 0}, 5}), // touching from inside
        Radial({1, 0, 0, 1, 60, 45}, {{0, 0}, 5}, disc),  // growing
        Radial({1, 0, 0, 1, 60, 45}, disc, disc),         // staying
    };
    for (const Shading &shading : shadings) {
        const std::string body = Body({shading});
        EXPECT_EQ(body.find("Gradient"), std::string::npos) << body;
        EXPECT_NE(body.find(" fill=\"#ffffff\" data-cmyk=\"0 0 0 0\"/>\n<path "), std::string::npos) << body;
        EXPECT_NE(body.find(" fill=\"#00ffff\" data-cmyk=\"1 0 0 0\"/>\n"), std::string::npos) << body;
    }
}

TEST(SvgGradientTest, OverprintMultiplies)
{
    Shading shading = Axial({100, 0, 0, 50, 10, 20});
    shading.overprint = true;
    EXPECT_NE(Body({shading}).find(
                  " fill=\"url(#g1)\" data-overprint=\"true\" style=\"mix-blend-mode:multiply\"/>\n"),
              std::string::npos);
}

// Levels far from straight: each component darkens with the square of the paper that is left, at a place of its own.
std::array<double, 3> BentLevels(const Colour &colour)
{
    const double cyan = colour.ink[0], magenta = colour.ink[1], yellow = colour.ink[2];
    return {255 * (1 - cyan) * (1 - cyan), 255 * (1 - magenta * cyan) * (1 - magenta * cyan),
            255 * (1 - yellow)};
}

Rgb Bent(const Colour &colour)
{
    const auto levels = BentLevels(colour);
    const auto round = [](double level) { return static_cast<uint8_t>(std::lround(level)); };
    return {round(levels[0]), round(levels[1]), round(levels[2])};
}

double LevelBetween(const svg::RampStop &from, const svg::RampStop &to, double at, size_t component)
{
    const Rgb start = Bent(from.colour), end = Bent(to.colour);
    const uint8_t starts[] = {start.r, start.g, start.b}, ends[] = {end.r, end.g, end.b};
    return starts[component] + (ends[component] - starts[component]) * (at - from.at) / (to.at - from.at);
}

TEST(SvgRampStopsTest, StayNearTheInks)
{
    const Colour from = {ColourSpace::Cmyk, {0, 1, 0.5, 0}}, to = {ColourSpace::Cmyk, {1, 0.25, 0.5, 0}};
    const ColourSpan span = {0.25, 0.75, {from, to}};
    const auto stops = svg::FindRampStops(std::span(&span, 1), Bent);
    ASSERT_GT(stops.size(), 8U);
    ASSERT_LE(stops.size(), 256U);
    EXPECT_EQ(stops.front().at, 0.25);
    EXPECT_EQ(stops.front().colour, from);
    EXPECT_EQ(stops.back().at, 0.75);
    EXPECT_EQ(stops.back().colour, to);
    constexpr int kPlaces = 4096;
    for (size_t i = 0; i + 1 < stops.size(); ++i) {
        ASSERT_LT(stops[i].at, stops[i + 1].at);
        for (int k = 0; k <= kPlaces; ++k) {
            const double at = 0.25 + 0.5 * k / kPlaces;
            if (at < stops[i].at || at > stops[i + 1].at)
                continue;
            Colour inks = from;
            for (int ink = 0; ink < 4; ++ink)
                inks.ink[ink] += (to.ink[ink] - from.ink[ink]) * k / kPlaces;
            // A level may be off by one, and by the half that is lost where convert rounds.
            const std::array<double, 3> exact = BentLevels(inks);
            for (size_t component = 0; component < 3; ++component)
                ASSERT_NEAR(LevelBetween(stops[i], stops[i + 1], at, component), exact[component], 1.5) << at;
        }
    }
}

TEST(SvgRampStopsTest, AreFewWhereTheWayIsStraight)
{
    ColourSpan span;
    for (int i = 0; i <= 100; ++i)
        span.colours.push_back({ColourSpace::Gray, {0.0612 + i * 0.0081, 0, 0, 0}});
    const auto straight = [](const Colour &colour) {
        const auto level = static_cast<uint8_t>(std::lround(255 * colour.ink[0]));
        return Rgb{level, level, level};
    };
    EXPECT_EQ(svg::FindRampStops(std::span(&span, 1), straight).size(), 2U);
}

TEST(SvgRampStopsTest, AreBoundedWhateverIsGiven)
{
    ColourSpan span;
    for (int i = 0; i < 30000; ++i)
        span.colours.push_back({ColourSpace::Gray, {i % 2 == 0 ? 0.0 : 1.0, 0, 0, 0}});
    const auto stops = svg::FindRampStops(std::span(&span, 1), Bent);
    EXPECT_LE(stops.size(), 256U);
    EXPECT_TRUE(svg::FindRampStops({}, Bent).empty());
}

} // namespace
} // namespace vxhost
