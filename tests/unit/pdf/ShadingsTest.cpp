#include "devices/pdf/InkSpaces.h"
#include "tests/support/CaseName.h"
#include "tests/unit/pdf/DrawnPage.h"

#include <gtest/gtest.h>

using namespace vxhost;
using namespace vxtest;

namespace
{

Colour CmykColour(double cyan, double magenta, double yellow, double black)
{
    return Cmyk(cyan, magenta, yellow, black).colour;
}

Shading Axial(std::vector<ColourSpan> spans, bool overprint = false)
{
    Shading shading;
    shading.matrix = {40, 0, 0, 20, 10, 5};
    shading.spans = std::move(spans);
    shading.overprint = overprint;
    return shading;
}

Shading Radial(Shading::Circle first, Shading::Circle last)
{
    Shading shading = Axial({{0, 1, {Gray(0).colour, Gray(1).colour}}});
    shading.kind = ShadingKind::Radial;
    shading.first = first;
    shading.last = last;
    return shading;
}

constexpr const char *kPainted = "q\n/Pattern cs\n/Blend1 scn\n10 5 m\n50 5 l\n50 25 l\n10 25 l\nh\nf\nQ\n";

DrawnPage Drawn(const Shading &shading)
{
    return DrawnPage([&](Device &d) { d.Shade(shading); });
}

bool HasBlend(DrawnPage &page)
{
    return page.Program().find("/Pattern cs\n") != std::string::npos;
}

QPDFObjectHandle Pattern(DrawnPage &page, const char *name = "Blend1")
{
    return page.Resource("Pattern", name);
}

QPDFObjectHandle Blend(DrawnPage &page)
{
    return Pattern(page).getKey("/Shading");
}

TEST(PdfShading, FillsItsSquare)
{
    DrawnPage page = Drawn(Axial({{0, 1, {CmykColour(1, 0, 0, 0), CmykColour(0, 0.5, 0, 0)}}}));
    EXPECT_EQ(page.Program(), kPainted);
    EXPECT_EQ(Pattern(page).getKey("/PatternType").getIntValue(), 2);
    EXPECT_EQ(Pattern(page).getKey("/Matrix").unparse(), "[ 40 0 0 20 10 5 ]");
    EXPECT_EQ(Blend(page).getKey("/ShadingType").getIntValue(), 2);
    EXPECT_EQ(Blend(page).getKey("/Coords").unparse(), "[ 0 0 1 0 ]");
    EXPECT_EQ(Blend(page).getKey("/ColorSpace").unparse(), "/DeviceCMYK");
    EXPECT_EQ(Blend(page).getKey("/Extend").unparse(), "[ true true ]");
    EXPECT_EQ(Blend(page).getKey("/Function").unparseResolved(),
              "<< /C0 [ 1 0 0 0 ] /C1 [ 0 .5 0 0 ] /Domain [ 0 1 ] /FunctionType 2 /N 1 >>");
}

TEST(PdfShading, StitchesItsSpans)
{
    DrawnPage page = Drawn(Axial({{0, 0.25, {Gray(0).colour}},
                                  {0.25, 0.25, {Gray(0.5).colour}}, // of no width
                                  {0.25, 0.75, {Gray(0).colour, Gray(1).colour, Gray(0.5).colour}},
                                  {0.75, 1, {Gray(0.5).colour, Gray(0).colour}}}));
    QPDFObjectHandle function = Blend(page).getKey("/Function");
    EXPECT_EQ(function.getKey("/FunctionType").getIntValue(), 3);
    EXPECT_EQ(function.getKey("/Bounds").unparse(), "[ .25 .5 .75 ]");
    EXPECT_EQ(function.getKey("/Encode").unparse(), "[ 0 1 0 1 0 1 0 1 ]");
    QPDFObjectHandle pieces = function.getKey("/Functions");
    ASSERT_EQ(pieces.getArrayNItems(), 4);
    EXPECT_EQ(pieces.getArrayItem(0).getKey("/C1").unparse(), "[ 0 ]");
    EXPECT_EQ(pieces.getArrayItem(2).unparse(),
              "<< /C0 [ 1 ] /C1 [ .5 ] /Domain [ 0 1 ] /FunctionType 2 /N 1 >>");
}

// A straight way may pass a colour by half a level of 255: 0.00195.
TEST(PdfShading, LeavesOutColoursThatAreOnTheWay)
{
    for (const auto &[middle, type] : {std::pair(0.501, 2), std::pair(0.499, 2), std::pair(0.504, 3)}) {
        DrawnPage page = Drawn(Axial({{0, 1, {Gray(0).colour, Gray(middle).colour, Gray(1).colour}}}));
        EXPECT_EQ(Blend(page).getKey("/Function").getKey("/FunctionType").getIntValue(), type) << middle;
    }
    // One ink is on its way, and the other is not.
    DrawnPage page =
        Drawn(Axial({{0, 1, {CmykColour(0, 1, 0, 0), CmykColour(0.5, 1, 0, 0), CmykColour(1, 0, 0, 0)}}}));
    EXPECT_EQ(Blend(page).getKey("/Function").getKey("/Bounds").unparse(), "[ .5 ]");
}

Path Corner(double right, double top)
{
    Path path;
    path.verbs = {Verb::Move, Verb::Line, Verb::Line};
    path.points = {{20, 10}, {right, 10}, {20, top}};
    return path;
}

// The square is from (10, 5) to (50, 25).
TEST(PdfShading, IsPaintedByItselfUnderOneClipWithinIt)
{
    const Shading shading = Axial({{0, 1, {Gray(0).colour, Gray(1).colour}}});
    const std::string alone = "q\n40 0 0 20 10 5 cm\n/Blend1 sh\nQ\n";
    struct {
        const char *name;
        std::vector<Path> clips;
        std::string painted;
    } cases[] = {
        {"within", {Corner(50, 25)}, alone},    {"wider", {Corner(51, 25)}, kPainted},
        {"higher", {Corner(50, 26)}, kPainted}, {"two", {Corner(51, 25), Corner(50, 25)}, kPainted},
        {"empty", {Path()}, kPainted},
    };
    for (const auto &row : cases) {
        DrawnPage page([&](Device &d) {
            d.Save();
            for (const Path &clip : row.clips)
                d.ClipPath(clip);
            d.Shade(shading);
            d.Restore();
            d.Shade(shading); // without any clip
        });
        EXPECT_NE(page.Program().find("W n\n" + row.painted + "Q\n" + kPainted), std::string::npos)
            << row.name << page.Program();
    }
}

TEST(PdfShading, OfCirclesCoversADisc)
{
    // About (30, 15), 20 wide and 10 high.
    const Shading shading = Radial({{0.5, 0.5}, 0.5}, {{0.6, 0.5}, 0.1});
    for (const auto &[right, isAlone] : {std::pair(43.0, true), std::pair(45.0, false)}) {
        DrawnPage page([&](Device &d) {
            d.ClipPath(Corner(right, 22)); // its corner is 13 right of the middle and 7 above
            d.Shade(shading);
        });
        EXPECT_NE(HasBlend(page), isAlone) << right; // 0.65² + 0.7² is 0.91; 0.75² + 0.7² is 1.05
    }
}

// A ground is all of the clip that is in force, so the clip alone draws its edge.
TEST(PdfShading, FillsMoreThanItsGround)
{
    Shading shading = Radial({{0.5, 0.5}, 0.5}, {{0.6, 0.5}, 0.1});
    shading.ground.verbs = {Verb::Move, Verb::Line, Verb::Line};
    shading.ground.points = {{20, 10}, {40, 10}, {40, 25}};
    DrawnPage page = Drawn(shading);
    EXPECT_EQ(page.Program(), "q\n/Pattern cs\n/Blend1 scn\n19 9 22 17 re\nf\nQ\n");
}

// The circles would shrink to nothing at (0.25, 0).
TEST(PdfShading, GoesFromAPointToTheUnitCircle)
{
    DrawnPage page = Drawn(Radial({{0.5, 0.5}, 0.5}, {{0.6, 0.5}, 0.1}));
    // The circle has radius 0.5 about (0.5, 0.5): half the size of the matrix, about (30, 15).
    EXPECT_EQ(Pattern(page).getKey("/Matrix").unparse(), "[ 20 0 0 10 30 15 ]");
    EXPECT_EQ(page.Program().substr(0, 36), "q\n/Pattern cs\n/Blend1 scn\n50 15 m\n50");
    EXPECT_EQ(Blend(page).getKey("/ShadingType").getIntValue(), 3);
    EXPECT_EQ(Blend(page).getKey("/Coords").unparse(), "[ .25 0 0 0 0 1 ]");
    QPDFObjectHandle function = Blend(page).getKey("/Function");
    EXPECT_EQ(function.getKey("/Bounds").unparse(), "[ .2 ]");
    EXPECT_EQ(function.getKey("/Functions").unparse(),
              "[ << /C0 [ 1 ] /C1 [ 1 ] /Domain [ 0 1 ] /FunctionType 2 /N 1 >> "
              "<< /C0 [ 1 ] /C1 [ 0 ] /Domain [ 0 1 ] /FunctionType 2 /N 1 >> ]");
    EXPECT_EQ(Blend(page).getKey("/Extend").unparse(), "[ true true ]");
}

TEST(PdfShading, IsSharedByBlendsOfOneRamp)
{
    const Shading shading = Axial({{0, 1, {Gray(0).colour, Gray(1).colour}}});
    Shading other = shading;
    other.matrix.tx = 50;
    Shading third = shading;
    third.spans[0].colours[1] = Gray(0.5).colour;
    DrawnPage page([&](Device &d) {
        d.Shade(shading);
        d.Shade(other);
        d.Shade(third);
    });
    EXPECT_EQ(page.Page().getKey("/Resources").getKey("/Pattern").getKeys(),
              (std::set<std::string>{"/Blend1", "/Blend2", "/Blend3"}));
    const auto number = [&](const char *name) {
        return Pattern(page, name).getKey("/Shading").getObjectID();
    };
    EXPECT_EQ(number("Blend1"), number("Blend2"));
    EXPECT_NE(number("Blend1"), number("Blend3"));
}

// Instances of one gradient: no bound in them is exactly a third.
TEST(PdfShading, IsSharedByBlendsThatDifferByRoundings)
{
    const auto withBound = [](double bound) {
        return Axial({{0, bound, {Gray(0).colour, Gray(1).colour}}, {bound, 1, {Gray(0.5).colour}}});
    };
    DrawnPage page([&](Device &d) {
        d.Shade(withBound(0.333331));
        d.Shade(withBound(0.333335)); // both are nearest to 16667 of 50000
        d.Shade(withBound(0.3334));
        d.Shade(Radial({{0, 0}, 1}, {{0.200001, 0}, 0.5}));
        d.Shade(Radial({{0, 0}, 1}, {{0.2, 0.000003}, 0.499998}));
    });
    EXPECT_EQ(page.Page().getKey("/Resources").getKey("/Pattern").getKeys(),
              (std::set<std::string>{"/Blend1", "/Blend2", "/Blend3"}));
    EXPECT_EQ(Blend(page).getKey("/Function").getKey("/Bounds").unparse(), "[ .33334 ]");
}

struct InkCase {
    const char *name;
    Colour from, to;
    std::string space; // of inks; "": painted as shapes
};

const InkCase kInks[] = {
    {"GrayIsBlack", Gray(0).colour, Gray(1).colour, "/Black"},
    {"OneInk", CmykColour(0, 1, 0, 0), CmykColour(0, 0.2, 0, 0), "/Magenta"},
    {"ThoseThatAreThere", CmykColour(1, 0, 0, 0.5), CmykColour(0.5, 0, 0, 1), "[ /Cyan /Black ]"},
    {"OneThatIsThereAtTimes", CmykColour(1, 0, 0, 0), CmykColour(1, 1, 0, 0), ""},
    {"NoneAtAll", CmykColour(0, 0, 0, 0), CmykColour(0, 0, 0, 0), ""},
};

class PdfShadingInks : public testing::TestWithParam<InkCase>
{
};

TEST_P(PdfShadingInks, UnderOverprint)
{
    DrawnPage page = Drawn(Axial({{0, 1, {GetParam().from, GetParam().to}}}, true));
    EXPECT_TRUE(page.Program().starts_with("/OverprintOn gs\n"));
    if (GetParam().space.empty()) {
        EXPECT_FALSE(HasBlend(page));
        EXPECT_NE(page.Program().find("\nf\n"), std::string::npos);
        return;
    }
    QPDFObjectHandle space = Blend(page).getKey("/ColorSpace");
    EXPECT_EQ(space.getArrayItem(1).unparse(), GetParam().space);
    EXPECT_EQ(space.getArrayItem(2).unparse(), "/DeviceCMYK");
}
INSTANTIATE_TEST_SUITE_P(Pdf, PdfShadingInks, testing::ValuesIn(kInks), CaseName());

// The program of the stack machine puts the inks in order, and 0 for those that are not there.
TEST(PdfInkSpace, PutsZerosInTheirPlaces)
{
    DrawnPage page = Drawn(Axial({{0, 1, {CmykColour(1, 0, 0, 0.5), CmykColour(0.5, 0, 0, 1)}}}, true));
    // c k | c k C | c k C 0 0 | c k C 0 0 K | C 0 0 K c k | C 0 0 K
    EXPECT_EQ(StreamText(Blend(page).getKey("/ColorSpace").getArrayItem(3)),
              "{ 0 2 index add 0 0 0 4 index add 6 4 roll pop pop }");
}

// A space has each name once, so a step between two mixtures of one ink is painted in process inks, and a blend that has both is painted as
// shapes.
TEST(PdfInkSpace, HasNoNameTwice)
{
    const SpotInk ember = {"Ember", {0, 0.5, 1, 0}}, pale = {"Ember", {0, 0.25, 0, 0}},
                  black = {"Black", {1, 0, 0, 0}};
    Colour mixed = CmykColour(0, 0.375, 0.5, 0);
    mixed.spots = {{{&ember, 0.5}, {&pale, 0.5}}};
    EXPECT_EQ(FindShares(mixed).spotCount, 0U);
    EXPECT_EQ(FindShares(mixed).count, 2U); // magenta and yellow
    Colour half = CmykColour(0, 0.25, 0.5, 0);
    half.spots[0] = {&ember, 0.5};
    EXPECT_EQ(FindShares(half).spotCount, 1U);
    EXPECT_EQ(FindShares(half).count, 1U);
    // A spot ink may have the name of a process ink, but not beside it.
    Colour dark = CmykColour(0.5, 0, 0, 0.25);
    dark.spots[0] = {&black, 0.5};
    EXPECT_EQ(FindShares(dark).spotCount, 0U);
    Colour other = CmykColour(0, 0.125, 0, 0);
    other.spots[0] = {&pale, 0.5};
    DrawnPage page = Drawn(Axial({{0, 1, {half, other}}}));
    EXPECT_FALSE(HasBlend(page));
}

struct ShapesCase {
    const char *name;
    Shading shading;
};

const ShapesCase kShapes[] = {
    {"CirclesThatGrow", Radial({{0.5, 0.5}, 0.1}, {{0.5, 0.5}, 0.5})},
    {"CirclesSideBySide", Radial({{0.2, 0.5}, 0.2}, {{0.8, 0.5}, 0.1})},
    {"CirclesThatTouch", Radial({{0.5, 0.5}, 0.5}, {{0.9, 0.5}, 0.1})},
};

class PdfShadingShapes : public testing::TestWithParam<ShapesCase>
{
};

TEST_P(PdfShadingShapes, StayShapes)
{
    DrawnPage page = Drawn(GetParam().shading);
    EXPECT_FALSE(HasBlend(page));
    EXPECT_NE(page.Program().find("\nf\n"), std::string::npos);
}
INSTANTIATE_TEST_SUITE_P(Pdf, PdfShadingShapes, testing::ValuesIn(kShapes), CaseName());

} // namespace
