// Which strings are converted before they are shown, and to what.
#include "plugin/text/StringEncoding.h"

#include "tests/support/CaseName.h"
#include "tests/unit/body/ParsingContext.h"
#include "tests/unit/text/TextDocument.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace
{

using namespace vx;
using namespace vxtest;

struct ConversionCase {
    const char *name;
    FileVersion version;
    TargetKind target;
    int script; // of the re-encoded font, or -1 for none
    bool vertical;
    const char *bytes, *converted;
};

class StringConversions : public ParsingContext, public testing::WithParamInterface<ConversionCase>
{
};

TEST_P(StringConversions, FollowFromSourceTargetAndScript)
{
    const ConversionCase &expected = GetParam();
    InitFontEncodingObject(&encoding, expected.version);
    encoding.targetKind = expected.target;
    if (expected.script >= 0) {
        ASSERT_EQ(Interpret("/_Font /Font 0 " + std::to_string(expected.script) + " 0 TZ"), kOk);
    }
    strcpy(context.text.fontName, "Font");
    context.text.object.vertical = expected.vertical ? 1 : 0;
    std::string bytes = expected.bytes;
    PrepareStringTobeRasterize(&context, reinterpret_cast<uint8_t *>(bytes.data()),
                               static_cast<int32_t>(bytes.size()), &context.text.object);
    EXPECT_EQ(bytes, expected.converted);
}

// 0xE9 is e with acute on a PC, 0x8E on a Mac. The pair EB 43 has no vertical form in the newer Mac encoding.
const ConversionCase kConversions[] = {
    {"PcToMac", 4, kTargetMac, 0, false, "caf\xE9", "caf\x8E"},
    {"MacToPc", 5, kTargetPC, 0, false, "caf\x8E", "caf\xE9"},
    {"MacToMac", 5, kTargetMac, 0, false, "caf\x8E\xE9", "caf\x8E\xE9"},
    {"PcToPc", 4, kTargetPC, 0, false, "caf\xE9", "caf\xE9"},
    {"FromAnUnknownPlatform", 6, kTargetMac, 0, false, "caf\xE9", "caf\xE9"},
    {"AFontThatIsNotReencoded", 4, kTargetMac, -1, false, "caf\xE9", "caf\xE9"},
    {"MacJapanese", 5, kTargetMac, 1, false, "\xEB\x41\xEB\x43", "\xEB\x41\x81\x43"},
    {"MacChinese", 5, kTargetMac, 2, false, "\xEB\x41\xEB\x43", "\xEB\x41\xEB\x43"},
    {"PcJapaneseInLines", 4, kTargetMac, 1, false, "\x81\x41\x81\x43", "\x81\x41\x81\x43"},
    // A byte goes to the vertical row and, where there is no vertical form, back again.
    {"PcJapaneseInColumns", 4, kTargetMac, 1, true, "\x81\x41\x81\x43", "\xEB\x41\x81\x43"},
    {"PcKoreanInColumns", 4, kTargetMac, 3, true, "\x81\x41\x81\x43", "\x81\x41\x81\x43"},
    {"MacJapaneseForAPc", 5, kTargetPC, 1, false, "\xEB\x41\x82\xA0", "\x81\x41\x82\xA0"},
    {"AScriptThatDoesNotExist", 4, kTargetMac, 7, true, "caf\xE9\x81\x41", "caf\xE9\x81\x41"},
};
INSTANTIATE_TEST_SUITE_P(StringEncoding, StringConversions, testing::ValuesIn(kConversions), CaseName());

TEST_F(ParsingContext, WithoutAnEncodingObjectNothingIsConverted)
{
    context.encodingSetup = nullptr;
    uint8_t bytes[] = {0xE9, 0};
    PrepareStringTobeRasterize(&context, bytes, 1, &context.text.object);
    EXPECT_EQ(bytes[0], 0xE9);
}

struct TranslationCase {
    const char *name;
    uint8_t pc, mac;
};

class Translations : public testing::TestWithParam<TranslationCase>
{
};

TEST_P(Translations, GoFromPcToMac)
{
    FontEncodingObject object = {};
    InitFontEncodingObject(&object, 4);
    uint8_t bytes[] = {GetParam().pc, 'x'};
    TranslateStringtoDefaultEncoding(bytes, 1, object.pcTable, object.macTable);
    EXPECT_EQ(bytes[0], GetParam().mac);
    EXPECT_EQ(bytes[1], 0) << "a terminator follows";
}

const TranslationCase kTranslations[] = {
    {"Ascii", 'A', 'A'},
    {"Adieresis", 0xC4, 0x80},
    {"SterlingIsAQuestionMark", 0xA3, 0x3F},
    {"QuestionMark", 0x3F, 0x3F},
    {"Delete", 0x7F, 0xA5},
    {"EthHasNoMacCode", 0xD0, 0xFF},
    {"TheEuroIsNoCharacter", 0x80, 0x80},
    {"TheNewBulletIsNone", 0x95, 0x95},
    {"ZcaronIsNone", 0x8E, 0x8E},
    {"TheNoBreakSpaceIsNone", 0xA0, 0xA0},
    {"TabsStay", 9, 9},
    {"LineFeedsStay", 10, 10},
    {"CarriageReturnsStay", 13, 13},
    {"NulStays", 0, 0},
};
INSTANTIATE_TEST_SUITE_P(StringEncoding, Translations, testing::ValuesIn(kTranslations), CaseName());

TEST(PullIndexTest, IsTheFirstRowOfAByte)
{
    FontEncodingObject object = {};
    InitFontEncodingObject(&object, 4);
    EXPECT_EQ(Pull_Index('A', object.macTable), 1);
    EXPECT_EQ(Pull_Index(0xA3, object.pcTable), 203);
    EXPECT_EQ(Pull_Index(0x3F, object.macTable), Pull_Index(0x3F, object.pcTable))
        << "not the row of sterling";
    EXPECT_EQ(Pull_Index(0xFF, object.pcTable), 224) << "ydieresis, not a row without a code";
    EXPECT_EQ(Pull_Index(1, object.pcTable), -1);
    object.pcTable[259] = 1;
    EXPECT_EQ(Pull_Index(1, object.pcTable), 259);
}

class ShownStrings : public testing::TestWithParam<TextCase>
{
};

TEST_P(ShownStrings, AreConvertedInPcDocuments)
{
    ExpectCalls(ReencodedDocument(4, 0, GetParam().lines), GetParam());
}

const TextCase kShown[] = {
    {"ThePoundSignIsAQuestionMark", "(\\243) Tx", "show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (?)",
     kVXOk},
    {"AccentsAreTheMacs", "(\\351t\\351) Tx",
     "show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (\\216t\\216)", kVXOk},
    {"AnotherFontIsNotConverted", "/_Courier 12 Tf (\\351) Tx",
     "show 1 | Courier [12 0 0 -12] 10 20 placement 1 (\\351)", kVXOk},
    {"HexStringsAreConverted", "<E9> Tx", "show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (\\216)", kVXOk},
    {"ClipsAreConverted", "7 Tr (\\351) Tx TO",
     "show 4 | Helvetica style  [12 0 0 -12] 10 20 placement 1 (\\216); newpath", kVXOk},
};
INSTANTIATE_TEST_SUITE_P(StringEncoding, ShownStrings, testing::ValuesIn(kShown), CaseName());

class JapaneseStrings : public testing::TestWithParam<TextCase>
{
};

TEST_P(JapaneseStrings, AreConvertedAndMeasured)
{
    RecordingHost host;
    host.widthOf = [](int16_t, int16_t character) { return character == 0x81 ? 0xC000 : 0x8000; };
    EXPECT_EQ(host.Parse(ReencodedDocument(5, 1, GetParam().lines)), GetParam().result);
    EXPECT_EQ(host.Joined(), GetParam().calls);
}

// A double-byte character is 9 points wide, another one 6.
const TextCase kJapanese[] = {
    {"WholeStringsMeasureEachCharacter", "(\\202\\240A) Tx (B) Tx",
     "show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (\\202\\240A); "
     "show 1 | Helvetica [12 0 0 -12] 25 20 placement 1 (B)",
     kVXOk},
    {"PaintedCharactersHaveTheirOwnSize", "1 Tc (\\202\\240AB) Tx",
     "show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (\\202\\240) | "
     "Helvetica [12 0 0 -12] 20 20 placement 1 (A) | Helvetica [12 0 0 -12] 27 20 placement 1 (B)",
     kVXOk},
    {"AFirstByteAtTheEndTakesTheTerminator", "1 Tc (A\\202) Tx",
     "show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (A) | "
     "Helvetica [12 0 0 -12] 17 20 placement 1 (\\202\\000)",
     kVXOk},
    // Half of 9 to the left; a Roman character lies on its side, 4.5 to the left, and is 6 long.
    {"ColumnsMixUprightAndSideways", "1 Tv 1 TV (\\202\\240A\\202\\240) Tx",
     "show 1 | Helvetica [12 0 0 -12] 5.5 9.5 placement 17 (\\202\\240) | "
     "Helvetica [0 -12 -12 0] 5.5 8 placement 1 (A) | "
     "Helvetica [12 0 0 -12] 5.5 -8.5 placement 17 (\\202\\240)",
     kVXOk},
    {"OlderVerticalFormsBecomeNewer", "(\\353\\101\\353\\103) Tx",
     "show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (\\353A\\201C)", kVXOk},
};
INSTANTIATE_TEST_SUITE_P(StringEncoding, JapaneseStrings, testing::ValuesIn(kJapanese), CaseName());

TEST(JapaneseStringsTest, AreOneEmWideWhereTheHostDoesNotKnow)
{
    RecordingHost host;
    host.widthOf = [](int16_t, int16_t) { return 0; };
    EXPECT_EQ(host.Parse(ReencodedDocument(5, 1, "(\\202\\240) Tx (B) Tx")), kVXOk);
    EXPECT_EQ(host.Joined(), "show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (\\202\\240); "
                             "show 1 | Helvetica [12 0 0 -12] 22 20 placement 1 (B)");
}

TEST(KoreanStringsTest, AdvanceByTheirSpacingAlone)
{
    RecordingHost host;
    EXPECT_EQ(host.Parse(ReencodedDocument(5, 3, "1 Tc (\\260\\241\\260\\242) Tx")), kVXOk);
    EXPECT_EQ(host.Joined(), "show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (\\260\\241) | "
                             "Helvetica [12 0 0 -12] 11 20 placement 1 (\\260\\242)");
}

TEST(SystemScriptTest, CountsForFontsThatAreNotReencoded)
{
    RecordingHost host;
    host.systemScript = 1;
    EXPECT_EQ(host.Parse(TextDocument("1 Tc (\\202\\240A) Tx")), kVXOk);
    EXPECT_EQ(host.Joined(), "show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (\\202\\240) | "
                             "Helvetica [12 0 0 -12] 17 20 placement 1 (A)");
}

} // namespace
