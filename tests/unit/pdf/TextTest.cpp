// Text in the fonts that the tests install.
#include "devices/pdf/FontProgram.h"
#include "devices/pdf/ToUnicode.h"
#include "devices/pdf/Type1Parts.h"
#include "host/fonts/FontFile.h"
#include "tests/support/CaseName.h"
#include "tests/unit/pdf/DrawnPage.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <sstream>

using namespace vxhost;
using namespace vxtest;

namespace
{

const TextFont kSans = {"Helvetica", "NimbusSans-Regular",
                        FontBytes::Open("/usr/share/fonts/opentype/urw-base35/NimbusSans-Regular.otf"), 0};
const TextFont kType1 = {"Old Sans", "NimbusSans-Regular",
                         FontBytes::Open("/usr/share/fonts/X11/Type1/NimbusSans-Regular.pfb"), 0};
const TextFont kGothic = {"Ryumin-Light", "IPAGothic",
                          FontBytes::Open("/usr/share/fonts/opentype/ipafont-gothic/ipag.ttf"), 0};

// Two glyphs, numbered 700 and 33 in their collection.
constexpr const char *kNumberedFile = VX_SOURCE_DIR "/tests/unit/pdf/fonts/cid-keyed.otf";
const TextFont kNumbered = {"CidKeyed", "CidKeyed", FontBytes::Open(kNumberedFile), 0};

// Sets characters one after the other, each by its advance; the pen may be moved before one.
class Setter
{
  public:
    Setter(const TextFont &font, double size)
        : font_(&font), file_(FontFile::Open(font.bytes, font.faceIndex))
    {
        run.font = font_;
        run.matrix = {size, 0, 0, size, 0, 0};
    }

    GlyphRun run;
    Point pen;

    Setter &Set(char32_t character)
    {
        const uint32_t glyph = file_->FindGlyph(character);
        const double advance = run.isColumn ? 1 : file_->Advance(glyph) / 65536.0;
        run.glyphs.push_back({glyph, character, advance, pen});
        (run.isColumn ? pen.y : pen.x) += (run.isColumn ? -advance : advance) * run.matrix.a;
        return *this;
    }

