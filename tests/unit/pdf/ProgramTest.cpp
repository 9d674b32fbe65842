// The page's program, operator by operator.
#include "tests/support/CaseName.h"
#include "tests/unit/pdf/DrawnPage.h"

#include <gtest/gtest.h>

#include <cerrno>

using namespace vxhost;
using namespace vxtest;

namespace
{

const Path kSquare = Rectangle(1, 2, 3, 3);
constexpr const char *kSquareText = "1 2 m\n4 2 l\n4 5 l\n1 5 l\nh\n";
const Path kLine = {{Verb::Move, Verb::Line}, {{0, 0}, {10, 0}}};
constexpr const char *kLineText = "0 0 m\n10 0 l\n";

struct ProgramCase {
    const char *name;
    std::function<void(Device &)> draw;
    std::string program;
};

StrokeStyle Style(double width, const Matrix &matrix = {})
{
    StrokeStyle style;
    style.width = width;
    style.matrix = matrix;
    return style;
}

StrokeStyle Dashed(std::vector<double> dashes, double phase, const Matrix &matrix = {})
{
    StrokeStyle style = Style(1, matrix);
    style.dashes = std::move(dashes);
    style.dashPhase = phase;
    return style;
}

const ProgramCase kPrograms[] = {
    {"BlackIsThere", [](Device &d) { d.FillPath(kSquare, Gray(0)); }, std::string(kSquareText) + "f\n"},
    {"TheDocumentsOwnNumbers", [](Device &d) { d.FillPath(kSquare, Cmyk(0.25, 0, 1, 16450 / 65536.0)); },
     std::string(".25 0 1 .251 k\n") + kSquareText + "f\n"},
    {"AColourIsSaidOnce",
     [](Device &d) {
         d.FillPath(kSquare, Gray(0.5));
         d.FillPath(kSquare, Gray(0.5));
     },
     std::string(".5 g\n") + kSquareText + "f\n" + kSquareText + "f\n"},
    {"FillAndStrokeHaveTheirOwn",
     [](Device &d) {
         d.FillPath(kSquare, Gray(0.5));
         d.StrokePath(kLine, Style(1), Gray(0.5));
     },
     std::string(".5 g\n") + kSquareText + "f\n.5 G\n" + kLineText + "S\n"},
    {"QBringsBackTheColour",
     [](Device &d) {
         d.FillPath(kSquare, Gray(0.5));
         d.Save();
         d.FillPath(kSquare, Gray(1));
         d.Restore();
         d.FillPath(kSquare, Gray(0.5));
     },
     std::string(".5 g\n") + kSquareText + "f\nq\n1 g\n" + kSquareText + "f\nQ\n" + kSquareText + "f\n"},
    {"OverprintSwitches",
     [](Device &d) {
         d.FillPath(kSquare, Cmyk(1, 0, 0, 0, true));
         d.FillPath(kSquare, Cmyk(1, 0, 0, 0));
     },
     std::string("/OverprintOn gs\n1 0 0 0 k\n") + kSquareText + "f\n/OverprintOff gs\n" + kSquareText +
         "f\n"},
    {"GrayOverprintsInBlackInk", [](Device &d) { d.FillPath(kSquare, Gray(1, true)); },
     std::string("/OverprintOn gs\n/BlackInk cs\n0 scn\n") + kSquareText + "f\n"},
    {"GrayLinesToo", [](Device &d) { d.StrokePath(kLine, Style(1), Gray(0.75, true)); },
     std::string("/OverprintOn gs\n/BlackInk CS\n.25 SCN\n") + kLineText + "S\n"},
    {"CurvesInTheirShortestForm",
     [](Device &d) {
         d.FillPath({{Verb::Move, Verb::Curve, Verb::Curve, Verb::Curve},
                     {{0, 0}, {0, 0}, {1, 1}, {2, 2}, {3, 3}, {4, 4}, {4, 4}, {5, 5}, {6, 6}, {7, 7}}},
                    Gray(0));
     },
     "0 0 m\n1 1 2 2 v\n3 3 4 4 y\n5 5 6 6 7 7 c\nf\n"},
    {"AClipKeepsItsSave",
     [](Device &d) {
         d.Save();
         d.ClipPath(kSquare);
         d.Restore();
     },
     std::string("q\n") + kSquareText + "W n\nQ\n"},
    {"AnEmptyClipLeavesNothingOfThePage", [](Device &d) { d.ClipPath({}); }, "-2 -2 1 1 re\nW n\n"},
    {"LineAttributesThatDiffer",
     [](Device &d) {
         StrokeStyle style = Style(0);
         style.cap = LineCap::Round;
         style.join = LineJoin::Bevel;
         style.miterLimit = 4;
         d.StrokePath(kLine, style, Gray(0));
         d.StrokePath(kLine, style, Gray(0));
     },
     std::string("0 w\n1 J\n2 j\n4 M\n") + kLineText + "S\n" + kLineText + "S\n"},
    {"ASimilarityScalesLengths",
     [](Device &d) {
         d.StrokePath(kLine, Dashed({3, 1}, 2, {0, 2, -2, 0, 50, 50}), Gray(0));
     },
     std::string("2 w\n[6 2 ] 4 d\n") + kLineText + "S\n"},
    {"AMirrorIsASimilarity",
     [](Device &d) {
         d.StrokePath(kLine, Style(1, {3, 0, 0, -3, 0, 0}), Gray(0));
     },
     std::string("3 w\n") + kLineText + "S\n"},
    {"DashesEnd",
     [](Device &d) {
         d.StrokePath(kLine, Dashed({3}, 0), Gray(0));
         d.StrokePath(kLine, Style(1), Gray(0));
     },
     std::string("[3 ] 0 d\n") + kLineText + "S\n[] 0 d\n" + kLineText + "S\n"},
    {"DashesTooShortToWriteAreSolid",
     [](Device &d) {
         d.StrokePath(kLine, Dashed({1e-6, 1e-6}, 0), Gray(0));
     },
     std::string(kLineText) + "S\n"},
    // The pen is 4 wide and 2 high: its space is half as high as the page's, so the path is twice as high there.
    {"AFlattenedPen",
     [](Device &d) {
         d.StrokePath({{Verb::Move, Verb::Line}, {{0, 0}, {10, 5}}}, Style(1, {4, 0, 0, 2, 7, 7}), Gray(0));
     },
     "4 w\nq\n1 0 0 .5 0 0 cm\n0 0 m\n10 10 l\nS\nQ\n"},
    {"AFlatPenKeepsAThousandth",
     [](Device &d) {
         d.StrokePath({{Verb::Move, Verb::Line}, {{0, 0}, {10, 5}}}, Style(5, {1, 0, 0, 0, 0, 0}), Gray(0));
     },
     "5 w\nq\n1 0 0 .001 0 0 cm\n0 0 m\n10 5000 l\nS\nQ\n"},
    {"ANullPenIsTheThinnestLine",
     [](Device &d) {
         d.StrokePath(kLine, Style(5, {0, 0, 0, 0, 0, 0}), Gray(0));
     },
     std::string("0 w\n") + kLineText + "S\n"},
};

class PdfPrograms : public testing::TestWithParam<ProgramCase>
{
};

TEST_P(PdfPrograms, AreWrittenSo)
{
    DrawnPage page(GetParam().draw);
    ASSERT_EQ(page.error, "");
    EXPECT_EQ(page.Program(), GetParam().program);
}
INSTANTIATE_TEST_SUITE_P(Pdf, PdfPrograms, testing::ValuesIn(kPrograms), CaseName());

// The pieces of a long page are put together again; each is no longer than a few megabytes.
TEST(PdfProgram, IsCutIntoPiecesBetweenOperators)
{
    constexpr int kSquares = 100000;
    DrawnPage page([](Device &d) {
        for (int i = 0; i < kSquares; ++i)
            d.FillPath(kSquare, Gray(0));
    });
    ASSERT_EQ(page.error, "");
    const auto pieces = page.Page().getKey("/Contents").getArrayAsVector();
    EXPECT_EQ(pieces.size(), 2u); // of 28 bytes a square
    std::string expected;
    for (int i = 0; i < kSquares; ++i)
        expected += std::string(kSquareText) + "f\n";
    EXPECT_TRUE(page.Program() == expected);
}

TEST(PdfProgram, PaintsTheBackgroundFirst)
{
    PdfOptions options;
    options.background = Rgb{255, 0, 51};
    DrawnPage page([](Device &d) { d.FillPath(kSquare, Gray(0)); }, options);
    EXPECT_EQ(page.Program(), std::string("q\n1 0 .2 rg\n0 0 100 50 re\nf\nQ\n") + kSquareText + "f\n");
}

TEST(PdfProgram, KeepsTheDocumentsCoordinates)
{
    Page wanted;
    wanted.box = {-10, 20.5, 90, 70.5};
    DrawnPage page([](Device &d) { d.FillPath(kSquare, Gray(0)); }, {}, wanted);
    EXPECT_EQ(page.Page().getKey("/MediaBox").unparse(), "[ -10 20.5 90 70.5 ]");
    EXPECT_EQ(page.Page().getKey("/TrimBox").unparse(), "[ -10 20.5 90 70.5 ]");
    EXPECT_EQ(page.Program(), std::string(kSquareText) + "f\n");
}

TEST(PdfProgram, NamesOnlyWhatItUses)
{
    DrawnPage plain([](Device &d) { d.FillPath(kSquare, Gray(0)); });
    EXPECT_EQ(plain.Page().getKey("/Resources").unparse(), "<< >>");
    DrawnPage page([](Device &d) { d.FillPath(kSquare, Gray(0, true)); });
    EXPECT_EQ(page.Resource("ExtGState", "OverprintOn").unparse(), "<< /OP true /OPM 1 /op true >>");
    EXPECT_EQ(page.Resource("ExtGState", "OverprintOff").unparse(), "<< /OP false /OPM 0 /op false >>");
    QPDFObjectHandle ink = page.Resource("ColorSpace", "BlackInk");
    EXPECT_EQ(ink.getArrayItem(0).getName(), "/Separation");
    EXPECT_EQ(ink.getArrayItem(1).getName(), "/Black");
}

TEST(PdfProgram, OfTheSamePageIsTheSameFile)
{
    const auto draw = [](Device &d) { d.FillPath(kSquare, Gray(0)); };
    EXPECT_EQ(DrawnPage(draw).bytes, DrawnPage(draw).bytes);
    EXPECT_NE(DrawnPage(draw).bytes, DrawnPage([](Device &) {}).bytes);
}

TEST(PdfProgram, TellsWhyItCouldNotBeWritten)
{
    std::string error;
    const auto device = MakePdfDevice(
        {},
        [](std::span<const std::byte>) {
            return Failure{FailureKind::CannotWrite, "the disk is full", ENOSPC};
        },
        &error);
    ASSERT_NE(device, nullptr);
    Page page;
    page.box = {0, 0, 10, 10};
    device->BeginPage(page);
    const Failure failure = device->EndPage();
    EXPECT_EQ(failure.kind, FailureKind::CannotWrite);
    EXPECT_EQ(failure.text, "the disk is full");
    EXPECT_EQ(failure.error, ENOSPC);
}

} // namespace
