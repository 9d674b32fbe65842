// Text that becomes a clip: what the host is shown when the text object closes.
//
// In all cases text starts at (10, 20), is 12 points large, and a character is 6 points wide. A record of a whole
// string has an empty style name.
#include "plugin/text/TextRecords.h"

#include "plugin/text/TextSetting.h"
#include "tests/support/CaseName.h"
#include "tests/unit/text/TextDocument.h"

#include <gtest/gtest.h>

namespace
{

using namespace vxtest;

class ClipText : public testing::TestWithParam<TextCase>
{
};

TEST_P(ClipText, MakesTheseCalls)
{
    ExpectCalls(TextDocument(GetParam().lines), GetParam());
}

const TextCase kWholeStrings[] = {
    {"NothingIsShownBeforeTheEnd", "7 Tr (AB) Tx", "", kVXOk},
    {"TheEndShowsTheClip", "7 Tr (AB) Tx TO",
     "show 4 | Helvetica style  [12 0 0 -12] 10 20 placement 1 (AB); newpath", kVXOk},
    {"OnlyOnce", "7 Tr (A) Tx TO TO",
     "show 4 | Helvetica style  [12 0 0 -12] 10 20 placement 1 (A); newpath; newpath", kVXOk},
    {"ASecondStringContinues", "7 Tr (A) Tx (B) Tx TO",
     "show 4 | Helvetica style  [12 0 0 -12] 10 20 placement 1 (A) | "
     "Helvetica style  [12 0 0 -12] 0 0 placement 0 (B); newpath",
     kVXOk},
    {"ANewLineIsPlaced", "7 Tr (A) Tx 0 -15 Td (B) Tx TO",
     "show 4 | Helvetica style  [12 0 0 -12] 10 20 placement 1 (A) | "
     "Helvetica style  [12 0 0 -12] 10 5 placement 1 (B); newpath",
     kVXOk},
    {"KerningMovesBy", "7 Tr (A) Tx 0 500 Tk (B) Tx TO",
     "show 4 | Helvetica style  [12 0 0 -12] 10 20 placement 1 (A) | "
     "Helvetica style  [12 0 0 -12] -6 0 placement 2 (B); newpath",
     kVXOk},
    {"KerningMovesThePlace", "7 Tr 0 500 Tk (A) Tx TO",
     "show 4 | Helvetica style  [12 0 0 -12] 4 20 placement 1 (A); newpath", kVXOk},
    {"RiseMovesThePlace", "7 Tr 3 Ts (A) Tx TO",
     "show 4 | Helvetica style  [12 0 0 -12] 10 23 placement 1 (A); newpath", kVXOk},
    {"RiseMovesByWithoutKerning", "7 Tr (A) Tx 3 Ts (B) Tx TO",
     "show 4 | Helvetica style  [12 0 0 -12] 10 20 placement 1 (A) | "
     "Helvetica style  [12 0 0 -12] 0 3 placement 2 (B); newpath",
     kVXOk},
    {"OffsetsAreScaled", "7 Tr 200 50 Tz 3 Ts 0 500 Tk (A) Tx TO",
     "show 4 | Helvetica style  [24 0 0 -6] -2 21.5 placement 1 (A); newpath", kVXOk},
    {"SwappedScales", "7 Tr 1 Ty 200 50 Tz (A) Tx TO",
     "show 4 | Helvetica style  [6 0 0 -24] 10 20 placement 1 (A); newpath", kVXOk},
    {"AnEmptyStringIsPlacedAsAlways", "7 Tr () Tx TO",
     "show 4 | Helvetica style  [12 0 0 -12] 10 20 placement 1 (); newpath", kVXOk},
    {"PaintAndClipStartAtTheSamePlace", "4 Tr (AB) Tx (C) Tx TO",
     "show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (AB); "
     "show 1 | Helvetica [12 0 0 -12] 22 20 placement 1 (C); "
     "show 4 | Helvetica style  [12 0 0 -12] 10 20 placement 1 (AB) | "
     "Helvetica style  [12 0 0 -12] 0 0 placement 0 (C); newpath",
     kVXOk},
    {"TextThatIsOnlyPaintedIsNoClip", "0 Tr (A) Tx TO",
     "show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (A); newpath", kVXOk},
    {"AClipNeedsARenderModeOfItsObject", "7 Tr TO 0 To 1 0 0 1 10 20 0 Tp TP (A) Tx TO", "newpath; newpath",
     kVXOk},
    {"ANewObjectDropsTheClip", "7 Tr (A) Tx 0 To TO", "newpath", kVXOk},
    {"EvenANewObjectWithWrongOperandsDoes", "7 Tr (A) Tx (x) To", "", kVXBadFormat},
    {"TheEndOfTheDocumentDropsIt", "7 Tr (A) Tx 1 Tc (BC) Tx", "", kVXOk},
    {"AFailureDropsIt", "7 Tr (A) Tx 1 m", "", kVXBadFormat},
    {"TheLongerNameMakesTheRoom", "7 Tr /_X 12 Tf (A) Tx TO",
     "report 5; show 4 | Helvetica style  [12 0 0 -12] 10 20 placement 1 (A); newpath", kVXOk},
    {"NamesLongerThanTheHostsHaveRoomToo", "7 Tr /_Courier-RKSJ-V-and-more 12 Tf (A) Tx TO",
     "show 4 | Courier style  [12 0 0 -12] 10 20 placement 1 (A); newpath", kVXOk},
};
INSTANTIATE_TEST_SUITE_P(WholeStrings, ClipText, testing::ValuesIn(kWholeStrings), CaseName());

const TextCase kSpacedStrings[] = {
    {"ARecordACharacter", "7 Tr 1 Tc (AB) Tx TO",
     "show 4 | Helvetica [12 0 0 -12] 10 20 placement 1 (A) | Helvetica [12 0 0 -12] 17 20 placement 1 (B); "
     "newpath",
     kVXOk},
    // Text goes on 2 × (6 + 1) further.
    {"TheTextMovesOn", "7 Tr 1 Tc (AB) Tx (C) Tx TO",
     "show 4 | Helvetica [12 0 0 -12] 10 20 placement 1 (A) | Helvetica [12 0 0 -12] 17 20 placement 1 (B) | "
     "Helvetica [12 0 0 -12] 24 20 placement 1 (C); newpath",
     kVXOk},
    {"ASpaceStandsBehindItsSpacing", "7 Tr 2 Tw ( A) Tx TO",
     "show 4 | Helvetica [12 0 0 -12] 12 20 placement 1 ( ) | Helvetica [12 0 0 -12] 18 20 placement 1 (A); "
     "newpath",
     kVXOk},
    {"RiseAndKerning", "7 Tr 1 Tc 3 Ts 0 500 Tk (A) Tx 0 Ts (B) Tx TO",
     "show 4 | Helvetica [12 0 0 -12] 4 23 placement 1 (A) | Helvetica [12 0 0 -12] 11 20 placement 1 (B); "
     "newpath",
     kVXOk},
    // The amount is there, but its pending mark was taken away by the string of the older syntax before it.
    {"KerningMustBePending", "7 Tr 1 Tc 0 500 Tk (A) t TO",
     "show 4 | Helvetica [12 0 0 -12] 10 20 placement 1 (A); newpath", kVXOk},
    {"AnEmptyStringMovesByItsKerning", "7 Tr 1 Tc 0 500 Tk () Tx (A) Tx TO",
     "show 4 | Helvetica [12 0 0 -12] 0 0 placement 1 () | Helvetica [12 0 0 -12] 4 20 placement 1 (A); "
     "newpath",
     kVXOk},
    {"AnEmptyStringDoesNotMove", "7 Tr 1 Tc () Tx (A) Tx TO",
     "show 4 | Helvetica [12 0 0 -12] 0 0 placement 1 () | Helvetica [12 0 0 -12] 10 20 placement 1 (A); "
     "newpath",
     kVXOk},
    // Both start at the same place. The position is then where painting left it, 10 + 2 × (6 + 1).
    {"PaintAndClipStartAtTheSamePlace", "4 Tr 1 Tc (AB) Tx 0 Tc 0 Tr (C) Tx TO",
     "show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (A) | Helvetica [12 0 0 -12] 17 20 placement 1 (B); "
     "show 1 | Helvetica [12 0 0 -12] 24 20 placement 1 (C); "
     "show 4 | Helvetica [12 0 0 -12] 10 20 placement 1 (A) | Helvetica [12 0 0 -12] 17 20 placement 1 (B); "
     "newpath",
     kVXOk},
    // Painted text goes on where the clip ended.
    {"TheTextMovesOverTheClip", "7 Tr 1 Tc (AB) Tx 0 Tc 0 Tr (C) Tx TO",
     "show 1 | Helvetica [12 0 0 -12] 24 20 placement 1 (C); "
     "show 4 | Helvetica [12 0 0 -12] 10 20 placement 1 (A) | Helvetica [12 0 0 -12] 17 20 placement 1 (B); "
     "newpath",
     kVXOk},
    {"SwappedScales", "7 Tr 1 Tc 1 Ty 200 50 Tz (AB) Tx TO",
     "show 4 | Helvetica [6 0 0 -24] 10 20 placement 1 (A) | Helvetica [6 0 0 -24] 13.5 20 placement 1 (B); "
     "newpath",
     kVXOk},
};
INSTANTIATE_TEST_SUITE_P(SpacedStrings, ClipText, testing::ValuesIn(kSpacedStrings), CaseName());

const TextCase kColumns[] = {
    {"CharactersStandUpright", "7 Tr 1 Tv (AB) Tx TO",
     "show 4 | Helvetica [12 0 0 -12] 7 9.5 placement 1 (A) | Helvetica [12 0 0 -12] 7 -2.5 placement 1 (B); "
     "newpath",
     kVXOk},
    {"OrLieOnTheirSide", "7 Tr 1 Tv 1 TV (AB) Tx TO",
     "show 4 | Helvetica [0 -12 -12 0] 5.5 20 placement 1 (A) | "
     "Helvetica [0 -12 -12 0] 5.5 14 placement 1 (B); newpath",
     kVXOk},
    {"RiseGoesLeft", "7 Tr 1 Tv 3 Ts (A) Tx 0 Ts (B) Tx TO",
     "show 4 | Helvetica [12 0 0 -12] 4 9.5 placement 1 (A) | Helvetica [12 0 0 -12] 7 -2.5 placement 1 (B); "
     "newpath",
     kVXOk},
    {"WhilePaintGoesRight", "4 Tr 1 Tv 3 Ts (A) Tx TO",
     "show 1 | Helvetica [12 0 0 -12] 10 9.5 placement 1 (A); "
     "show 4 | Helvetica [12 0 0 -12] 4 9.5 placement 1 (A); newpath",
     kVXOk},
    {"AnEmptyStringDoesNotMove", "7 Tr 1 Tv () Tx (A) Tx TO",
     "show 4 | Helvetica [12 0 0 -12] 0 0 placement 1 () | Helvetica [12 0 0 -12] 7 9.5 placement 1 (A); "
     "newpath",
     kVXOk},
    {"AnEmptyStringIsPlacedNowhere", "7 Tr 1 Tv () Tx TO",
     "show 4 | Helvetica [12 0 0 -12] 0 0 placement 1 (); newpath", kVXOk},
    {"AnEmptyStringLiesOnItsSideAsACharacterWould", "7 Tr 1 Tv 1 TV () Tx TO",
     "show 4 | Helvetica [0 -12 -12 0] 0 0 placement 1 (); newpath", kVXOk},
};
INSTANTIATE_TEST_SUITE_P(Columns, ClipText, testing::ValuesIn(kColumns), CaseName());

class JapaneseClips : public testing::TestWithParam<TextCase>
{
};

TEST_P(JapaneseClips, MakeTheseCalls)
{
    ExpectCalls(ReencodedDocument(5, 1, GetParam().lines), GetParam());
}

// A double-byte character is 6 points wide here: what the host says of code 0x81.
const TextCase kJapanese[] = {
    {"OneRecordHasItAll", "7 Tr (\\202\\240A) Tx TO",
     "show 4 | Helvetica style  [12 0 0 -12] 10 20 placement 1 (\\202\\240A); newpath", kVXOk},
    {"TheFirstCharacterSetsTheStep", "7 Tr 1 Tc (\\202\\240AB) Tx TO",
     "show 4 | Helvetica [12 0 0 -12] 10 20 placement 1 (\\202\\240) | "
     "Helvetica [12 0 0 -12] 17 20 placement 1 (AB); newpath",
     kVXOk},
    {"ALastByteOfItsOwnTakesTheTerminator", "7 Tr 1 Tc (\\202\\240A) Tx TO",
     "show 4 | Helvetica [12 0 0 -12] 10 20 placement 1 (\\202\\240) | "
     "Helvetica [12 0 0 -12] 17 20 placement 1 (A\\000); newpath",
     kVXOk},
    {"ARomanFirstByteSetsItToo", "7 Tr 1 Tc (A\\202\\240) Tx TO",
     "show 4 | Helvetica [12 0 0 -12] 10 20 placement 1 (A) | Helvetica [12 0 0 -12] 17 20 placement 1 "
     "(\\202) | "
     "Helvetica [12 0 0 -12] 24 20 placement 1 (\\240); newpath",
     kVXOk},
    {"InAColumnEveryRecordIsUpright", "7 Tr 1 Tv 1 TV (\\202\\240AB) Tx TO",
     "show 4 | Helvetica [12 0 0 -12] 7 9.5 placement 17 (\\202\\240) | "
     "Helvetica [12 0 0 -12] 7 -2.5 placement 17 (AB); newpath",
     kVXOk},
    // The terminator is its first byte, and that is a character of one byte in every script.
    {"InAColumnAnEmptyStringLiesOnItsSide", "7 Tr 1 Tv 1 TV () Tx TO",
     "show 4 | Helvetica [0 -12 -12 0] 0 0 placement 1 (); newpath", kVXOk},
};
INSTANTIATE_TEST_SUITE_P(TextRecords, JapaneseClips, testing::ValuesIn(kJapanese), CaseName());

// Setup 3, string buffer, fonts, 4 + 2 suffixes and operands come before the first string.
constexpr int kBlocksBeforeText = 12;

TEST(TextRecordsTest, WithoutMemoryForAStringTheChainIsAsItWas)
{
    RecordingHost host;
    host.failAllocation = kBlocksBeforeText + 2;
    EXPECT_EQ(host.Parse(TextDocument("7 Tr (A) Tx (B) Tx TO")), kVXBadFormat);
    EXPECT_EQ(host.Joined(), "");
    EXPECT_EQ(host.liveBlocks, 0);
}

// A line of the older syntax goes on after its show has failed, so that the clip can be seen.
TEST(TextRecordsTest, WithoutMemoryForACharacterTheClipEndsThere)
{
    RecordingHost host;
    host.failAllocation = kBlocksBeforeText + 4; // the string, its widths, the record of B, and not that of C
    EXPECT_EQ(host.Parse(TextDocument("7 Tr 1 Tc (ABC) t (D) t TO")), kVXOk);
    EXPECT_EQ(host.Joined(), "show 4 | Helvetica [12 0 0 -12] 10 20 placement 1 (A) | "
                             "Helvetica [12 0 0 -12] 17 20 placement 1 (B) | Helvetica [12 0 0 -12] 10 20 "
                             "placement 1 (D); newpath");
    EXPECT_EQ(host.liveBlocks, 0);
}

TEST(TextRecordsTest, WithoutMemoryNothingIsPaintedEither)
{
    RecordingHost host;
    host.failAllocation = kBlocksBeforeText + 1;
    EXPECT_EQ(host.Parse(TextDocument("4 Tr (A) Tx")), kVXBadFormat);
    EXPECT_EQ(host.Joined(), "");
}

struct SizeCase {
    const char *name;
    uint8_t byte;
    int16_t script;
    int32_t size;
};

class CharSizes : public testing::TestWithParam<SizeCase>
{
};

TEST_P(CharSizes, FollowFromTheFirstByte)
{
    EXPECT_EQ(vx::GetCharSize(GetParam().byte, GetParam().script), GetParam().size);
}

const SizeCase kSizes[] = {
    {"RomanIsSingle", 0x81, 0, 1}, {"JapaneseBefore", 0x80, 1, 1}, {"JapaneseFirst", 0x81, 1, 2},
    {"JapaneseKana", 0xA0, 1, 1},  {"JapaneseLast", 0xFC, 1, 2},   {"JapaneseBehind", 0xFD, 1, 1},
    {"ChineseFirst", 0xA1, 2, 2},  {"ChineseLast", 0xF9, 2, 2},    {"ChineseBehind", 0xFA, 2, 1},
    {"KoreanLast", 0xFE, 3, 2},    {"KoreanBehind", 0xFF, 3, 1},   {"UnknownIsSingle", 0xB0, 4, 1},
};
INSTANTIATE_TEST_SUITE_P(TextRecords, CharSizes, testing::ValuesIn(kSizes), CaseName());

} // namespace
