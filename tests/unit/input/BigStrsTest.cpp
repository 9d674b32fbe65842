// Views of text: classes, words, prefixes and the two number conversions.
#include "plugin/input/BigStrs.h"

#include "plugin/input/Fixed.h"
#include "tests/support/CaseName.h"
#include "tests/unit/input/Views.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>

namespace
{

using namespace vx;
using namespace vxtest;

TEST(CharacterClasses, WhiteSpaceIsBlankAndNineToThirteen)
{
    for (int byte = 0; byte < 256; ++byte)
        EXPECT_EQ(IsWhiteSpace(static_cast<uint8_t>(byte)), byte == 32 || (byte >= 9 && byte <= 13)) << byte;
}

TEST(CharacterClasses, LineEndsAreCarriageReturnAndLineFeed)
{
    for (int byte = 0; byte < 256; ++byte)
        EXPECT_EQ(IsLineEnd(static_cast<uint8_t>(byte)), byte == 10 || byte == 13) << byte;
}

TEST(Emptiness, IsALengthBelowOne)
{
    const uint8_t text[] = "ab";
    for (const int32_t length : {0, -1, INT32_MIN}) {
        BigString string = {text, length};
        EXPECT_TRUE(IsStringEmpty(&string));
        EXPECT_TRUE(AllWhiteSpace(&string));
    }
    const BigString string = {text, 1};
    EXPECT_FALSE(IsStringEmpty(&string));
}

TEST(Trimming, FirstCharacterGoesAlone)
{
    BigString string = View("ab");
    TrimFirstCharacter(&string);
    EXPECT_EQ(Text(string), "b");
    TrimFirstCharacter(&string);
    EXPECT_EQ(string.length, 0);
    const uint8_t *end = string.text;
    TrimFirstCharacter(&string);
    EXPECT_EQ(string.length, 0);
    EXPECT_EQ(string.text, end);
}

TEST(Trimming, ToEndPointsPastTheLastByte)
{
    const BigString whole = View("abc\n");
    BigString string = whole;
    TrimToEnd(&string);
    EXPECT_EQ(string.text, whole.text + 4);
    EXPECT_EQ(string.length, 0);
    TrimToEnd(&string);
    EXPECT_EQ(string.text, whole.text + 4);
}

struct SkipCase {
    const char *name, *text, *rest;
};

class SkippingWhiteSpace : public testing::TestWithParam<SkipCase>
{
};

TEST_P(SkippingWhiteSpace, LeavesTheRest)
{
    const BigString string = View(GetParam().text);
    BigString rest = {};
    const uint8_t *start = SkipWhiteSpace(&string, &rest);
    EXPECT_EQ(start, rest.text);
    EXPECT_EQ(Text(rest), GetParam().rest);
    EXPECT_EQ(rest.text + rest.length, string.text + string.length);

    BigString same = string;
    (void)SkipWhiteSpace(&same, &same); // only the remainder written over its source matters here
    EXPECT_EQ(Text(same), GetParam().rest);
}

const SkipCase kSkips[] = {
    {"NothingIsSkippedFromAWord", "ab ", "ab "},
    {"EveryKindIsSkipped", " \t\n\v\f\rab", "ab"},
    {"OnlyWhiteSpaceLeavesNothing", " \r\n", ""},
    {"EmptyStaysEmpty", "", ""},
};
INSTANTIATE_TEST_SUITE_P(BigStrs, SkippingWhiteSpace, testing::ValuesIn(kSkips), CaseName());

struct WordCase {
    const char *name, *text;
    bool found;
    const char *word, *rest;
};

class SplittingTheFirstWord : public testing::TestWithParam<WordCase>
{
};

TEST_P(SplittingTheFirstWord, KeepsTheSeparatorInTheRest)
{
    BigString string = View(GetParam().text);
    BigString word = {};
    ASSERT_EQ(SplitFirstWord(&string, &word, &string), GetParam().found);
    if (GetParam().found) {
        EXPECT_EQ(Text(word), GetParam().word);
        EXPECT_EQ(Text(string), GetParam().rest);
    }
}

const WordCase kWords[] = {
    {"BlanksAloneHoldNoWord", " \t ", false, "", ""},
    {"NothingHoldsNoWord", "", false, "", ""},
    {"TheSeparatorStaysWithTheRest", "ab cd", true, "ab", " cd"},
    {"LeadingWhiteSpaceIsDropped", " \tab\tcd ", true, "ab", "\tcd "},
    {"AWordMayReachTheEnd", " ab", true, "ab", ""},
    {"ALineEndEndsAWord", "ab\r\n", true, "ab", "\r\n"},
    {"DelimitersOfTokensDoNotEndAWord", "a/(b)% c", true, "a/(b)%", " c"},
};
INSTANTIATE_TEST_SUITE_P(BigStrs, SplittingTheFirstWord, testing::ValuesIn(kWords), CaseName());

TEST(AllWhiteSpaceTest, AWordAnywhereMakesItFalse)
{
    for (const char *text : {"", " ", "\r\n", " \t\v\f"}) {
        const BigString string = View(text);
        EXPECT_TRUE(AllWhiteSpace(&string)) << text;
    }
    for (const char *text : {"a", " a", "a ", " \x01"}) {
        const BigString string = View(text);
        EXPECT_FALSE(AllWhiteSpace(&string)) << text;
    }
}

struct PrefixCase {
    const char *name, *prefix, *text;
    bool matches;
    const char *rest;
};

class Prefixes : public testing::TestWithParam<PrefixCase>
{
};

TEST_P(Prefixes, MatchByteForByte)
{
    const BigString string = View(GetParam().text);
    BigString rest = View("untouched");
    EXPECT_EQ(TestPrefix(GetParam().prefix, &string, &rest), GetParam().matches);
    EXPECT_EQ(Text(rest), GetParam().matches ? GetParam().rest : "untouched");
}

const PrefixCase kPrefixes[] = {
    {"TheLineEndIsTheRest", "%%EOF", "%%EOF\n", true, "\n"},
    {"AShorterTextDoesNotMatch", "%%EOF", "%%EO", false, ""},
    {"TheWholeTextLeavesNothing", "%%EOF", "%%EOF", true, ""},
    {"CaseMatters", "%%EOF", "%%Eof\n", false, ""},
    {"BlanksMatter", "%%EOF", " %%EOF", false, ""},
    {"AnEmptyTextDoesNotMatch", "%", "", false, ""},
    {"AnEmptyPrefixMatchesAnything", "", "ab", true, "ab"},
};
INSTANTIATE_TEST_SUITE_P(BigStrs, Prefixes, testing::ValuesIn(kPrefixes), CaseName());

TEST(PrefixesTest, TheRestMayBeTheStringItself)
{
    BigString string = View("%%EOF \n");
    EXPECT_TRUE(TestPrefix("%%EOF", &string, &string));
    EXPECT_EQ(Text(string), " \n");
}

struct PartialPrefixCase {
    const char *name, *prefix, *text;
    bool matches;
};

class PartialPrefixes : public testing::TestWithParam<PartialPrefixCase>
{
};

TEST_P(PartialPrefixes, PassOverBlanksAndTabs)
{
    const BigString string = View(GetParam().text);
    EXPECT_EQ(PartialTestPrefix(GetParam().prefix, &string), GetParam().matches);
}

const PartialPrefixCase kPartialPrefixes[] = {
    {"BlanksMayStandInsideTheText", "%VX5_FileFormat", "%VX5_File Format 3", true},
    {"BlanksMayFollowThePercentSign", "%VX5_FileFormat", "% \tVX5_FileFormat 3", true},
    {"BlanksMayComeFirst", "%VX5_FileFormat", "  %VX5_FileFormat", true},
    {"BlanksOfThePrefixMayBeMissing", "%%DocumentProcSets: Tavro_Vellumcraft",
     "%%DocumentProcSets:Tavro_Vellumcraft_X", true},
    {"TheTextMayEndWithThePrefix", "%VX5_FileFormat", "%VX5_FileFormat", true},
    {"AShorterTextDoesNotMatch", "%VX5_FileFormat", "%VX5_FileForm", false},
    {"AShorterTextWithTrailingBlanksDoesNotMatch", "%VX5_FileFormat", "%VX5_FileForm  ", false},
    {"LineEndsAreNotPassedOver", "%VX5_FileFormat", "%VX5_File\nFormat", false},
    {"CaseMatters", "%VX5_FileFormat", "%vx5_FileFormat", false},
    {"AnEmptyTextMatchesOnlyAnEmptyPrefix", "%", "", false},
    {"AnEmptyPrefixMatchesAnEmptyText", "", "", true},
    {"AnEmptyPrefixMatchesAnything", "", "ab", true},
    // The text is used up first, and then the prefix still holds its blank.
    {"ATextWithoutThePrefixsLastBlankDoesNotMatch", "ab ", "ab", false},
    {"APrefixsLastBlankMayMeetOtherText", "ab ", "abc", true},
};
INSTANTIATE_TEST_SUITE_P(BigStrs, PartialPrefixes, testing::ValuesIn(kPartialPrefixes), CaseName());

struct NumberCase {
    const char *name, *text;
    bool accepted;
    int32_t value; // when not accepted: what the output holds after the failure
};

constexpr int32_t kUntouched = 0x55AA55AA;

class Integers : public testing::TestWithParam<NumberCase>
{
};

TEST_P(Integers, ConvertTo)
{
    const BigString string = View(GetParam().text);
    int32_t value = kUntouched;
    EXPECT_EQ(BigStringAsInteger(&string, &value), GetParam().accepted);
    EXPECT_EQ(value, GetParam().value);
}

const NumberCase kIntegers[] = {
    {"Zero", "0", true, 0},
    {"NegativeZeroIsZero", "-0", true, 0},
    {"APlusSignIsAccepted", "+7", true, 7},
    {"LeadingZerosCountForNothing", "-000000000000012", true, -12},
    {"TheLimitOfTheQuickPath", "214748359", true, 214748359},
    {"TheLargest", "2147483647", true, INT32_MAX},
    {"TheLastDigitOverflows", "2147483648", true, INT32_MAX},
    {"TheLastDigitOverflowsByNine", "2147483649", true, INT32_MAX},
    {"ATenthDigitOverflows", "2147483650", true, INT32_MAX},
    {"JustBelowTheLargest", "2147483640", true, 2147483640},
    {"TheSmallestButOne", "-2147483647", true, -2147483647},
    {"TheSmallest", "-2147483648", true, INT32_MIN},
    {"BelowTheSmallest", "-2147483649", true, INT32_MIN},
    {"ElevenNinesSaturate", "99999999999", true, INT32_MAX},
    {"MinusElevenNinesSaturate", "-99999999999", true, INT32_MIN},
    {"FarTooManyDigitsSaturate", "1000000000000000000000000000000", true, INT32_MAX},
    {"TrailingTextFails", "12a", false, kUntouched},
    {"ATrailingBlankFails", "12 ", false, kUntouched},
    {"ALeadingBlankFails", " 12", false, kUntouched},
    {"AFractionFails", "12.0", false, kUntouched},
    {"ALonePlusFails", "+", false, kUntouched},
    {"ALoneMinusFails", "-", false, kUntouched},
    {"TwoSignsFail", "+-1", false, kUntouched},
    {"TheEmptyTextFails", "", false, kUntouched},
    // The saturated value is stored at once, before the rest is seen to be wrong.
    {"TrailingTextAfterAnOverflowFailsButStores", "2147483648a", false, INT32_MAX},
    {"TrailingTextAfterANegativeOverflowFailsButStores", "-99999999999.", false, INT32_MIN},
};
INSTANTIATE_TEST_SUITE_P(BigStrs, Integers, testing::ValuesIn(kIntegers), CaseName());

class Fixeds : public testing::TestWithParam<NumberCase>
{
};

TEST_P(Fixeds, ConvertTo)
{
    const BigString string = View(GetParam().text);
    Fixed value = kUntouched;
    EXPECT_EQ(BigStringAsFixed(&string, &value), GetParam().accepted);
    EXPECT_EQ(value, GetParam().value);
}

const NumberCase kFixeds[] = {
    {"AnIntegerIsShifted", "12", true, 12 << 16},
    {"TheLargestInteger", "32767", true, 0x7FFF0000},
    {"AboveTheLargestSaturates", "32768", true, INT32_MAX},
    {"AboveTheLargestSaturatesWithItsFraction", "32768.25", true, INT32_MAX},
    {"FarAboveTheLargestSaturates", "99999999999999999999.5", true, INT32_MAX},
    {"BelowTheSmallestSaturates", "-40000.5", true, INT32_MIN},
    {"MinusTheLargestInteger", "-32767", true, -0x7FFF0000},
    {"TheSmallestSaturates", "-32768", true, INT32_MIN},
    {"AHalf", "0.5", true, 0x8000},
    {"MinusAHalf", "-0.5", true, -0x8000},
    {"APlusSignIsAccepted", "+1.25", true, 0x14000},
    {"APointMayComeFirst", ".5", true, 0x8000},
    {"APointMayComeLast", "5.", true, 5 << 16},
    {"ASignMayPrecedeThePoint", "-.25", true, -0x4000},
    {"ZeroWithAFraction", "0.000", true, 0},
    // 0.1 is 6553.6 parts in 65536.
    {"QuotientsRoundToNearest", "0.1", true, 6554},
    // A third is 21845.33 parts.
    {"QuotientsRoundDownToo", "0.3333333", true, 21845},
    // 1012345678 / 1000000000; the value is then past the limit, so that the last digit is dropped.
    // 0.012345678 is 809.09 parts.
    {"TenDigitsOfAFractionKeepNine", "1.0123456789", true, 0x10000 + 809},
    // 327679999 / 10000: the fifth digit finds the value past the limit.
    // 32767.9999 lies 6.55 parts below 32768.
    {"PrecisionIsDroppedNotRounded", "32767.99999", true, 0x7FFFFFF9},
    // 214748362 still takes a digit: 0.83629 is 54807.1 parts, and 21474 * 65536 is 1407320064.
    {"ADigitIsTakenAtTheLimitItself", "21474.83629", true, 1407320064 + 54807},
    // 214748363 does not: 0.8363 is 54807.8 parts, where 0.83639 would be 54813.7.
    {"ADigitIsDroppedPastTheLimit", "21474.83639", true, 1407320064 + 54808},
    // Zeros after the point count as digits taken, and the divisor wraps as an unsigned 32-bit number:
    // 10^10 leaves 1410065408.
    {"ADivisorPastThirtyTwoBitsWraps", "0.0000000001", true, 0},
    // 10^12 leaves 3567587328, which is -727379968 as a signed number; 123456789 over it is -11123.3 parts.
    {"AWrappedDivisorMayBeNegative", "0.000123456789", true, -11123},
    // 10^32 leaves nothing, and a division by zero saturates.
    {"AWrappedDivisorMayBeZero", "0.00000000000000000000000000000000", true, INT32_MAX},
    {"ANegativeNumberIsNegatedAfterItsDivision", "-0.00000000000000000000000000000000", true, -INT32_MAX},
    {"AnExponentFails", "1e3", false, kUntouched},
    {"TrailingTextFails", "1.5x", false, kUntouched},
    {"TwoPointsFail", "1.2.3", false, kUntouched},
    {"ALonePointFails", ".", false, kUntouched},
    {"ASignedPointFails", "-.", false, kUntouched},
    {"ALoneSignFails", "-", false, kUntouched},
    {"TwoSignsFail", "+-1", false, kUntouched},
    {"ATrailingBlankFails", "1.5 ", false, kUntouched},
    {"TheEmptyTextFails", "", false, kUntouched},
    {"TrailingTextAfterAnOverflowFailsButStores", "32768x", false, INT32_MAX},
    {"TrailingTextAfterANegativeOverflowFailsButStores", "-40000.5x", false, INT32_MIN},
};
INSTANTIATE_TEST_SUITE_P(BigStrs, Fixeds, testing::ValuesIn(kFixeds), CaseName());

// A number of up to that many digits before and behind its point, as its digits and its divisor, and what the host's
// division makes of them.
TEST(BigStringAsFixedTest, DividesAsTheHostDoes)
{
    std::mt19937 random(6);
    for (int i = 0; i < 1000000; ++i) {
        const auto integer = static_cast<int32_t>(random() % 32768) >> random() % 16;
        std::string text = std::to_string(integer) + '.';
        int64_t value = integer;
        int64_t divisor = 1;
        for (auto decimals = random() % 10; decimals > 0; --decimals) {
            const auto digit = random() % 3 == 0 ? 9 * (random() % 2) : random() % 10;
            text += static_cast<char>('0' + digit);
            if (value <= kFractionLimit) {
                value = value * 10 + static_cast<int64_t>(digit);
                divisor *= 10;
            }
        }
        const BigString view = View(text);
        Fixed fixed = 0;
        ASSERT_TRUE(BigStringAsFixed(&view, &fixed)) << text;
        ASSERT_EQ(fixed, FixDiv(static_cast<int32_t>(value), static_cast<int32_t>(divisor))) << text;
    }
}

// The largest and the smallest digits that a number may have with each divisor, where a wrong rounding would show first.
TEST(BigStringAsFixedTest, DividesTheLargestDigitsAsTheHostDoes)
{
    int32_t divisor = 1;
    for (size_t decimals = 0; decimals <= 9; ++decimals, divisor *= decimals <= 9 ? 10 : 1)
        for (int64_t i = -40000; i < 40000; ++i) {
            const int64_t most =
                std::min<int64_t>(kFractionLimit * int64_t{10} + 9, int64_t{32768} * divisor - 1);
            const int64_t value = i < 0 ? most + 1 + i : i;
            if (value < 0 || value > most)
                continue;
            std::string text = std::to_string(value);
            if (text.size() <= decimals)
                text.insert(0, decimals + 1 - text.size(), '0');
            text.insert(text.size() - decimals, ".");
            const BigString view = View(text);
            Fixed fixed = 0;
            ASSERT_TRUE(BigStringAsFixed(&view, &fixed)) << text;
            ASSERT_EQ(fixed, FixDiv(static_cast<int32_t>(value), divisor)) << text;
        }
}

} // namespace