  private:
    const TextFont *font_;
    std::unique_ptr<FontFile> file_;
};

TextPaint Filled(double gray = 0)
{
    TextPaint paint;
    paint.fills = true;
    paint.paint = Gray(gray);
    return paint;
}

DrawnPage Shown(const std::vector<GlyphRun> &runs, const TextPaint &paint = Filled())
{
    return DrawnPage([&](Device &d) {
        for (const GlyphRun &run : runs)
            EXPECT_TRUE(d.CanShow(*run.font));
        d.ShowText(runs, paint);
    });
}

QPDFObjectHandle Descendant(DrawnPage &page, const std::string &name)
{
    return page.Resource("Font", name).getKey("/DescendantFonts").getArrayItem(0);
}

// NimbusSans: A is glyph 34 and 667 wide, V 55 and 667.
TEST(PdfText, IsOneStringWhereNothingMoves)
{
    Setter setter(kSans, 10);
    setter.pen = {5, 7};
    setter.Set('A').Set('V');
    DrawnPage page = Shown({setter.run});
    EXPECT_EQ(page.Program(),
              "BT\n/F1 10 Tf\n1 0 0 1 5 7 Tm\n(" + std::string("\0\"\0\x37", 4) + ")Tj\nET\n");
}

struct MoveCase {
    const char *name;
    Point by; // points, before the second character of text set in 10; the first is 43713/65536 em wide
    std::string between;
};

const MoveCase kMoves[] = {
    {"NoMove", {0, 0}, ""},
    {"LessThanATenthOfAThousandth", {0.0004, 0}, ""},
    {"Wider", {0.5, 0}, ")-50("},
    {"Narrower", {-0.25, 0}, ")25("},
    {"Up", {0, 1}, ")Tj\n1 0 0 1 11.67007 8 Tm\n("},
    {"FarAway", {250, 0}, ")Tj\n1 0 0 1 261.67007 7 Tm\n("},
};

class PdfTextMoves : public testing::TestWithParam<MoveCase>
{
};

TEST_P(PdfTextMoves, AreWrittenSo)
{
    Setter setter(kSans, 10);
    setter.pen = {5, 7};
    setter.Set('A');
    setter.pen = {setter.pen.x + GetParam().by.x, setter.pen.y + GetParam().by.y};
    setter.Set('A');
    DrawnPage page = Shown({setter.run});
    const std::string program = page.Program();
    const size_t first = program.find('('), last = program.rfind(')');
    ASSERT_NE(first, std::string::npos);
    const std::string inner = program.substr(first + 3, last - first - 5);
    EXPECT_EQ(inner, GetParam().between);
}
INSTANTIATE_TEST_SUITE_P(Pdf, PdfTextMoves, testing::ValuesIn(kMoves), CaseName());

struct ModeCase {
    const char *name;
    bool fills, strokes, clips;
    std::string mode; // the operator; "": none is needed
};

const ModeCase kModes[] = {
    {"Fill", true, false, false, ""},
    {"Stroke", false, true, false, "1 Tr"},
    {"Both", true, true, false, "2 Tr"},
    {"FillAndClip", true, false, true, "4 Tr"},
    {"StrokeAndClip", false, true, true, "5 Tr"},
    {"AllThree", true, true, true, "6 Tr"},
    {"Clip", false, false, true, "7 Tr"},
};

class PdfTextModes : public testing::TestWithParam<ModeCase>
{
};

TEST_P(PdfTextModes, AreWrittenSo)
{
    Setter setter(kSans, 10);
    setter.Set('A');
    TextPaint paint = Filled();
    paint.fills = GetParam().fills;
    paint.strokes = GetParam().strokes;
    paint.clips = GetParam().clips;
    const std::string program = Shown({setter.run, setter.run}, paint).Program();
    const size_t mode = program.find(" Tr\n");
    EXPECT_EQ(mode == std::string::npos ? "" : program.substr(mode - 1, 4), GetParam().mode);
    // Both runs stand in one text object: the clip is that of both.
    EXPECT_EQ(program.find("ET"), program.rfind("ET"));
}
INSTANTIATE_TEST_SUITE_P(Pdf, PdfTextModes, testing::ValuesIn(kModes), CaseName());

// The bytes of some glyphs' numbers mean something in a string.
TEST(PdfText, EscapesItsBytes)
{
    GlyphRun run;
    run.font = &kSans;
    run.matrix = {10, 0, 0, 10, 0, 0};
    for (const uint32_t glyph : {0x0028U, 0x0029U, 0x005CU, 0x000DU, 0x000AU})
        run.glyphs.push_back({glyph, U'x', 0, {static_cast<double>(run.glyphs.size()) * 300, 0}});
    DrawnPage page = Shown({run});
    for (const std::string &text :
         {std::string("\0\\(", 3), std::string("\0\\)", 3), std::string("\0\\\\", 3), std::string("\0\\r", 3),
          std::string("\0\n", 2)})
        EXPECT_NE(page.Program().find("(" + text + ")Tj"), std::string::npos);
}

TEST(PdfText, IsStrokedByItsOwnPen)
{
    Setter setter(kSans, 10);
    setter.pen = {6, 8};
    setter.Set('A');
    TextPaint paint;
    paint.strokes = true;
    paint.style.matrix = {1, 0, 0, 0.5, 0, 0};
    const std::string program = Shown({setter.run}, paint).Program();
    EXPECT_TRUE(program.starts_with("q\n1 0 0 .5 0 0 cm\nBT\n1 Tr\n/F1 20 Tf\n.5 0 0 1 6 16 Tm\n("))
        << program;
    EXPECT_TRUE(program.ends_with("ET\nQ\n"));
}

TEST(PdfText, SharesOneObjectUntilSomethingElseComes)
{
    Setter setter(kSans, 10);
    setter.Set('A');
    DrawnPage page([&](Device &d) {
        d.ShowText({{setter.run}}, Filled());
        d.ShowText({{setter.run}}, Filled(0.5));
        d.FillPath(Rectangle(0, 0, 1, 1), Gray(0.5));
        d.ShowText({{setter.run}}, Filled(0.5));
    });
    std::string operators;
    std::istringstream lines(page.Program());
    for (std::string line; std::getline(lines, line);) {
        const std::string word = line.substr(line.find_last_of(" )") + 1);
        if (word == "BT" || word == "ET" || word == "Tj" || word == "g" || word == "f")
            operators += word + " ";
    }
    EXPECT_EQ(operators, "BT Tj g Tj ET f BT Tj ET ");
}

TEST(PdfText, HangsInColumns)
{
    Setter setter(kGothic, 10);
    setter.run.isColumn = true;
    setter.pen = {50, 40};
    setter.Set(U'見').Set(U'本');
    DrawnPage page = Shown({setter.run});
    // The middle of the top is 5 to the right and 8.8 up; a column goes on by an em by itself.
    EXPECT_TRUE(page.Program().starts_with("BT\n/F1V 10 Tf\n1 0 0 1 55 48.8 Tm\n(")) << page.Program();
    EXPECT_EQ(page.Program().find("TJ"), std::string::npos);
    EXPECT_EQ(page.Resource("Font", "F1V").getKey("/Encoding").unparse(), "/Identity-V");
    EXPECT_EQ(Descendant(page, "F1V").getKey("/W2").getArrayItem(1).unparse(), "[ -1000 500 880 ]");
}

TEST(PdfText, EmbedsASubsetOfACffFont)
{
    Setter setter(kSans, 10);
    setter.Set(U'é');
    DrawnPage page = Shown({setter.run});
    QPDFObjectHandle font = Descendant(page, "F1");
    EXPECT_EQ(font.getKey("/Subtype").unparse(), "/CIDFontType0");
    const std::string name = font.getKey("/BaseFont").getName();
    EXPECT_EQ(name.substr(7), "+NimbusSans-Regular");
    // Editors look for a font of the whole name, to which no encoding belongs.
    EXPECT_EQ(page.Resource("Font", "F1").getKey("/BaseFont").getName(), name);
    QPDFObjectHandle program = font.getKey("/FontDescriptor").getKey("/FontFile3");
    EXPECT_EQ(program.getDict().getKey("/Subtype").unparse(), "/CIDFontType0C");
    EXPECT_LT(StreamText(program).size(), 8000u); // the whole font has some 50,000
    EXPECT_NE(StreamText(page.Resource("Font", "F1").getKey("/ToUnicode")).find("<00E9>"), std::string::npos);
}

TEST(PdfText, EmbedsASubsetOfATrueTypeFont)
{
    Setter setter(kGothic, 10);
    setter.Set(U'見');
    DrawnPage page = Shown({setter.run});
    QPDFObjectHandle font = Descendant(page, "F1");
    EXPECT_EQ(font.getKey("/Subtype").unparse(), "/CIDFontType2");
    EXPECT_EQ(font.getKey("/CIDToGIDMap").unparse(), "/Identity");
    EXPECT_EQ(font.getKey("/W").getArrayItem(1).unparse(), "[ 1000 ]");
    EXPECT_TRUE(font.getKey("/FontDescriptor").hasKey("/FontFile2"));
}

TEST(PdfText, NamesGlyphsByTheFontsOwnNumbers)
{
    Setter setter(kNumbered, 10);
    setter.Set('A').Set(U'見');
    DrawnPage page = Shown({setter.run});
    EXPECT_NE(page.Program().find(std::string("(\x02\xBC\0!)Tj", 8)), std::string::npos);
    QPDFObjectHandle font = Descendant(page, "F1");
    EXPECT_EQ(font.getKey("/CIDSystemInfo").unparse(),
              "<< /Ordering (Japan1) /Registry (Adobe) /Supplement 0 >>");
    EXPECT_EQ(font.getKey("/W").unparse(), "[ 33 [ 1000 ] 700 [ 600 ] ]");
}

struct LicenceCase {
    const char *name;
    int bits;
    bool canShow;
};

const LicenceCase kLicences[] = {
    {"Installable", 0, true}, {"Restricted", 2, false},    {"PreviewAndPrint", 4, true},
    {"Editable", 8, true},    {"NoSubsets", 0x100, false}, {"BitmapsOnly", 0x204, false},
};

class PdfFontLicences : public testing::TestWithParam<LicenceCase>
{
};

// The bits stand at place 8 of the table OS/2, whose place the file's directory gives.
TEST_P(PdfFontLicences, AreKept)
{
    std::ifstream in(kNumberedFile, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(in), {}};
    const size_t entry = bytes.find("OS/2");
    ASSERT_NE(entry, std::string::npos);
    size_t table = 0;
    for (size_t i = entry + 8; i < entry + 12; ++i)
        table = table << 8 | static_cast<uint8_t>(bytes.at(i));
    bytes.at(table + 8) = static_cast<char>(GetParam().bits >> 8);
    bytes.at(table + 9) = static_cast<char>(GetParam().bits & 0xFF);
    TextFont font = kNumbered;
    const auto changed = std::as_bytes(std::span(bytes));
    font.bytes = FontBytes::FromMemory({changed.begin(), changed.end()});
    EXPECT_EQ(pdf::FontProgram::Open(font) != nullptr, GetParam().canShow);
}
INSTANTIATE_TEST_SUITE_P(Pdf, PdfFontLicences, testing::ValuesIn(kLicences), CaseName());

TEST(PdfText, EmbedsAType1FontWhole)
{
    Setter setter(kType1, 10);
    setter.Set('A').Set(U'é');
    DrawnPage page = Shown({setter.run});
    EXPECT_NE(page.Program().find("(\1\2)Tj"), std::string::npos);
    QPDFObjectHandle font = page.Resource("Font", "F1");
    EXPECT_EQ(font.getKey("/BaseFont").unparse(), "/NimbusSans-Regular");
    EXPECT_EQ(font.getKey("/Encoding").getKey("/Differences").unparse(), "[ 1 /A /eacute ]");
    EXPECT_EQ(font.getKey("/Widths").unparse(), "[ 667 556 ]");
    QPDFObjectHandle program = font.getKey("/FontDescriptor").getKey("/FontFile");
    const auto length = [&](const char *key) { return program.getDict().getKey(key).getIntValue(); };
    EXPECT_EQ(length("/Length1") + length("/Length2"), static_cast<int64_t>(StreamText(program).size()));
    EXPECT_EQ(StreamText(program).substr(static_cast<size_t>(length("/Length1")) - 6, 5), "eexec");
}

TEST(PdfText, GivesAGlyphOfTwoCharactersBoth)
{
    Setter setter(kSans, 10);
    setter.Set('A');
    setter.run.glyphs.push_back(setter.run.glyphs.front());
    setter.run.glyphs.back().character = U'\U0001F600';
    EXPECT_NE(Shown({setter.run}).Program().find("/Span<</ActualText<FEFFD83DDE00>>>BDC\n"),
              std::string::npos);
}

// A font that is asked about and not used takes no number from those that are.
TEST(PdfText, NumbersFontsByTheirFirstUse)
{
    Setter setter(kSans, 10);
    setter.Set('A');
    DrawnPage page([&](Device &d) {
        EXPECT_TRUE(d.CanShow(kGothic));
        EXPECT_TRUE(d.CanShow(kSans));
        d.ShowText({{setter.run}}, Filled());
    });
    EXPECT_NE(page.Program().find("/F1 10 Tf"), std::string::npos) << page.Program();
    EXPECT_EQ(Descendant(page, "F1").getKey("/BaseFont").getName().substr(7), "+NimbusSans-Regular");
}

TEST(PdfText, RefusesWhatIsNoFont)
{
    DrawnPage page([&](Device &d) {
        TextFont font = kSans;
        font.bytes = FontBytes::Open(VX_SOURCE_DIR "/README.md");
        EXPECT_FALSE(d.CanShow(font));
        font.bytes = FontBytes::Open("/nowhere");
        EXPECT_FALSE(d.CanShow(font));
    });
    EXPECT_EQ(page.error, "");
}

TEST(PdfText, IsLeftToShapesWhereOutlinesAreAskedFor)
{
    PdfOptions options;
    options.text = TextOutput::Outlines;
    DrawnPage page([&](Device &d) { EXPECT_FALSE(d.CanShow(kSans)); }, options);
}

TEST(PdfToUnicode, KeepsPairs)
{
    const std::string map = pdf::ToUnicodeMap({{1, U'A'}, {0x1234, U'\U0001F600'}, {2, char32_t{0xD800}}}, 2);
    EXPECT_NE(map.find("3 beginbfchar\n<0001> <0041>\n<0002> <FFFD>\n<1234> <D83DDE00>\nendbfchar\n"),
              std::string::npos);
}

// "ab" encrypted, in the three forms that files have.
TEST(PdfType1Parts, OfSegments)
{
    const std::string file = std::string("\x80\x01\x16\0\0\0", 6) + "%!PS-AdobeFont-1.0: x\n" +
                             std::string("\x80\x02\x02\0\0\0", 6) + "ab" +
                             std::string("\x80\x01\x03\0\0\0", 6) + "000" + "\x80\x03";
    const pdf::EmbeddedProgram program = pdf::FindType1Parts(file);
    EXPECT_EQ(program.bytes, "%!PS-AdobeFont-1.0: x\nab");
    EXPECT_EQ(program.clearLength, 22u);
    EXPECT_EQ(program.encryptedLength, 2u);
}

TEST(PdfType1Parts, OfText)
{
    const std::string file =
        "%!FontType1-1.0: x\ncurrentfile eexec\n61\n62\n" + std::string(512, '0') + "\ncleartomark\n";
    const pdf::EmbeddedProgram program = pdf::FindType1Parts(file);
    EXPECT_EQ(program.bytes, "%!FontType1-1.0: x\ncurrentfile eexec\nab");
    EXPECT_EQ(program.clearLength, 37u);
    EXPECT_EQ(program.encryptedLength, 2u);
}

TEST(PdfType1Parts, OfDamagedFiles)
{
    EXPECT_EQ(pdf::FindType1Parts("").bytes, "");
    EXPECT_EQ(pdf::FindType1Parts("%!PS-AdobeFont-1.0: x\n").bytes, "");
    EXPECT_EQ(pdf::FindType1Parts("%!PS-AdobeFont-1.0: x\neexec").bytes, "");
    EXPECT_EQ(
        pdf::FindType1Parts(std::string("\x80\x01\xFF\xFF\xFF\x7F", 6) + "%!PS-AdobeFont-1.0: x\n").bytes,
        "");
}

} // namespace
