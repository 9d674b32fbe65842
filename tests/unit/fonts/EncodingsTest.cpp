// Scripts, first bytes of double-byte text, and the vertical forms of Japanese on a PC and on Macs.
#include "plugin/fonts/Encodings.h"

#include "host/toolbox/HostContext.h"
#include "plugin/text/TextObject.h"
#include "tests/support/CaseName.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

namespace
{

using namespace vx;
using namespace vxtest;

struct ScriptCase {
    const char *name;
    int32_t macScript;
    int16_t script;
};

class Scripts : public testing::TestWithParam<ScriptCase>
{
};

TEST_P(Scripts, FollowFromTheMacScript)
{
    EXPECT_EQ(MacScript2VXParserScript(GetParam().macScript), GetParam().script);

    vxhost::HostContext host;
    host.systemScript = GetParam().macScript;
    const vxhost::HostScope scope(&host);
    EXPECT_EQ(GetDefaultScript(), GetParam().script);
}

const ScriptCase kScripts[] = {
    {"RomanIsRoman", 0, kScriptRoman},
    {"Japanese", 1, kScriptJapanese},
    {"TraditionalChinese", 2, kScriptTraditionalChinese},
    {"Korean", 3, kScriptKorean},
    {"OthersAreRoman", 4, kScriptRoman},
    {"SimplifiedChineseIsRoman", 25, kScriptRoman},
    {"NegativeOnesAreRoman", -1, kScriptRoman},
};
INSTANTIATE_TEST_SUITE_P(Encodings, Scripts, testing::ValuesIn(kScripts), CaseName());

TEST(IsDBCSFontTest, IsTrueForThreeScripts)
{
    for (const int script : {1, 2, 3})
        EXPECT_TRUE(IsDBCSFont(static_cast<int16_t>(script))) << script;
    for (const int script : {-1, 0, 4, 25})
        EXPECT_FALSE(IsDBCSFont(static_cast<int16_t>(script))) << script;
}

struct FirstByteCase {
    const char *name;
    int16_t script;
    // The ranges of first bytes; an unused one is turned round.
    int first, last, first2, last2;
};

class FirstBytes : public testing::TestWithParam<FirstByteCase>
{
};

TEST_P(FirstBytes, AreThoseOfTheScript)
{
    const FirstByteCase &ranges = GetParam();
    for (int byte = 0; byte < 256; ++byte) {
        const bool expected =
            (byte >= ranges.first && byte <= ranges.last) || (byte >= ranges.first2 && byte <= ranges.last2);
        EXPECT_EQ(IsDBCSFirstByte(static_cast<uint8_t>(byte), ranges.script), expected) << byte;
    }
}

const FirstByteCase kFirstBytes[] = {
    {"RomanHasNone", kScriptRoman, 1, 0, 1, 0},
    {"Japanese", kScriptJapanese, 0x81, 0x9F, 0xE0, 0xFC},
    {"TraditionalChinese", kScriptTraditionalChinese, 0xA1, 0xF9, 1, 0},
    {"Korean", kScriptKorean, 0xA1, 0xFE, 1, 0},
    {"OthersHaveNone", 4, 1, 0, 1, 0},
    {"NegativeOnesHaveNone", -1, 1, 0, 1, 0},
};
INSTANTIATE_TEST_SUITE_P(Encodings, FirstBytes, testing::ValuesIn(kFirstBytes), CaseName());

TEST(GetDBCSWidthTest, IsKnownForJapaneseAlone)
{
    TextAndFontState state = {};
    state.doubleByteWidth = 0x18000;
    EXPECT_EQ(GetDBCSWidth(&state, kScriptJapanese), 0x18000);
    for (const int script : {0, 2, 3, 4, -1})
        EXPECT_EQ(GetDBCSWidth(&state, static_cast<int16_t>(script)), 0) << script;
}

using ConvertProc = void (*)(uint8_t *bytes, int32_t length, int16_t script);

struct VerticalCase {
    const char *name;
    ConvertProc convert;
    int16_t script;
    std::string bytes, converted;
};

class VerticalForms : public testing::TestWithParam<VerticalCase>
{
};

TEST_P(VerticalForms, AreRewrittenInPlace)
{
    std::string bytes = GetParam().bytes;
    GetParam().convert(reinterpret_cast<uint8_t *>(bytes.data()), static_cast<int32_t>(bytes.size()),
                       GetParam().script);
    EXPECT_EQ(bytes, GetParam().converted);
}

const VerticalCase kVerticalForms[] = {
    {"PcToMac", PCToMacVerticalEncoding, 1, "\x81\x40\x82\x40\x83\x40\x87\x40",
     "\xEB\x40\xEC\x40\xED\x40\xEE\x40"},
    {"MacToPc", MacToPCVerticalEncoding, 1, "\xEB\x40\xEC\x40\xED\x40\xEE\x40",
     "\x81\x40\x82\x40\x83\x40\x87\x40"},
    {"PcToMacKeepsOtherRows", PCToMacVerticalEncoding, 1, "\x84\x40\x85\x40\x86\x40\x88\x40\xE0\x40\xEB\x40",
     "\x84\x40\x85\x40\x86\x40\x88\x40\xE0\x40\xEB\x40"},
    {"MacToPcKeepsOtherRows", MacToPCVerticalEncoding, 1, "\x81\x40\xEA\x40\xEF\x40",
     "\x81\x40\xEA\x40\xEF\x40"},
    {"SecondBytesAreNoFirstOnes", PCToMacVerticalEncoding, 1, "\x84\x81\x81\x82", "\x84\x81\xEB\x82"},
    {"SingleBytesAreSteppedOver", PCToMacVerticalEncoding, 1, "A\x81\x40\xB1\x81\x40",
     "A\xEB\x40\xB1\xEB\x40"},
    {"ALastFirstByteIsRewritten", PCToMacVerticalEncoding, 1, "A\x81", "A\xEB"},
    {"NothingIsNothing", PCToMacVerticalEncoding, 1, "", ""},
    {"ChineseStays", PCToMacVerticalEncoding, 2, "\xA1\x40\x81\x40", "\xA1\x40\x81\x40"},
    {"RomanStays", MacToPCVerticalEncoding, 0, "\xEB\x40", "\xEB\x40"},
    {"UnknownScriptsStay", Mac3JToMac5JVerticalEncoding, 4, "\xEB\x43", "\xEB\x43"},
    {"OlderMacKeepsOtherRows", Mac3JToMac5JVerticalEncoding, 1, "\x81\x43\xEA\x43\xEF\x43",
     "\x81\x43\xEA\x43\xEF\x43"},
    {"OlderMacStepsOverSingleBytes", Mac3JToMac5JVerticalEncoding, 1,
     "A\xEB\x43"
     "A\xEB\x41",
     "A\x81\x43"
     "A\xEB\x41"},
    {"OlderMacCutOffAtTheEnd", Mac3JToMac5JVerticalEncoding, 1, "\xEB\x41\xEB", "\xEB\x41\x81"},
};
INSTANTIATE_TEST_SUITE_P(Encodings, VerticalForms, testing::ValuesIn(kVerticalForms), CaseName());

struct RowCase {
    const char *name;
    uint8_t first, horizontal;
    std::initializer_list<int> kept;
};

class OlderMacRows : public testing::TestWithParam<RowCase>
{
};

TEST_P(OlderMacRows, KeepWhatHasAVerticalForm)
{
    for (int second = 0; second < 256; ++second) {
        bool kept = false;
        for (const int byte : GetParam().kept)
            kept = kept || byte == second;
        uint8_t bytes[] = {GetParam().first, static_cast<uint8_t>(second)};
        Mac3JToMac5JVerticalEncoding(bytes, 2, kScriptJapanese);
        EXPECT_EQ(bytes[0], kept ? GetParam().first : GetParam().horizontal) << second;
        EXPECT_EQ(bytes[1], second);
    }
}

const RowCase kRows[] = {
    {"Punctuation", 0xEB, 0x81, {0x41, 0x42, 0x50, 0x51, 0x5B, 0x5C, 0x5D, 0x60, 0x61, 0x62, 0x63,
                                 0x64, 0x69, 0x6A, 0x6B, 0x6C, 0x6D, 0x6E, 0x6F, 0x70, 0x71, 0x72,
                                 0x73, 0x74, 0x75, 0x76, 0x77, 0x78, 0x79, 0x7A, 0x81}},
    {"Hiragana", 0xEC, 0x82, {0x9F, 0xA1, 0xA3, 0xA5, 0xA7, 0xC1, 0xE1, 0xE3, 0xE5, 0xEC}},
    {"Katakana", 0xED, 0x83, {0x40, 0x42, 0x44, 0x46, 0x48, 0x62, 0x83, 0x85, 0x87, 0x8E, 0x95, 0x96}},
    {"Symbols", 0xEE, 0x87, {}},
};
INSTANTIATE_TEST_SUITE_P(Encodings, OlderMacRows, testing::ValuesIn(kRows), CaseName());

} // namespace
