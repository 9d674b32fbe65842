// What bytes mean, against the C library's own tables.
#include "host/fonts/TextEncoding.h"

#include "tests/support/CaseName.h"

#include <gtest/gtest.h>

#include <iconv.h>

#include <map>
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
    // Codes that the two tables read differently, on purpose or by age; ours.
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
        // Places for characters of one's own mean nothing to others.
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
