// The codes of the standard Latin glyphs, against what is known of them.
#include "plugin/text/CharacterTable.h"

#include "plugin/text/FontEncoding.h"
#include "tests/support/CaseName.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <vector>

namespace
{

using namespace vx;
using namespace vxtest;

struct GlyphCase {
    const char *name;
    size_t row;
    const char *glyph;
    uint32_t mac, pc;
};

class Glyphs : public testing::TestWithParam<GlyphCase>
{
};

TEST_P(Glyphs, HaveTheirCodes)
{
    const CharacterRow &row = kCharacterRows[GetParam().row];
    EXPECT_STREQ(row.glyph, GetParam().glyph);
    EXPECT_EQ(row.mac, GetParam().mac);
    EXPECT_EQ(row.pc, GetParam().pc);
}

const GlyphCase kIrregular[] = {
    {"TheFirstRowHasNoGlyph", 0, "", 0x7F, kNoCode},
    {"LslashHasNoCode", 30, "Lslash", kNoCode, kNoCode},
    {"ZcaronHasNoCode", 61, "Zcaron", kNoCode, kNoCode},
    {"ThePcsBulletIsItsDelete", 85, "bullet", 0xA5, 0x7F},
    {"CurrencyHasTheCodeOfTheMacsEuro", 95, "currency", 0xDB, 0xA4},
    {"SmallLslashHasNoCode", 146, "lslash", kNoCode, kNoCode},
    {"MinusHasNoCode", 149, "minus", kNoCode, kNoCode},
    {"SterlingIsAQuestionMarkOnAMac", 203, "sterling", 0x3F, 0xA3},
    {"SmallZcaronHasNoCode", 227, "zcaron", kNoCode, kNoCode},
};
INSTANTIATE_TEST_SUITE_P(Irregular, Glyphs, testing::ValuesIn(kIrregular), CaseName());

const GlyphCase kRegular[] = {
    {"A", 1, "A", 0x41, 0x41},           {"AE", 2, "AE", 0xAE, 0xC6},
    {"Aacute", 3, "Aacute", 0xE7, 0xC1}, {"Ccedilla", 11, "Ccedilla", 0x82, 0xC7},
    {"Zero", 228, "zero", 0x30, 0x30},
};
INSTANTIATE_TEST_SUITE_P(Regular, Glyphs, testing::ValuesIn(kRegular), CaseName());

// The codes of one column whose rows have none in the other, in row order.
std::vector<uint32_t> CodesWithoutPartner(uint32_t CharacterRow::*column, uint32_t CharacterRow::*partner)
{
    std::vector<uint32_t> codes;
    for (const CharacterRow &row : kCharacterRows) {
        if (row.*column != kNoCode && row.*partner == kNoCode)
            codes.push_back(row.*column);
    }
    return codes;
}

TEST(CharacterTableTest, SomeCharactersAreAPcsAlone)
{
    const std::vector<uint32_t> expected = {0xD0, 0x8A, 0xDE, 0xDD, 0xA6, 0xF0, 0xD7, 0xBD,
                                            0xBC, 0xB9, 0x9A, 0xFE, 0xBE, 0xB3, 0xB2, 0xFD};
    EXPECT_EQ(CodesWithoutPartner(&CharacterRow::pc, &CharacterRow::mac), expected);
}

TEST(CharacterTableTest, SomeCharactersAreAMacsAlone)
{
    const std::vector<uint32_t> expected = {0x7F, 0xF9, 0xFF, 0xFA, 0xF5, 0xDE, 0xDF, 0xDA, 0xFD, 0xFE, 0xFB};
    EXPECT_EQ(CodesWithoutPartner(&CharacterRow::mac, &CharacterRow::pc), expected);
}

// Printable ASCII is the same on both sides, and no code above it stands in two rows.
TEST(CharacterTableTest, AsciiIsItself)
{
    std::set<uint32_t> ascii;
    for (const CharacterRow &row : kCharacterRows) {
        if (row.pc >= 0x20 && row.pc < 0x7F) {
            EXPECT_EQ(row.mac, row.pc);
            ascii.insert(row.pc);
        }
    }
    EXPECT_EQ(ascii.size(), 95u);
}

TEST(CharacterTableTest, CodesStandInOneRowButForTheMacsQuestionMark)
{
    std::multiset<uint32_t> mac;
    std::multiset<uint32_t> pc;
    for (const CharacterRow &row : kCharacterRows) {
        mac.insert(row.mac);
        pc.insert(row.pc);
    }
    for (uint32_t code = 0; code < 256; ++code) {
        EXPECT_LE(pc.count(code), 1u) << code;
        EXPECT_LE(mac.count(code), code == 0x3F ? 2u : 1u) << code;
    }
    EXPECT_EQ(pc.count(kNoCode), 5u + 11u);
    EXPECT_EQ(mac.count(kNoCode), 5u + 16u);
    // Code page 1252 had 120 before the euro; the no-break space, the soft hyphen and the bullet are not in the table.
    EXPECT_EQ(std::count_if(pc.begin(), pc.end(), [](uint32_t code) { return code >= 0x80 && code < 256; }),
              117);
}

TEST(CharacterTableTest, TheObjectHasBothColumnsAndNothingBehind)
{
    FontEncodingObject object = {};
    InitFontEncodingObject(&object, 4);
    EXPECT_EQ(object.tableState, kTablesFilled);
    for (uint32_t i = 0; i < kCharacterTableSize; ++i) {
        EXPECT_EQ(object.macTable[i], i < 229 ? kCharacterRows[i].mac : 0xFFFFFFFF) << i;
        EXPECT_EQ(object.pcTable[i], i < 229 ? kCharacterRows[i].pc : 0xFFFFFFFF) << i;
        EXPECT_EQ(object.indexTable[i], i);
    }
}

} // namespace
