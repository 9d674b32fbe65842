// What bytes mean, against the C library's own tables.
#include "host/fonts/TextEncoding.h"

#include "tests/support/CaseName.h"

#include <gtest/gtest.h>

#include <iconv.h>

#include <map>
#include <set>
#include <vector>

namespace vxhost
{
namespace
{

// 0 where the C library knows no character.
char32_t Convert(iconv_t converter, std::vector<uint8_t> code)
{
    char *from = reinterpret_cast<char *>(code.data());
    size_t fromLeft = code.size();
    char32_t character[2] = {};
    char *to = reinterpret_cast<char *>(&character[0]);
    size_t toLeft = sizeof character;
    iconv(converter, nullptr, nullptr, nullptr, nullptr);
    const size_t result = iconv(converter, &from, &fromLeft, &to, &toLeft);
    return result == static_cast<size_t>(-1) || toLeft != sizeof(char32_t) ? 0 : character[0];
}

struct PairCase {
    const char *name;
    TextEncoding encoding;
    const char *charset;
    size_t least; // characters that the standard has
    // What ours makes of codes that the two tables read differently, on purpose or by age.
    std::map<int, char32_t> ours;
};

class Pairs : public testing::TestWithParam<PairCase>
{
};

TEST_P(Pairs, AgreeWithTheStandard)
{
    const PairCase &param = GetParam();
    const iconv_t converter = iconv_open("UTF-32LE", param.charset);
    ASSERT_NE(converter, reinterpret_cast<iconv_t>(-1));
    size_t compared = 0;
    for (int code = 0x8100; code <= 0xFFFF; ++code) {
        const std::vector<uint8_t> bytes = {static_cast<uint8_t>(code >> 8), static_cast<uint8_t>(code)};
        const char32_t expected = Convert(converter, bytes);
        // Characters for private use mean nothing to others.
        const bool isPrivate = expected >= 0xE000 && expected <= 0xF8FF;
        if (expected == 0 || isPrivate || !IsLeadByte(param.encoding, bytes[0]))
            continue;
        ++compared;
        const DecodedCharacter decoded = DecodeCharacter(param.encoding, bytes);
        const auto ours = param.ours.find(code);
        EXPECT_EQ(decoded.character, ours == param.ours.end() ? expected : ours->second) << std::hex << code;
        EXPECT_EQ(decoded.bytes, 2u);
        EXPECT_FALSE(decoded.isVerticalForm);
    }
    EXPECT_GE(compared, param.least);
    iconv_close(converter);
}

// JIS X 0208 has 6879 characters and Big5 13053. KS X 1001 has 8227 with those added since: the postal code mark came
// after these documents. Its filler, which spells syllables out of letters, shows nothing.
const PairCase kPairCases[] = {
    {"Japanese", TextEncoding::MacJapanese, "SHIFT_JIS", 6879, {{0x815F, 0xFF3C}}},
    {"Chinese", TextEncoding::MacChinese, "CP950", 13053, {}},
    {"Korean", TextEncoding::MacKorean, "EUC-KR", 8227, {{0xA2E8, 0}, {0xA4D4, 0}}},
};
INSTANTIATE_TEST_SUITE_P(TextEncoding, Pairs, testing::ValuesIn(kPairCases), vxtest::CaseName());

TEST(TextEncodingTest, RomanBytesOfWindowsAgreeWithTheStandard)
{
    const iconv_t converter = iconv_open("UTF-32LE", "CP1252");
    ASSERT_NE(converter, reinterpret_cast<iconv_t>(-1));
    for (int byte = 1; byte < 256; ++byte) {
        const auto code = static_cast<uint8_t>(byte);
        EXPECT_EQ(DecodeCharacter(TextEncoding::CodePage1252, {&code, 1}).character,
                  Convert(converter, {code}))
            << byte;
    }
    iconv_close(converter);
}

TEST(TextEncodingTest, RomanBytesOfTheMacAgreeButForTheCurrencySign)
{
    const iconv_t converter = iconv_open("UTF-32LE", "MACINTOSH");
    ASSERT_NE(converter, reinterpret_cast<iconv_t>(-1));
    // The C library's table is of another age in these: Apple's own names them so.
    const std::map<int, char32_t> ours = {{0xBD, 0x03A9}, {0xC6, 0x2206}, {0xDB, 0x00A4}, {0xF0, 0xF8FF}};
    for (int byte = 1; byte < 256; ++byte) {
        const auto code = static_cast<uint8_t>(byte);
        const auto found = ours.find(byte);
        EXPECT_EQ(DecodeCharacter(TextEncoding::MacRoman, {&code, 1}).character,
                  found == ours.end() ? Convert(converter, {code}) : found->second)
            << std::hex << byte;
    }
    iconv_close(converter);
}

struct VerticalCase {
    uint8_t code[2];
    char32_t character;
};

TEST(TextEncodingTest, VerticalRowsAreFormsOfTheirRows)
{
    const VerticalCase cases[] = {
        {{0xEB, 0x41}, 0x3001}, // ideographic comma, 0x8141
        {{0xEB, 0x75}, 0x300C}, // left corner bracket, 0x8175
        {{0xEC, 0x9F}, 0x3041}, // small hiragana a, 0x829F
        {{0xED, 0x40}, 0x30A1}, // small katakana a, 0x8340
    };
    for (const VerticalCase &row : cases) {
        const DecodedCharacter decoded = DecodeCharacter(TextEncoding::MacJapanese, row.code);
        EXPECT_EQ(decoded.character, row.character);
        EXPECT_TRUE(decoded.isVerticalForm);
    }
}

TEST(TextEncodingTest, SingleBytesOfTheJapaneseSet)
{
    const struct {
        uint8_t byte;
        char32_t character;
    } cases[] = {{'A', 'A'},     {0x5C, 0x00A5}, {0x80, 0x5C},  {0xA0, 0xA0},
                 {0xB1, 0xFF71}, {0xFD, 0xA9},   {0xFE, 0x2122}};
    for (const auto &row : cases) {
        const DecodedCharacter decoded = DecodeCharacter(TextEncoding::MacJapanese, {&row.byte, 1});
        EXPECT_EQ(decoded.character, row.character);
        EXPECT_EQ(decoded.bytes, 1u);
    }
}

// The national standards have no single bytes beside ASCII; these are the Mac's own.
TEST(TextEncodingTest, SingleBytesOfTheOtherDoubleByteSets)
{
    const iconv_t converter = iconv_open("UTF-32LE", "ASCII");
    ASSERT_NE(converter, reinterpret_cast<iconv_t>(-1));
    const struct {
        TextEncoding encoding;
        std::map<int, char32_t> ours;
    } cases[] = {
        {TextEncoding::MacChinese,
         {{0x80, 0x5C}, {0xA0, 0xA0}, {0xFD, 0xA9}, {0xFE, 0x2122}, {0xFF, 0x2026}}},
        {TextEncoding::MacKorean,
         {{0x80, 0xA0}, {0x81, 0x20A9}, {0x82, 0x2013}, {0x83, 0xA9}, {0x84, 0xFF3F}, {0xFF, 0x2026}}},
    };
    for (const auto &row : cases) {
        for (int byte = 1; byte < 256; ++byte) {
            const auto code = static_cast<uint8_t>(byte);
            if (IsLeadByte(row.encoding, code))
                continue;
            const auto found = row.ours.find(byte);
            EXPECT_EQ(DecodeCharacter(row.encoding, {&code, 1}).character,
                      found == row.ours.end() ? Convert(converter, {code}) : found->second)
                << std::hex << byte;
        }
    }
    iconv_close(converter);
}

struct SignCase {
    TextEncoding encoding;
    uint8_t byte;
    char32_t character;
};

TEST(TextEncodingTest, SymbolsStandInTheSetsOfTheirFonts)
{
    const SignCase cases[] = {
        {TextEncoding::Symbol, ' ', U' '},      {TextEncoding::Symbol, 'a', 0x03B1},
        {TextEncoding::Symbol, 'z', 0x03B6},    {TextEncoding::Symbol, 'C', 0x03A7},
        {TextEncoding::Symbol, 'V', 0x03C2},    {TextEncoding::Symbol, '5', U'5'},
        {TextEncoding::Symbol, '"', 0x2200},    {TextEncoding::Symbol, '@', 0x2245},
        {TextEncoding::Symbol, 0x7F, 0},        {TextEncoding::Symbol, 0x80, 0},
        {TextEncoding::Symbol, 0xA5, 0x221E},   {TextEncoding::Symbol, 0xB7, 0x2022},
        {TextEncoding::Symbol, 0xD6, 0x221A},   {TextEncoding::Symbol, 0xE5, 0x2211},
        {TextEncoding::Symbol, 0xF0, 0},        {TextEncoding::Symbol, 0xF2, 0x222B},
        {TextEncoding::Symbol, 0xFE, 0x23AD},   {TextEncoding::Symbol, 0xFF, 0},
        {TextEncoding::Dingbats, ' ', U' '},    {TextEncoding::Dingbats, '!', 0x2701},
        {TextEncoding::Dingbats, '%', 0x260E},  {TextEncoding::Dingbats, '4', 0x2714},
        {TextEncoding::Dingbats, 'H', 0x2605},  {TextEncoding::Dingbats, 'l', 0x25CF},
        {TextEncoding::Dingbats, 'w', 0x25D7},  {TextEncoding::Dingbats, '~', 0x275E},
        {TextEncoding::Dingbats, 0x7F, 0},      {TextEncoding::Dingbats, 0x80, 0x2768},
        {TextEncoding::Dingbats, 0x8D, 0x2775}, {TextEncoding::Dingbats, 0x8E, 0},
        {TextEncoding::Dingbats, 0xA0, 0},      {TextEncoding::Dingbats, 0xA7, 0x2767},
        {TextEncoding::Dingbats, 0xAA, 0x2665}, {TextEncoding::Dingbats, 0xAC, 0x2460},
        {TextEncoding::Dingbats, 0xB5, 0x2469}, {TextEncoding::Dingbats, 0xB6, 0x2776},
        {TextEncoding::Dingbats, 0xD4, 0x2794}, {TextEncoding::Dingbats, 0xD5, 0x2192},
        {TextEncoding::Dingbats, 0xD7, 0x2195}, {TextEncoding::Dingbats, 0xD8, 0x2798},
        {TextEncoding::Dingbats, 0xEF, 0x27AF}, {TextEncoding::Dingbats, 0xF0, 0},
        {TextEncoding::Dingbats, 0xF1, 0x27B1}, {TextEncoding::Dingbats, 0xFE, 0x27BE},
        {TextEncoding::Dingbats, 0xFF, 0},
    };
    for (const SignCase &row : cases) {
        const DecodedCharacter decoded = DecodeCharacter(row.encoding, {&row.byte, 1});
        EXPECT_EQ(decoded.character, row.character) << std::hex << static_cast<int>(row.byte);
        EXPECT_EQ(decoded.bytes, 1u);
    }
}

// 189 codes, of which three pairs are one mark with serifs and without; 202, each another character.
TEST(TextEncodingTest, SymbolsAreAsManyAsTheirFontsHave)
{
    const struct {
        TextEncoding encoding;
        size_t codes, characters;
    } cases[] = {{TextEncoding::Symbol, 189, 186}, {TextEncoding::Dingbats, 202, 202}};
    for (const auto &row : cases) {
        std::multiset<char32_t> characters;
        for (int byte = 0; byte < 256; ++byte) {
            const auto code = static_cast<uint8_t>(byte);
            const char32_t character = DecodeCharacter(row.encoding, {&code, 1}).character;
            if (character != 0)
                characters.insert(character);
        }
        EXPECT_EQ(characters.size(), row.codes);
        EXPECT_EQ(std::set<char32_t>(characters.begin(), characters.end()).size(), row.characters);
    }
}

TEST(TextEncodingTest, LeadBytes)
{
    const struct {
        TextEncoding encoding;
        int first, last, gapFirst, gapLast; // lead bytes, without the gap
    } cases[] = {
        {TextEncoding::MacRoman, 256, 256, 0, 0},
        {TextEncoding::CodePage1252, 256, 256, 0, 0},
        {TextEncoding::MacJapanese, 0x81, 0xFC, 0xA0, 0xDF},
        {TextEncoding::MacChinese, 0xA1, 0xF9, 256, 256},
        {TextEncoding::MacKorean, 0xA1, 0xFE, 256, 256},
        {TextEncoding::Symbol, 256, 256, 0, 0},
        {TextEncoding::Dingbats, 256, 256, 0, 0},
    };
    for (const auto &row : cases) {
        for (int byte = 0; byte < 256; ++byte) {
            const bool isLead =
                byte >= row.first && byte <= row.last && (byte < row.gapFirst || byte > row.gapLast);
            EXPECT_EQ(IsLeadByte(row.encoding, static_cast<uint8_t>(byte)), isLead) << byte;
        }
    }
}

TEST(TextEncodingTest, HalfACharacterMeansNothing)
{
    const uint8_t lead = 0x83;
    const DecodedCharacter decoded = DecodeCharacter(TextEncoding::MacJapanese, {&lead, 1});
    EXPECT_EQ(decoded.character, 0u);
    EXPECT_EQ(decoded.bytes, 1u);
}

TEST(TextEncodingTest, ASecondByteBelowAllMeansNothing)
{
    const uint8_t code[] = {0x83, 0x20};
    EXPECT_EQ(DecodeCharacter(TextEncoding::MacJapanese, code).character, 0u);
    EXPECT_EQ(DecodeCharacter(TextEncoding::MacJapanese, code).bytes, 2u);
}

} // namespace
} // namespace vxhost
