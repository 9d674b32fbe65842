#include "library/FontMap.h"

#include "library/Options.h"
#include "tests/support/CaseName.h"

#include <gtest/gtest.h>

namespace vxhost
{
namespace
{

TEST(FontMaps, AreLinesOfTwoNames)
{
    const FontMap expected = {{"Futura", "C059-Bold"}, {"Garamond", "P052-Roman"}};
    EXPECT_EQ(ReadFontMap("# ours\n\n Futura=C059-Bold # as printed\r\nGaramond\t = P052-Roman", "map"),
              expected);
    EXPECT_EQ(ReadFontMap("Futura = A\nFutura = C059-Bold\nGaramond = P052-Roman\n", "map"), expected)
        << "the last row of a name holds";
    EXPECT_TRUE(ReadFontMap("", "map").empty());
}

struct WrongMap {
    const char *name;
    std::string text;
    const char *told;
};

void PrintTo(const WrongMap &wrong, std::ostream *to)
{
    *to << wrong.name;
}

class WrongFontMap : public testing::TestWithParam<WrongMap>
{
};

TEST_P(WrongFontMap, IsToldWithItsLine)
{
    try {
        (void)ReadFontMap(GetParam().text, "map");
        ADD_FAILURE() << "it was read";
    } catch (const OptionError &error) {
        EXPECT_EQ(std::string_view(error.what()), GetParam().told);
    }
}

const WrongMap kWrong[] = {
    {"NoFont", "A = B\nFutura\n", "map: line 2 is \"Futura\": write ASKED = FONT, both PostScript names"},
    {"NothingBehind", "Futura = # C059\n",
     "map: line 1 is \"Futura =\": write ASKED = FONT, both PostScript names"},
    {"NothingBefore", "= C059\n", "map: line 1 is \"= C059\": write ASKED = FONT, both PostScript names"},
    {"TooLongALine", "A = B" + std::string(kMaxMapLine - 4, ' ') + "\n",
     "map: line 1 is \"A = B\": write ASKED = FONT, both PostScript names"},
    {"TooManyLines", std::string(kMaxMapRows, '\n') + "A = B\n",
     "map: line 10001 is \"A = B\": write ASKED = FONT, both PostScript names"},
};

INSTANTIATE_TEST_SUITE_P(Maps, WrongFontMap, testing::ValuesIn(kWrong), vxtest::CaseName());

} // namespace
} // namespace vxhost
