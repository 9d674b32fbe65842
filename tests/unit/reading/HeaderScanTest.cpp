// What the comments of a header say, and hostile ones that must stay harmless.
#include "host/reading/HeaderScan.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vxhost
{

namespace
{

HeaderFacts Scan(std::string_view text)
{
    return ScanHeader(std::as_bytes(std::span(text)));
}

HeaderFacts ScanComments(const std::string &comments)
{
    return Scan("%!PS-Tavro-3.0\n" + comments);
}

struct VersionCase {
    const char *comments;
    bool recognised;
    int version;
};

const VersionCase kVersions[] = {
    {"", false, 2},
    {"%%DocumentProcSets:Tavro_Vellumcraft_ProcSet\n", true, 2},
    {"%%DocumentProcSets: Tavro_Vellumcraft 1 0\n", true, 2},
    {"%%+ procset Tavro_VellumcraftA_VX3\n", true, 3},
    {"%%+ procset Tavro_Vellumcraft_VX3\n", true, 3},
    {"%%Creator: Tavro Vellumcraft(TM) for Windows, version 4.0\n", true, 4},
    {"%%Creator: Tavro Vellumcraft(TM) for Windows, version 3\n", false, 2},
    {"%VX5_FileFormat 3\n", true, 5},
    {"% VX5_File\tFormat 3\n", true, 5},
    // The first line that decides a version decides it for good.
    {"%%+ procset Tavro_Vellumcraft_VX3\n%VX5_FileFormat 3\n", true, 3},
    {"%%DocumentProcSets: Tavro_Vellumcraft\n%VX5_FileFormat 3\n", true, 5},
    // What stands after the comments is no comment.
    {"%%EndComments\n%VX5_FileFormat 3\n", false, 2},
    {"0 g\n%VX5_FileFormat 3\n", false, 2},
    {" %VX5_FileFormat 3\n", false, 2},
};

TEST(ScanHeaderTest, FindsTheVersion)
{
    for (const VersionCase &header : kVersions) {
        const HeaderFacts facts = ScanComments(header.comments);
        EXPECT_EQ(facts.recognised, header.recognised) << header.comments;
        EXPECT_EQ(facts.version, header.version) << header.comments;
    }
}

struct TextCase {
    const char *value;
    const char *title;
};

const TextCase kTitles[] = {
    {" Poster", "Poster"},
    {"(Poster)", "Poster"},
    {" (a \\(b\\) (c))", "a (b) (c)"},
    {" (one) (two)", "one two"},
    {" (never closed", "(never closed"},
    {" (one) rest", "(one) rest"},
    {" (atend)", ""},
    {" (ends in \\", "(ends in \\"},
    {"", ""},
};

TEST(ScanHeaderTest, TakesStringsOutOfTheirBrackets)
{
    for (const TextCase &text : kTitles)
        EXPECT_EQ(ScanComments("%%Title:" + std::string(text.value) + "\n").title, text.title) << text.value;
}

struct LineEndCase {
    const char *text;
    const char *ends;
};

const LineEndCase kLineEnds[] = {
    {"a\nb\n", "LF"},    {"a\rb\r", "CR"},      {"a\r\nb\r\n", "CR LF"},
    {"a\nb\r", "mixed"}, {"a\r\nb\n", "mixed"}, {"a", ""},
};

// As in strings of the drawing: octal digits, letters for controls, anything else for itself.
TEST(ScanHeaderTest, TakesEscapesAsStringsDo)
{
    EXPECT_EQ(Scan("%!PS-Tavro-3\n%%Title: (a\\(b\\)\\\\\\101\\12b\\7c\\qd)\n").title, "a(b)\\A\nb\ac"
                                                                                       "qd");
    EXPECT_EQ(Scan("%!PS-Tavro-3\n%%Title: (\\247\\501)\n").title, "\xA7"
                                                                   "A"); // 501 octal wraps
    EXPECT_EQ(Scan("%!PS-Tavro-3\n%%DocumentCustomColors: (Gr\\237n)\n").customColours,
              std::vector<std::string>{"Gr\x9Fn"});
}

struct DecodedCase {
    const char *name;
    TextEncoding encoding;
    std::string_view bytes, text;
};

void PrintTo(const DecodedCase &text, std::ostream *to)
{
    *to << text.name;
}

// The Mac bytes are those of the tables that Apple published; the others of the encodings' standards.
const DecodedCase kDecoded[] = {
    {"Ascii", TextEncoding::MacRoman, "Poster 1", "Poster 1"},
    {"MacRoman", TextEncoding::MacRoman,
     "Gr\x9A\xA7"
     "e",
     "Größe"},
    {"CodePage1252", TextEncoding::CodePage1252,
     "Gr\xF6\xDF"
     "e \x80",
     "Größe €"},
    {"Utf8IsThatEverywhere", TextEncoding::MacRoman,
     "Gr\xC3\xB6\xC3\x9F"
     "e",
     "Größe"},
    {"CutUtf8IsNone", TextEncoding::MacRoman, "Gr\xC3", "Gr√"},
    {"MacJapanese", TextEncoding::MacJapanese, "\x90\x7D", "図"},
    {"HalfOfACharacter", TextEncoding::MacJapanese, "a\x90", "a\uFFFD"},
    {"Empty", TextEncoding::MacRoman, "", ""},
};

class DecodedText : public testing::TestWithParam<DecodedCase>
{
};

TEST_P(DecodedText, IsUtf8)
{
    EXPECT_EQ(DecodeText(GetParam().bytes, GetParam().encoding), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Texts, DecodedText, testing::ValuesIn(kDecoded),
                         [](const auto &tested) { return std::string(tested.param.name); });

TEST(DecodeTexts, AreAllButTheNamesOfFonts)
{
    HeaderFacts facts =
        Scan("%!PS-Tavro-3\n%%Title: \x8A\n%%Creator: \x8A\n%%CreationDate: \x8A\n"
             "%%DocumentProcessColors: \x8A\n%%DocumentCustomColors: (\x8A)\n%%DocumentFonts: \x8A\n");
    DecodeTexts(TextEncoding::MacRoman, &facts);
    EXPECT_EQ(facts.title, "ä");
    EXPECT_EQ(facts.creator, "ä");
    EXPECT_EQ(facts.creationDate, "ä");
    EXPECT_EQ(facts.processColours, std::vector<std::string>{"ä"});
    EXPECT_EQ(facts.customColours, std::vector<std::string>{"ä"});
    EXPECT_EQ(facts.fonts, std::vector<std::string>{"\uFFFD"});
}

TEST(ScanHeaderTest, NamesTheLineEnds)
{
    for (const LineEndCase &line : kLineEnds)
        EXPECT_EQ(Scan(line.text).lineEnds, line.ends) << line.ends;
}

TEST(ScanHeaderTest, GoesOnWithPlusLinesOfListsOnly)
{
    const HeaderFacts facts = ScanComments("%%DocumentNeededResources: font A procset P 1 0\n%%+ font B C\n"
                                           "%%Title: t\n%%+ font D\n%%CMYKCustomColor: 0 1 0 0 (Rose)\n"
                                           "%%+ 1 0 0 0 (Sea)\n%%+ 1 0 0 0 (Rose)\n");
    EXPECT_EQ(facts.fonts, (std::vector<std::string>{"A", "B", "C"}));
    EXPECT_EQ(facts.customColours, (std::vector<std::string>{"Rose", "Sea"}));
}

TEST(ScanHeaderTest, WantsFourNumbersInABox)
{
    EXPECT_TRUE(ScanComments("%%BoundingBox: 0 0 612.5 792 \n").hasBox);
    EXPECT_TRUE(ScanComments("%%HiResBoundingBox:0 0 1 1\n").hasBox);
    EXPECT_FALSE(ScanComments("%%BoundingBox: 0 0 612\n").hasBox);
    EXPECT_FALSE(ScanComments("%%BoundingBox: 0 0 612 792 x\n").hasBox);
    EXPECT_FALSE(ScanComments("%%BoundingBox: (atend)\n").hasBox);
}

// The wrapper: four bytes of signature, then where the drawing starts and how long it is, low bytes first.
std::string Wrapped(std::string_view numbers, std::string_view rest)
{
    return "\xC5\xD0\xD3\xC6" + std::string(numbers) + std::string(rest);
}

TEST(ScanHeaderTest, LooksIntoAWrapper)
{
    using namespace std::string_view_literals;
    const HeaderFacts facts = Scan(Wrapped("\x0E\0\0\0\x0D\0\0\0"sv, "..%!PS-Tavro-3\n%VX5_FileFormat\n"));
    EXPECT_TRUE(facts.epsWrapper);
    EXPECT_TRUE(facts.hasPrefix);
    EXPECT_FALSE(facts.recognised); // its 13 bytes end before the second line
    const HeaderFacts outside = Scan(Wrapped("\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"sv, "%!PS-Tavro-3\n"));
    EXPECT_TRUE(outside.epsWrapper);
    EXPECT_EQ(outside.firstLine, "");
}

TEST(ScanHeaderTest, KeepsABoundedAmount)
{
    std::string comments = "%%Title: " + std::string(100000, 'x') + "\n";
    for (int i = 0; i < 10000; ++i)
        comments += "%%DocumentFonts: Font" + std::to_string(i) + "\n";
    const HeaderFacts facts = ScanComments(comments);
    EXPECT_LE(facts.title.size(), 255u);
    EXPECT_LE(facts.fonts.size(), 256u);
    EXPECT_EQ(facts.fonts.front(), "Font0");
}

} // namespace

} // namespace vxhost
