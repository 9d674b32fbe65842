// Header comments: what makes a VX document, its version, its box and its colours, and where the header stops.
#include "plugin/header/Header.h"

#include "tests/support/CaseName.h"
#include "tests/unit/input/TestReader.h"
#include "tests/unit/input/Views.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace
{

using namespace vx;
using namespace vxtest;

#define FIRST      "%!PS-Tavro-3.0\n"
#define BOX        "%%BoundingBox: 1 2 3 4\n"
#define RECOGNISED "%%DocumentProcSets:Tavro_Vellumcraft_ProcSet 1 0\n"
#define VERSION3   "%%+ procset Tavro_Vellumcraft_VX3 1 0\n"
#define VERSION4   "%%Creator: Tavro Vellumcraft(TM) for Windows, version 4.1\n"
#define VERSION5   "%VX5_FileFormat 3\n"
#define END        "%%EndComments\n"

struct HeaderCase {
    const char *name;
    std::string text;
    FileVersion version;
    std::array<double, 4> box;
    int monochrome = 0;
};

class Headers : public testing::TestWithParam<HeaderCase>
{
};

TEST_P(Headers, AreRead)
{
    const HeaderCase &c = GetParam();
    TextStream stream(c.text);
    Fixed box[4] = {};
    uint8_t monochrome = 7;
    FileVersion version = 7;
    ASSERT_EQ(ParseHeader(&stream.lines, box, &monochrome, &version), kOk);
    EXPECT_EQ(version, c.version);
    EXPECT_EQ(monochrome, c.monochrome);
    for (size_t i = 0; i < 4; ++i)
        EXPECT_EQ(box[i] / 65536.0, c.box[i]) << i;
}

constexpr std::array<double, 4> kBox = {1, 2, 3, 4};

const HeaderCase kVersions[] = {
    {"RecognisedAloneIsVersionTwo", FIRST BOX RECOGNISED END, 2, kBox},
    {"RecognisedByTheLooseKeywordIsVersionTwo", FIRST BOX "%%DocumentProcSets: Tavro_Vellumcraft_X\n" END, 2,
     kBox},
    {"TheLooseKeywordIgnoresBlanks", FIRST BOX "%%Document ProcSets:\tTavro_ Vellumcraft\n" END, 2, kBox},
    {"VersionThree", FIRST BOX VERSION3 END, 3, kBox},
    {"VersionThreeByTheOtherProcset", FIRST BOX "%%+ procset Tavro_VellumcraftA_VX3\n" END, 3, kBox},
    {"VersionFour", FIRST BOX VERSION4 END, 4, kBox},
    {"VersionFourByItsFirstDigit", FIRST BOX "%%Creator: Tavro Vellumcraft(TM) for Windows, version 4\n" END,
     4, kBox},
    {"VersionFive", FIRST BOX VERSION5 END, 5, kBox},
    {"VersionFiveIgnoresBlanks", FIRST BOX "% VX5_File Format\t3\n" END, 5, kBox},
    {"VersionFiveMayEndItsLine", FIRST BOX "%VX5_FileFormat\n" END, 5, kBox},
    // Once recognised and decided, no further line is looked at for the version.
    {"TheFirstDecisionStands", FIRST BOX VERSION3 VERSION5 END, 3, kBox},
    {"AVersionIsNeverLowered", FIRST BOX VERSION5 VERSION3 END, 5, kBox},
    {"ARecognitionMayComeBeforeTheDecision", FIRST BOX RECOGNISED VERSION4 END, 4, kBox},
    {"ARecognitionAfterTheDecisionChangesNothing", FIRST BOX VERSION3 RECOGNISED END, 3, kBox},
    {"OtherCommentsAreConsumed",
     FIRST "%%Title: (x)\n" BOX "%%For: y\n%%Creator: z\n" VERSION5 "%%Pages: 1\n" END, 5, kBox},
    {"ThePlainProcsetKeywordDoesNotTakeBlanks",
     FIRST BOX "%%+  procset Tavro_Vellumcraft_VX3\n" RECOGNISED END, 2, kBox},
    {"AnotherWindowsVersionDecidesNothing",
     FIRST BOX RECOGNISED "%%Creator: Tavro Vellumcraft(TM) for Windows, version 5.0\n" END, 2, kBox},
    {"ThreeCommentsAloneDoNotRaiseAnUndecidedVersion", FIRST BOX RECOGNISED "%VX3_Note: 1\n" END, 2, kBox},
    {"TheFirstLineMaySayAnythingAfterItsPrefix", "%!PS-Tavro-\n" BOX VERSION5 END, 5, kBox},
    {"TheFirstLineIsNoOtherComment", "%!PS-Tavro-%%BoundingBox: 9 9 9 9\n" BOX VERSION5 END, 5, kBox},
};
INSTANTIATE_TEST_SUITE_P(Versions, Headers, testing::ValuesIn(kVersions), CaseName());

const HeaderCase kBoxes[] = {
    {"FractionsAreKept", FIRST "%%BoundingBox: 0 0 612.5 792\n" VERSION5 END, 5, {0, 0, 612.5, 792}},
    {"NumbersMayBeNegative", FIRST "%%BoundingBox: -1.5 -2 +3 .25\n" VERSION5 END, 5, {-1.5, -2, 3, 0.25}},
    {"NoBlankIsNeededAfterTheKeyword", FIRST "%%BoundingBox:1\t2  3\t 4 \t\n" VERSION5 END, 5, kBox},
    {"AnInvertedBoxIsTakenAsWritten", FIRST "%%BoundingBox: 4 3 2 1\n" VERSION5 END, 5, {4, 3, 2, 1}},
    {"LargeNumbersSaturate",
     FIRST "%%BoundingBox: -40000 0 40000 99999999999\n" VERSION5 END,
     5,
     {-32768, 0, 32768 - 1 / 65536.0, 32768 - 1 / 65536.0}},
    {"TheFirstPlainBoxCounts", FIRST BOX "%%BoundingBox: 5 6 7 8\n" VERSION5 END, 5, kBox},
    {"ASecondPlainBoxNeedNotBeANumber", FIRST BOX "%%BoundingBox: (atend)\n" VERSION5 END, 5, kBox},
    {"AHighResolutionBoxWinsAfterAPlainOne",
     FIRST BOX "%%HiResBoundingBox: 1.5 2.5 3.5 4.5\n" VERSION5 END,
     5,
     {1.5, 2.5, 3.5, 4.5}},
    {"AHighResolutionBoxWinsBeforeAPlainOne",
     FIRST "%%HiResBoundingBox: 1.5 2.5 3.5 4.5\n" BOX VERSION5 END,
     5,
     {1.5, 2.5, 3.5, 4.5}},
    {"AHighResolutionBoxAloneSuffices",
     FIRST "%%HiResBoundingBox: 1.5 2.5 3.5 4.5\n" VERSION5 END,
     5,
     {1.5, 2.5, 3.5, 4.5}},
    {"TheFirstHighResolutionBoxCounts",
     FIRST "%%HiResBoundingBox: 1.5 2.5 3.5 4.5\n%%HiResBoundingBox: 5 6 7 8\n" VERSION5 END,
     5,
     {1.5, 2.5, 3.5, 4.5}},
    {"CropMarksWinOverBoth",
     FIRST BOX "%%HiResBoundingBox: 1.5 2.5 3.5 4.5\n" VERSION5 "%VX3_Cropmarks: 5 6 7 8\n" END,
     5,
     {5, 6, 7, 8}},
    {"CropMarksAloneSuffice", FIRST VERSION3 "%VX3_Cropmarks: 5 6 7 8\n" END, 3, {5, 6, 7, 8}},
    {"CropMarksWinOverBoxesAfterThem",
     FIRST VERSION5 "%VX3_Cropmarks: 5 6 7 8\n" BOX "%%HiResBoundingBox: 1 2 3 4\n" END,
     5,
     {5, 6, 7, 8}},
    {"TheFirstCropMarksCount",
     FIRST VERSION5 "%VX3_Cropmarks: 5 6 7 8\n%VX3_Cropmarks: 1 2 3 4\n" END,
     5,
     {5, 6, 7, 8}},
    {"CropMarksBeforeTheIdentificationAreIgnored", FIRST BOX "%VX3_Cropmarks: 5 6 7 8\n" VERSION5 END, 5,
     kBox},
    {"CropMarksOfAnUndecidedVersionAreIgnored", FIRST BOX RECOGNISED "%VX3_Cropmarks: 5 6 7 8\n" END, 2,
     kBox},
    {"IgnoredCropMarksNeedNotBeNumbers", FIRST BOX "%VX3_Cropmarks: none\n" VERSION5 END, 5, kBox},
    {"NulBytesInABoxAreBlanks",
     FIRST + std::string("%%BoundingBox:\0001\0002 3\0004\000\n", 24) + VERSION5 END, 5, kBox},
    {"BoxesNeedNoIdentificationBefore", FIRST "%%HiResBoundingBox: 5 6 7 8\n" VERSION5 END, 5, {5, 6, 7, 8}},
};
INSTANTIATE_TEST_SUITE_P(Boxes, Headers, testing::ValuesIn(kBoxes), CaseName());

const HeaderCase kColours[] = {
    {"BlackAndWhiteIsMonochrome", FIRST BOX VERSION5 "%%ColorUsage: Black&White\n" END, 5, kBox, 1},
    {"ColorIsNot", FIRST BOX VERSION5 "%%ColorUsage: Color\n" END, 5, kBox, 0},
    {"OnlyALargeBCounts", FIRST BOX VERSION5 "%%ColorUsage: black&white\n" END, 5, kBox, 0},
    {"AnyWordWithALargeBCounts", FIRST BOX VERSION5 "%%ColorUsage:Blue\n" END, 5, kBox, 1},
    {"TheOtherKeywordCountsToo", FIRST BOX VERSION3 "%VX3_ColorUsage: Black&White\n" END, 3, kBox, 1},
    {"TheFirstColourUsageCounts",
     FIRST BOX VERSION5 "%%ColorUsage: Color\n%VX3_ColorUsage: Black&White\n" END, 5, kBox, 0},
    {"ALaterColourUsageMayBeEmpty", FIRST BOX VERSION5 "%%ColorUsage: Black&White\n%%ColorUsage:\n" END, 5,
     kBox, 1},
    {"ColourUsageBeforeTheIdentificationIsIgnored", FIRST BOX "%%ColorUsage: Black&White\n" VERSION5 END, 5,
     kBox, 0},
    {"ColourUsageOfAnUndecidedVersionIsIgnored", FIRST BOX RECOGNISED "%%ColorUsage: Black&White\n" END, 2,
     kBox, 0},
};
INSTANTIATE_TEST_SUITE_P(Colours, Headers, testing::ValuesIn(kColours), CaseName());

const HeaderCase kLineEnds[] = {
    {"CarriageReturns", "%!PS-Tavro-3.0\r%%BoundingBox: 1 2 3 4\r%VX5_FileFormat 3\r%%EndComments\r", 5,
     kBox},
    {"CarriageReturnsAndLineFeeds",
     "%!PS-Tavro-3.0\r\n%%BoundingBox: 1 2 3 4\r\n%VX5_FileFormat 3\r\n%%EndComments\r\n", 5, kBox},
    {"BlankLinesBetweenCommentsAreSkipped", FIRST "\n  \n" BOX "\n\n" VERSION5 "\n" END, 5, kBox},
    {"TheEndOfTheDataEndsTheHeader", FIRST BOX "%VX5_FileFormat", 5, kBox},
    {"ALineOfTheLongestLengthIsRead", FIRST BOX "%" + std::string(497, 'x') + "\n" VERSION5 END, 5, kBox},
    // The piece of a longer comment that follows its cut does not begin with "%": the header ends there.
    {"ALongerCommentEndsTheHeader",
     FIRST BOX VERSION4 "%" + std::string(600, 'x') +
         "\n"
         "%%ColorUsage: B\n" END,
     4, kBox, 0},
};
INSTANTIATE_TEST_SUITE_P(LineEnds, Headers, testing::ValuesIn(kLineEnds), CaseName());

struct BadCase {
    const char *name;
    std::string text;
};

class BadHeaders : public testing::TestWithParam<BadCase>
{
};

TEST_P(BadHeaders, AreRefused)
{
    TextStream stream(GetParam().text);
    Fixed box[4] = {};
    uint8_t monochrome = 0;
    FileVersion version = 0;
    EXPECT_EQ(ParseHeader(&stream.lines, box, &monochrome, &version), kParserBadFormat);
}

const BadCase kBadHeaders[] = {
    {"Nothing", ""},
    {"ABlankBeforeTheFirstLine", " " FIRST BOX VERSION5 END},
    {"ALineBeforeTheFirstLine", "\n" FIRST BOX VERSION5 END},
    {"APlainPostScriptHeader", "%!PS-Adobe-3.0\n" BOX VERSION5 END},
    {"AnEncapsulatedPostScriptHeader", "%!PS-Adobe-3.0 EPSF-3.0\n" BOX VERSION5 END},
    {"AShortenedPrefix", "%!PS-Tavro\n" BOX VERSION5 END},
    {"AnotherCaseOfThePrefix", "%!PS-TAVRO-3.0\n" BOX VERSION5 END},
    {"TheFirstLineAlone", FIRST},
    {"NoBox", FIRST VERSION5 END},
    {"NoIdentification", FIRST BOX END},
    {"NoIdentificationByCropMarks", FIRST BOX "%VX3_Cropmarks: 1 2 3 4\n" END},
    {"ADeferredBox", FIRST "%%BoundingBox: (atend)\n" VERSION5 END},
    {"ABoxOfThreeNumbers", FIRST "%%BoundingBox: 0 0 612\n" VERSION5 END},
    {"ABoxOfFiveNumbers", FIRST "%%BoundingBox: 0 0 612 792 5\n" VERSION5 END},
    {"TextAfterABox", FIRST "%%BoundingBox: 0 0 612 792 x\n" VERSION5 END},
    {"AnEmptyBox", FIRST "%%BoundingBox:\n" VERSION5 END},
    {"AnExponentInABox", FIRST "%%BoundingBox: 0 0 1e3 792\n" VERSION5 END},
    {"ABadHighResolutionBox", FIRST BOX "%%HiResBoundingBox: 0 0 612\n" VERSION5 END},
    {"TextAfterAHighResolutionBox", FIRST BOX "%%HiResBoundingBox: 0 0 612 792 x\n" VERSION5 END},
    {"BadCropMarks", FIRST BOX VERSION5 "%VX3_Cropmarks: 1 2 3\n" END},
    {"TextAfterCropMarks", FIRST BOX VERSION5 "%VX3_Cropmarks: 1 2 3 4 x\n" END},
    {"ColourUsageWithoutAWord", FIRST BOX VERSION5 "%%ColorUsage:  \n" END},
    {"TheOtherColourUsageWithoutAWord", FIRST BOX VERSION5 "%VX3_ColorUsage:\n" END},
    {"AnIndentedLineEndsTheHeaderBeforeItsBox", FIRST VERSION5 " %%note\n" BOX END},
    {"AnIndentedBoxIsNoBox", FIRST VERSION5 " " BOX END},
    {"ALineThatIsNoCommentEndsTheHeaderBeforeItsBox", FIRST VERSION5 "x\n" BOX END},
    {"EndOfFileEndsTheHeaderBeforeItsBox", FIRST VERSION5 "%%EOF\n" BOX END},
    {"EndCommentsEndsTheHeaderBeforeItsBox", FIRST VERSION5 END BOX},
    {"EndOfFileEndsTheHeaderBeforeItsIdentification", FIRST BOX "%%EOF  \n" VERSION5 END},
};
INSTANTIATE_TEST_SUITE_P(Header, BadHeaders, testing::ValuesIn(kBadHeaders), CaseName());

struct EndCase {
    const char *name;
    std::string ending; // follows a complete header
    std::string text;   // the stream's text where the header stopped
    std::string next;   // and its next line
};

class HeaderEnds : public testing::TestWithParam<EndCase>
{
};

TEST_P(HeaderEnds, LeaveTheStreamThere)
{
    TextStream stream(FIRST BOX VERSION5 + GetParam().ending);
    Fixed box[4] = {};
    uint8_t monochrome = 0;
    FileVersion version = 0;
    ASSERT_EQ(ParseHeader(&stream.lines, box, &monochrome, &version), kOk);
    EXPECT_EQ(Text(stream.lines.text), GetParam().text);
    ASSERT_TRUE(RefillLineStreamText(&stream.lines));
    EXPECT_EQ(Text(stream.lines.text), GetParam().next);
}

const EndCase kEnds[] = {
    {"EndCommentsIsConsumed", "%%EndComments\nab\n", "", "ab\n"},
    {"EndCommentsMayHaveBlanksAfterIt", "%%EndComments \t \nab\n", "", "ab\n"},
    {"EndCommentsWithTextIsAnotherComment", "%%EndComments x\nab\ncd\n", "ab\n", "cd\n"},
    {"ALineThatIsNoCommentIsLeft", "ab\ncd\n", "ab\n", "cd\n"},
    {"AnIndentedLineIsLeftWithoutItsBlanks", "  %ab\ncd\n", "%ab\n", "cd\n"},
    {"EndOfFileIsLeft", "%%EOF \ncd\n", "%%EOF \n", "cd\n"},
    {"EndOfFileWithTextIsAnotherComment", "%%EOF x\nab\ncd\n", "ab\n", "cd\n"},
    {"TheEndOfTheDataIsLeft", "", "%%EOF\n", "%%EOF\n"},
};
INSTANTIATE_TEST_SUITE_P(Header, HeaderEnds, testing::ValuesIn(kEnds), CaseName());

TEST(ParseHeaderLineTest, WantsTheTextAtItsLineStart)
{
    TextStream stream("x%!PS-Tavro-3.0\n");
    ASSERT_TRUE(RefillLineStreamText(&stream.lines));
    TrimFirstCharacter(&stream.lines.text);
    EXPECT_EQ(ParseHeaderLine(&stream.lines), kParserBadFormat);
}

TEST(ParseHeaderLineTest, ConsumesTheWholeLine)
{
    TextStream stream("%!PS-Tavro-3.0 anything\nab\n");
    ASSERT_EQ(ParseHeaderLine(&stream.lines), kOk);
    EXPECT_EQ(stream.lines.text.length, 0);
    ASSERT_TRUE(RefillLineStreamText(&stream.lines));
    EXPECT_EQ(Text(stream.lines.text), "ab\n");
}

TEST(ParseHeaderLineTest, FailsWithTheRefill)
{
    TextStream stream(std::string(600, 'x'));
    stream.reader.claimed = 500;
    EXPECT_EQ(ParseHeaderLine(&stream.lines), kParserBadFormat);
}

TEST(ParseFixedTest, TakesOneWord)
{
    const BigString text = View(" 1.5 -2x 3");
    BigString rest = {};
    Fixed value = 0;
    ASSERT_TRUE(ParseFixed(&text, &value, &rest));
    EXPECT_EQ(value, 0x18000);
    EXPECT_EQ(Text(rest), " -2x 3");
    EXPECT_FALSE(ParseFixed(&rest, &value, &rest)) << "-2x is no number";
    const BigString blank = View("  ");
    EXPECT_FALSE(ParseFixed(&blank, &value, &rest));
}

TEST(ParseFixedRectTest, KeepsTheNumbersBeforeAFailure)
{
    std::string bytes = "1 2 x 4";
    const BigString text = View(bytes);
    BigString rest = {};
    Fixed values[4] = {9, 9, 9, 9};
    EXPECT_FALSE(ParseFixedRect(&text, values, &rest));
    EXPECT_EQ(values[0], 0x10000);
    EXPECT_EQ(values[1], 0x20000);
    EXPECT_EQ(values[2], 9);
    EXPECT_EQ(values[3], 9);
}

TEST(ParseFixedRectTest, BlanksOutEveryNulByte)
{
    std::string bytes("1\0002 3\0004\000x\000", 10);
    const BigString text = View(bytes);
    BigString rest = {};
    Fixed values[4] = {};
    ASSERT_TRUE(ParseFixedRect(&text, values, &rest));
    EXPECT_EQ(values[3], 0x40000);
    EXPECT_EQ(Text(rest), " x ");
}

} // namespace
