// The body driver: sections, reports, limits, and what is left behind.
#include "plugin/body/Body.h"
#include "plugin/body/Paint.h"

#include "tests/support/CaseName.h"
#include "tests/support/RecordingHost.h"
#include "tests/unit/body/BodyDocument.h"

#include <vx/HostCall.h>

#include <gtest/gtest.h>

#include <string>

namespace
{

using namespace vxtest;

struct SectionCase {
    const char *name;
    int version;
    std::string section; // from the first line of the setup section on
    const char *calls;
    int16_t result = kVXOk;
};

class Sections : public testing::TestWithParam<SectionCase>
{
};

TEST_P(Sections, AreFollowed)
{
    RecordingHost host;
    EXPECT_EQ(host.Parse(DocumentWithSetup(GetParam().version, GetParam().section)), GetParam().result);
    EXPECT_EQ(host.Joined(), GetParam().calls);
    EXPECT_EQ(host.liveBlocks, 0);
}

const SectionCase kSetups[] = {
    {"TheSetupSectionIsNotInterpreted", 5, "%%BeginSetup\n1 2 m\n%%EndSetup\n3 4 m", "moveto 3 4"},
    {"NothingIsWithoutAnEndOfTheSetup", 5, "%%BeginSetup\n1 2 m\n3 4 l", ""},
    {"NothingIsWithoutASetup", 5, "1 2 m", "", kVXBadFormat},
    {"TheBodyOfVersionFourBeginsThereToo", 4, "%%BeginSetup\n1 2 m\n%%EndSetup\n3 4 m", "moveto 3 4"},
    {"TheBodyOfVersionThreeBeginsThereToo", 3, "%%BeginSetup\n1 2 m\n%%EndSetup\n3 4 m", "moveto 3 4"},
    {"TheBodyOfVersionTwoBeginsBehindTheSetup", 2, "%%BeginSetup\n1 2 m\n%%EndSetup\n3 4 m", "moveto 3 4"},
    {"VersionTwoNeedsAnEndOfTheSetup", 2, "%%BeginSetup\n1 2 m", "", kVXBadFormat},
    {"TextMayFollowTheEndOfTheSetup", 5, "%%BeginSetup\n%%EndSetup now\n3 4 m", "moveto 3 4"},
    {"AnIndentedEndOfTheSetupIsNone", 5, "%%BeginSetup\n %%EndSetup\n3 4 m", ""},
    {"ASecondEndOfTheSetupIsAComment", 5, "%%BeginSetup\n%%EndSetup\n1 2 m\n%%EndSetup\n3 4 m",
     "moveto 1 2; moveto 3 4"},
    {"LinesBeforeTheSetupArePassedOver", 5,
     "%%BeginProlog\n1 2 m\n%%EndProlog\n%%BeginSetup\n%%EndSetup\n3 4 m", "moveto 3 4"},
};
INSTANTIATE_TEST_SUITE_P(Setups, Sections, testing::ValuesIn(kSetups), CaseName());

const SectionCase kEncodings[] = {
    {"AnEncodingBlockIsInterpreted", 5, "%%BeginSetup\n%VX3_BeginEncoding: a b\n1 2 m\n%%EndSetup\n3 4 l",
     "moveto 1 2; lineto 3 4"},
    {"ItsEndStopsTheInterpretation", 5,
     "%%BeginSetup\n%VX3_BeginEncoding: a b\n1 2 m\n%VX3_EndEncoding\n3 4 l\n%%EndSetup\n5 6 l",
     "moveto 1 2; lineto 5 6"},
    {"AnotherBlockStartsItAgain", 5,
     "%%BeginSetup\n%VX3_BeginEncoding: a\n1 2 m\n%VX3_EndEncoding\n%VX3_BeginEncoding: b\n3 4 "
     "l\n%VX3_EndEncoding\n"
     "5 6 l\n%%EndSetup",
     "moveto 1 2; lineto 3 4"},
    {"BlanksInItsCommentsDoNotMatter", 3,
     "%%BeginSetup\n % VX3_Begin Encoding: a\n1 2 m\n%VX3_End Encoding\n3 4 l\n%%EndSetup", "moveto 1 2"},
    {"WithoutItsColonItIsNone", 5, "%%BeginSetup\n%VX3_BeginEncoding\n1 2 m\n%%EndSetup", ""},
    {"AVersionTwoDocumentHasNone", 2,
     "%%BeginSetup\n%%EndSetup\n1 2 m\n%VX3_BeginEncoding: a\n[3] 0 d\n%VX3_EndEncoding\n3 4 l",
     "moveto 1 2; setdash 0 [3]; lineto 3 4"},
    {"InTheBodyItIsAComment", 5,
     "%%BeginSetup\n%%EndSetup\n%VX3_BeginEncoding: a\n[3] 0 d\n%VX3_EndEncoding\n3 4 l",
     "setdash 0 [3]; lineto 3 4"},
    // The first "[" of a block is dropped, and its entries stay loose on the stack.
    {"TheFirstBracketIsDropped", 5, "%%BeginSetup\n%VX3_BeginEncoding: a\n[1 2 m", "moveto 1 2"},
    {"TheSecondBracketIsNot", 5, "%%BeginSetup\n%VX3_BeginEncoding: a\n[ [3 4] 0 d", "setdash 0 [3 4]"},
    {"ItsClosingBracketIsNeverDropped", 5, "%%BeginSetup\n%VX3_BeginEncoding: a\n[1 2]", "", kVXBadFormat},
    // "]" sets the count back to 0, so that the next "[" is counted as 1 and kept, and the one after it dropped.
    {"AfterAClosingBracketCountingStartsAgain", 5,
     "%%BeginSetup\n%VX3_BeginEncoding: a\n[ [1] 0 d [2] 0 d [3] 0 d",
     "setdash 0 [1]; setdash 0 [2]; setdash 0 [3]"},
    {"TwoOpenBracketsDropTheSecondThen", 5, "%%BeginSetup\n%VX3_BeginEncoding: a\n[ [1] 0 d [ [2] 0 d",
     "setdash 0 [1]; setdash 0 [2]"},
    {"EveryBlockDropsItsFirstBracket", 5,
     "%%BeginSetup\n%VX3_BeginEncoding: a\n[1 2 m\n%VX3_EndEncoding\n%VX3_BeginEncoding: b\n[3 4 l",
     "moveto 1 2; lineto 3 4"},
    // The comment counts up: opened twice, the block's first "[" is its second.
    {"ABlockOpenedTwiceDropsNoBracket", 5,
     "%%BeginSetup\n%VX3_BeginEncoding: a\n%VX3_BeginEncoding: b\n[3 4] 0 d", "setdash 0 [3 4]"},
    {"TheBodyDropsNoBracket", 5, "%%BeginSetup\n%VX3_BeginEncoding: a\n%%EndSetup\n[3 4] 0 d",
     "setdash 0 [3 4]"},
};
INSTANTIATE_TEST_SUITE_P(Encodings, Sections, testing::ValuesIn(kEncodings), CaseName());

const SectionCase kHidden[] = {
    {"GradientBlocksAreInterpreted", 5, "%%BeginSetup\n%VX5_BeginGradient: a\n1 2 m\n%%EndSetup",
     "moveto 1 2"},
    {"OfVersionThreeToo", 3, "%%BeginSetup\n%VX5_BeginGradient: a\n1 2 m\n%%EndSetup", "moveto 1 2"},
    {"GradientCommentsDoNotIgnoreBlanks", 5, "%%BeginSetup\n%VX5_Begin Gradient: a\n1 2 m\n%%EndSetup", ""},
    {"HiddenOperatorsRunInTheSetup", 5, "%%BeginSetup\n%VX5_BeginGradient: a\n%_Mb 1 2 m\n%%EndSetup",
     "gsave"},
    {"HiddenOperatorsTakeOperandsFromLinesBefore", 5,
     "%%BeginSetup\n%VX5_BeginGradient: a\n1 1 1 0 0 0 0\n%_Lb\n%%EndSetup", ""},
    {"HiddenOperatorsAreCommentsInTheBody", 5, "%%BeginSetup\n%%EndSetup\n%_Mb\n1 2 m", "moveto 1 2"},
    // The setup step consumed that document's "%%EndSetup", so the body driver never sees it.
    {"HiddenOperatorsRunInTheBodyOfVersionTwo", 2, "%%BeginSetup\n%%EndSetup\n%_Mb 1 2 m\n3 4 m",
     "gsave; moveto 3 4"},
    {"AnotherEndOfTheSetupEndsThemInVersionTwo", 2, "%%BeginSetup\n%%EndSetup\n%%EndSetup\n%_Mb\n3 4 m",
     "moveto 3 4"},
    {"OneLetterOfAHiddenOperatorIsNotEnough", 5, "%%BeginSetup\n%VX5_BeginGradient: a\n%_M\n%%EndSetup",
     "report 3"},
};
INSTANTIATE_TEST_SUITE_P(Hidden, Sections, testing::ValuesIn(kHidden), CaseName());

// The lines of each case follow this in a version 5 document.
const char kBody[] = "%%BeginSetup\n%%EndSetup\n";

const SectionCase kSkipped[] = {
    {"BinaryDataIsSkippedWithAReport", 5,
     kBody + std::string("1 2 m\n%%BeginBinary: 3\n]]]\n%%EndBinary\n3 4 l"),
     "moveto 1 2; report 4; lineto 3 4"},
    {"BinaryDataIsReportedOnce", 5,
     kBody + std::string("%%BeginBinary: 1\n]\n%%EndBinary\n%%BeginBinary: 1\n]\n%%EndBinary\n3 4 l"),
     "report 4; lineto 3 4"},
    {"BinaryDataNeedsItsColon", 5, kBody + std::string("%%BeginBinary 3\n1 2 m"), "moveto 1 2"},
    {"BinaryDataBeforeTheBodyIsSkippedToo", 5,
     "%%BeginSetup\n%%BeginBinary: 3\n%%EndSetup\n%%EndBinary\n1 2 m", "report 4; moveto 1 2"},
    {"AnEndOfBinaryDataAloneIsNothing", 5, kBody + std::string("%%EndBinary\n1 2 m"), "moveto 1 2"},
    {"PlacedDataIsSkipped", 5, kBody + std::string("1 2 m\n%VX5_BeginPlace: x\n]]]\n%VX5_EndPlace\n3 4 l"),
     "moveto 1 2; lineto 3 4"},
    {"CropsAreSkippedUpToTheEndOfPlacedData", 5,
     kBody + std::string("%VX3_BeginCrops\n1 2 m\n%VX3_EndCrops\n3 4 m\n%VX5_EndPlace\n5 6 m"), "moveto 5 6"},
    {"CropsAreSkippedUpToTheEndOfBinaryData", 5,
     kBody + std::string("%VX3_BeginCrops\n1 2 m\n%VX3_EndCrops\n3 4 m\n%%EndBinary\n5 6 m"), "moveto 5 6"},
    {"AnEndOfCropsAloneSkipsToo", 5, kBody + std::string("%VX3_EndCrops\n3 4 m"), ""},
    {"SkippedSectionsDoNotNest", 5,
     kBody +
         std::string("%VX5_BeginPlace\n%VX5_BeginPlace\n1 2 m\n%VX5_EndPlace\n3 4 m\n%VX5_EndPlace\n5 6 m"),
     "moveto 3 4; moveto 5 6"},
    {"ABinarySectionEndsPlacedData", 5,
     kBody + std::string("%VX5_BeginPlace\n%%BeginBinary: 1\n%%EndBinary\n3 4 m\n%VX5_EndPlace"),
     "report 4; moveto 3 4"},
    {"TheCommentsMayCarryText", 5, kBody + std::string("%VX5_BeginPlaceX\n1 2 m\n%VX5_EndPlaceX\n3 4 m"),
     "moveto 3 4"},
    {"IndentedTheyAreComments", 5, kBody + std::string(" %VX5_BeginPlace\n1 2 m"), "moveto 1 2"},
    {"VersionTwoSkipsThemToo", 2, kBody + std::string("%VX5_BeginPlace\n1 2 m\n%VX5_EndPlace\n3 4 m"),
     "moveto 3 4"},
};
INSTANTIATE_TEST_SUITE_P(Skipped, Sections, testing::ValuesIn(kSkipped), CaseName());

const SectionCase kEnds[] = {
    {"EndOfFileEnds", 5, kBody + std::string("1 2 m\n%%EOF\n3 4 l"), "moveto 1 2"},
    {"EndOfFileMayHaveBlanksAfterIt", 5, kBody + std::string("1 2 m\n%%EOF \t\n3 4 l"), "moveto 1 2"},
    {"EndOfFileWithTextIsAComment", 5, kBody + std::string("1 2 m\n%%EOF x\n3 4 l"),
     "moveto 1 2; lineto 3 4"},
    {"AnIndentedEndOfFileIsAComment", 5, kBody + std::string("1 2 m\n %%EOF\n3 4 l"),
     "moveto 1 2; lineto 3 4"},
    {"EndOfFileEndsInASkippedSection", 5, kBody + std::string("%VX5_BeginPlace\n%%EOF\n%VX5_EndPlace\n3 4 l"),
     ""},
    {"PageTrailerEnds", 5, kBody + std::string("1 2 m\n%%PageTrailer\n3 4 l"), "moveto 1 2"},
    {"PageTrailerMayHaveBlanksAfterIt", 5, kBody + std::string("1 2 m\n%%PageTrailer \n3 4 l"), "moveto 1 2"},
    {"PageTrailerWithTextIsAComment", 5, kBody + std::string("1 2 m\n%%PageTrailer x\n3 4 l"),
     "moveto 1 2; lineto 3 4"},
    {"PageTrailerIsSkippedWithItsSection", 5,
     kBody + std::string("%VX5_BeginPlace\n%%PageTrailer\n%VX5_EndPlace\n3 4 l"), "lineto 3 4"},
    {"PageTrailerEndsInTheSetupToo", 5, "%%BeginSetup\n%%PageTrailer\n%%EndSetup\n3 4 l", ""},
    {"OtherStructureCommentsAreComments", 5, kBody + std::string("%%Page: 1 1\n1 2 m\n%%Trailer\n3 4 l"),
     "moveto 1 2; lineto 3 4"},
};
INSTANTIATE_TEST_SUITE_P(Ends, Sections, testing::ValuesIn(kEnds), CaseName());

TEST(SectionsTest, TheEndOfTheDataEnds)
{
    RecordingHost host;
    EXPECT_EQ(host.Parse(HeaderOfVersion(5) + "%%BeginSetup\n%%EndSetup\n1 2 m"), kVXOk);
    EXPECT_EQ(host.Joined(), "moveto 1 2");
}

// Reports.

struct ReportCase {
    const char *name, *lines, *told, *untold, *stopped;
    int16_t stoppedResult;
};

class Reports : public testing::TestWithParam<ReportCase>
{
};

TEST_P(Reports, AreToldUnlessTheHostTurnsThemOff)
{
    RecordingHost host;
    EXPECT_EQ(host.Parse(Document(GetParam().lines)), kVXOk);
    EXPECT_EQ(host.Joined(), GetParam().told);

    RecordingHost quiet;
    quiet.record.warningsOff = 1;
    EXPECT_EQ(quiet.Parse(Document(GetParam().lines)), kVXOk);
    EXPECT_EQ(quiet.Joined(), GetParam().untold);

    RecordingHost deaf;
    deaf.record.report = nullptr;
    EXPECT_EQ(deaf.Parse(Document(GetParam().lines)), kVXOk);
    EXPECT_EQ(deaf.Joined(), GetParam().untold);
}

// The answer is looked at after the operator, and before each further line that is interpreted.
TEST_P(Reports, StopTheParseAtTheUsersWish)
{
    RecordingHost host;
    host.stopAtReport = true;
    EXPECT_EQ(host.Parse(Document(GetParam().lines)), GetParam().stoppedResult);
    EXPECT_EQ(host.Joined(), GetParam().stopped);
    EXPECT_EQ(host.liveBlocks, 0);
}

const ReportCase kReports[] = {
    {"OfAPattern", "p F 1 2 m\n3 4 m",
     "comment path; report 1; setoverprint 0; setgray 0.5; fill; moveto 1 2; moveto 3 4",
     "comment path; setoverprint 0; setgray 0.5; fill; moveto 1 2; moveto 3 4",
     "comment path; report 1; setoverprint 0; setgray 0.5; fill", kVXStoppedByUser},
    {"OfEmbeddedPostScript", "` 1 2 m\n~ 3 4 m", "report 2; gsave; moveto 1 2; grestore; moveto 3 4",
     "gsave; moveto 1 2; grestore; moveto 3 4", "report 2; gsave", kVXStoppedByUser},
    {"OfAnUnknownOperator", "Qx 1 2 m\n3 4 m", "report 3; moveto 1 2; moveto 3 4", "moveto 1 2; moveto 3 4",
     "report 3", kVXStoppedByUser},
    {"OfBinaryData", "%%BeginBinary: 1\n]\n%%EndBinary\n1 2 m", "report 4; moveto 1 2", "moveto 1 2",
     "report 4", kVXStoppedByUser},
    {"OfBinaryDataBeforeABlankLine", "%%BeginBinary: 1\n]\n%%EndBinary\n\n", "report 4", "", "report 4",
     kVXStoppedByUser},
    {"OfBinaryDataAtTheEndOfTheData", "%%BeginBinary: 1\n]", "report 4", "", "report 4", kVXOk},
    {"OfBinaryDataBeforeThePageTrailer", "%%BeginBinary: 1\n]\n%%EndBinary\n%%PageTrailer\n1 2 m", "report 4",
     "", "report 4", kVXOk},
    {"OfEachKindOnce", "Qx ` p F\n%%BeginBinary: 1\n%%EndBinary\nQy ~ F",
     "report 3; report 2; gsave; comment path; report 1; setoverprint 0; setgray 0.5; fill; report 4; "
     "grestore; "
     "comment path; setoverprint 0; setgray 0.5; fill",
     "gsave; comment path; setoverprint 0; setgray 0.5; fill; grestore; comment path; setoverprint 0; "
     "setgray 0.5; fill",
     "report 3", kVXStoppedByUser},
};
INSTANTIATE_TEST_SUITE_P(Body, Reports, testing::ValuesIn(kReports), CaseName());

// Limits. Each operand stands on a line of its own, so that lines are no limit.

struct LimitCase {
    const char *name;
    std::string lines;
    int16_t result;
    const char *calls;
};

class Limits : public testing::TestWithParam<LimitCase>
{
};

TEST_P(Limits, HoldExactly)
{
    RecordingHost host;
    EXPECT_EQ(host.Parse(Document(GetParam().lines)), GetParam().result);
    EXPECT_EQ(host.Joined(), GetParam().calls);
    EXPECT_EQ(host.liveBlocks, 0);
}

// A string of this many bytes that is built in the string buffer.
std::string Built(int bytes)
{
    return "(\\101" + std::string(static_cast<size_t>(bytes - 1), 'a') + ")\n";
}

const LimitCase kLimits[] = {
    {"FiveHundredOperandsFit", Repeated("1\n", 500) + "E 1 2 m", kVXOk, "moveto 1 2"},
    {"TheFiveHundredFirstFails", "1 2 m\n" + Repeated("1\n", 501) + "E 3 4 m", kVXBadFormat, "moveto 1 2"},
    {"EveryKindOfOperandCounts", Repeated("1 2.5 (a) /b //c\n", 100) + "[ E", kVXBadFormat, ""},
    {"AnArrayMarkCounts", "[" + Repeated("1\n", 500), kVXBadFormat, ""},
    {"AnArrayEndDoesNot", "[" + Repeated("1\n", 499) + "] E 1 2 m", kVXOk, "moveto 1 2"},
    {"AHexStringAndItsPiecesCount", Repeated("1\n", 498) + "<48 65> E 1 2 m", kVXOk, "moveto 1 2"},
    {"AHexStringsPieceIsOneTooMany", Repeated("1\n", 499) + "<48 65> E 1 2 m", kVXBadFormat, ""},
    {"CommentsAndBracesDoNotCount", Repeated("1\n", 500) + Repeated("{ } % c\n", 100) + "E 1 2 m", kVXOk,
     "moveto 1 2"},
    {"ThePoolIsWholeAfterEveryOperator", Repeated(Repeated("1\n", 500) + "E\n", 3) + "1 2 m", kVXOk,
     "moveto 1 2"},
    {"ThePoolIsWholeAfterAnIgnoredOperator", Repeated(Repeated("1\n", 500) + "abc\n", 3) + "1 2 m", kVXOk,
     "moveto 1 2"},
    {"ATwoHundredFiftySeventhFails", "[" + Repeated("1\n", 257) + "] 0 d", kVXBadFormat, ""},
    {"AFullStringBufferIsNoFailure", Repeated(Built(256), 32) + "E 1 2 m", kVXOk, "moveto 1 2"},
    {"OneByteMoreOfAStringFails", Repeated(Built(256), 32) + "(\\101) E 1 2 m", kVXBadFormat, ""},
    {"OneByteMoreOfHexDataFails", Repeated(Built(256), 32) + "<48> E 1 2 m", kVXBadFormat, ""},
    {"NumbersNeedNoRoomInAFullStringBuffer", Repeated(Built(256), 32) + "1 E 1 2 m", kVXOk, "moveto 1 2"},
    {"TheStringBufferIsEmptyAfterEveryOperator", Repeated(Repeated(Built(256), 32) + "E\n", 3) + "1 2 m",
     kVXOk, "moveto 1 2"},
    // Plain strings are kept only when the line buffer moves: 40 of 250 bytes are 10000.
    {"PlainStringsOfManyLinesFillTheBufferToo", Repeated("(" + std::string(250, 'a') + ")\n", 40) + "E 1 2 m",
     kVXBadFormat, ""},
    {"NamesOfManyLinesFillTheBufferToo", Repeated("/" + std::string(250, 'a') + "\n", 40) + "E 1 2 m",
     kVXBadFormat, ""},
    {"PlainStringsOfFewerLinesFit", Repeated("(" + std::string(250, 'a') + ")\n", 32) + "E 1 2 m", kVXOk,
     "moveto 1 2"},
    {"NestedArraysAreNoRecursionProblem", Repeated("[\n", 250) + Repeated("]\n", 250) + "E 1 2 m", kVXOk,
     "moveto 1 2"},
};

INSTANTIATE_TEST_SUITE_P(Body, Limits, testing::ValuesIn(kLimits), CaseName());

std::string SetDashOfOnes(int count)
{
    return "setdash 0 [1" + Repeated(" 1", count - 1) + "]";
}

TEST(LimitsTest, TwoHundredFiftySixDashesFit)
{
    RecordingHost host;
    EXPECT_EQ(host.Parse(Document("[" + Repeated("1\n", 256) + "] 0 d")), kVXOk);
    EXPECT_EQ(host.Joined(), SetDashOfOnes(256));
}

TEST(LongLinesTest, AreCutBetweenTokensAtTheBuffersEnd)
{
    // "1 2 l " is six bytes, and 83 of them are 498: the cut after 499 bytes falls behind the blank of the last.
    RecordingHost host;
    EXPECT_EQ(host.Parse(Document("%\n" + Repeated("1 2 l ", 83) + " 3 4 l")), kVXOk);
    EXPECT_EQ(host.lines.size(), 84u);
}

TEST(InitializeGlobalsTest, PaintsNothingBeforeTheFirstColour)
{
    vx::ParseContext context = {};
    vx::InitializeGlobals(&context);
    for (const vx::PaintProc proc : {context.pendingPaint, context.fillPaint, context.fillColour,
                                     context.strokePaint, context.strokeColour})
        EXPECT_EQ(proc, vx::NullOperator);
    EXPECT_EQ(context.loadedColour, vx::kNoColour);
    EXPECT_EQ(context.groupDepth, 0);
    EXPECT_EQ(context.clipPending, 0);
    EXPECT_EQ(context.setupEnded, 0);
    EXPECT_EQ(context.layer.initialized, 0);
    EXPECT_EQ(context.text.object.type, 111);
    EXPECT_EQ(context.text.object.pathState, 2);
}

// Memory.

TEST(MemoryTest, HeldDoesNotDependOnTheDocumentsSize)
{
    // Drawing, text operands, arrays and groups, so that every buffer is in use.
    const std::string lines =
        "*u 0 0 m 10.5 -3 l 1 2 3 4 5 6 c f *U\n0 0 0 1 (Spot\\101) 0.5 x\n[1 2] 0 d <48 65> E\n";
    const auto size = static_cast<int>(lines.size());
    RecordingHost small;
    EXPECT_EQ(small.Parse(Document(Repeated(lines, 1024 / size))), kVXOk);
    RecordingHost large;
    EXPECT_EQ(large.Parse(Document(Repeated(lines, 1024 * 1024 / size))), kVXOk);
    EXPECT_GT(large.lines.size(), 100 * small.lines.size());
    EXPECT_EQ(large.peakBytes, small.peakBytes);
    EXPECT_EQ(large.allocations, small.allocations);
    EXPECT_EQ(large.liveBytes, 0);
}

TEST(MemoryTest, EveryAllocationMayFail)
{
    const std::string document = Document("0.5 g 0 0 m F Qx\n3 4 m");
    RecordingHost plenty;
    ASSERT_EQ(plenty.Parse(document), kVXOk);
    for (int n = 1; n <= plenty.allocations; ++n) {
        RecordingHost host;
        host.failAllocation = n;
        const int16_t result = host.Parse(document);
        EXPECT_TRUE(result == kVXOk || result == kVXOutOfMemory || result == kVXBadFormat)
            << n << ": " << result;
        EXPECT_EQ(host.liveBlocks, 0) << n;
    }
}

TEST(MemoryTest, WithoutAnyBlockTheParseFails)
{
    RecordingHost host;
    host.failFromAllocation = 1;
    EXPECT_EQ(host.Parse(Document("1 2 m")), kVXOutOfMemory);
    EXPECT_EQ(host.Joined(), "");
}

// The first three blocks of a parse are the setup section's; the fourth is the string buffer.
TEST(MemoryTest, WithoutTheStringBufferTheParseFails)
{
    RecordingHost host;
    host.failAllocation = 4;
    EXPECT_EQ(host.Parse(Document("1 2 m")), kVXOutOfMemory);
    EXPECT_EQ(host.Joined(), "");
    EXPECT_EQ(host.liveBlocks, 0);
}

TEST(MemoryTest, WithoutTheFontTableNothingIsDrawn)
{
    RecordingHost host;
    host.failAllocation = 5;
    EXPECT_EQ(host.Parse(Document("1 2 m")), kVXOk);
    EXPECT_EQ(host.Joined(), "");
    EXPECT_EQ(host.liveBlocks, 0);
}

// The object pool is the last block.
TEST(MemoryTest, WithoutTheObjectPoolTheParseFails)
{
    RecordingHost plenty;
    ASSERT_EQ(plenty.Parse(Document("1 2 m")), kVXOk);
    RecordingHost host;
    host.failAllocation = plenty.allocations;
    EXPECT_EQ(host.Parse(Document("1 2 m")), kVXOutOfMemory);
    EXPECT_EQ(host.Joined(), "");
    EXPECT_EQ(host.liveBlocks, 0);
}

// Without the encoding object the version counts as 0, and every line is interpreted.
TEST(MemoryTest, WithoutTheEncodingObjectEveryLineIsInterpreted)
{
    RecordingHost host;
    host.failAllocation = 3;
    EXPECT_EQ(
        host.Parse(DocumentWithSetup(5, "%%BeginSetup\n1 2 m\n%VX3_EndEncoding\n%%EndSetup\n3 4 l\n%_Mb")),
        kVXOk);
    EXPECT_EQ(host.Joined(), "moveto 1 2; lineto 3 4");
    EXPECT_EQ(host.liveBlocks, 0);
}

// Without the gradient state the gradient operators fail, and everything else is as ever.
TEST(MemoryTest, WithoutTheGradientStateGradientOperatorsFail)
{
    for (const char *text : {"Bb", "BB", "Bg", "Bc", "Bd", "BD", "Bh", "Bm", "Bs"}) {
        RecordingHost host;
        host.failAllocation = 1;
        EXPECT_EQ(host.Parse(Document(std::string("1 2 m ") + text + " 3 4 l")), kVXBadFormat) << text;
        EXPECT_EQ(host.Joined(), "moveto 1 2") << text;
        EXPECT_EQ(host.liveBlocks, 0) << text;
    }
}

// Without a gradient state "B" sends no path comment.
TEST(MemoryTest, WithoutTheGradientStateFillAndStrokeSendsNoComment)
{
    RecordingHost host;
    host.failAllocation = 1;
    EXPECT_EQ(host.Parse(Document("0.5 g 0 G B b F f")), kVXOk);
    EXPECT_EQ(
        host.Joined(),
        "gsave; setoverprint 0; setgray 0.5; fill; grestore; setoverprint 0; setgray 0; stroke; "
        "closepath; gsave; setoverprint 0; setgray 0.5; fill; grestore; setoverprint 0; setgray 0; stroke; "
        "comment path; setoverprint 0; setgray 0.5; fill; closepath; comment path; fill");
}

TEST(FontsTest, WithoutAnyFontNothingIsDrawn)
{
    RecordingHost host;
    host.fontNames = {};
    EXPECT_EQ(host.Parse(Document("1 2 m")), kVXOk);
    EXPECT_EQ(host.Joined(), "");
    EXPECT_EQ(host.liveBlocks, 0);
}

} // namespace
