#include "devices/vector/Numbers.h"
#include "tests/support/CaseName.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>

using namespace vxhost;

namespace
{

struct NumberCase {
    const char *name;
    double value;
    const char *text;
};

const NumberCase kNumbers[] = {
    {"Zero", 0, "0"},
    {"NegativeZero", -0.0, "0"},
    {"Whole", 12, "12"},
    {"NegativeWhole", -300, "-300"},
    {"OneDigit", 9, "9"},
    {"FourDigits", 9999, "9999"},
    {"FiveDigits", 10000, "10000"},
    {"ZerosInside", 300020001, "300020001"},
    {"NinesAlone", 999999999.75, "999999999.75"},
    {"Half", 0.5, ".5"},
    {"NegativeHalf", -0.5, "-.5"},
    {"AThirdInFixedPoint", 21845 / 65536.0, ".33333"},
    {"AnotherDecimalOfTheDocument", 16450 / 65536.0, ".251"}, // 0.251 * 65536 = 16449.5
    {"LeadingZerosOfTheFraction", 3 + 66 / 65536.0, "3.001"}, // 0.001 * 65536 = 65.5
    {"SmallestStep", 1 / 65536.0, ".00002"},                  // 0.0000153; .00001 would be nearer to 0
    {"LargestFraction", 65535 / 65536.0, ".99998"},
    {"HalfAStepRoundsUp", 0.5 / 65536, ".00002"},
    {"LessIsNothing", 0.4 / 65536, "0"},
    {"FarAway", 3e12, "1000000000"},
    {"FarAwayBelow", -3e12, "-1000000000"},
};

class Numbers : public testing::TestWithParam<NumberCase>
{
};

TEST_P(Numbers, AreWrittenSo)
{
    EXPECT_EQ(NumberText(GetParam().value), GetParam().text);
}
INSTANTIATE_TEST_SUITE_P(Vector, Numbers, testing::ValuesIn(kNumbers), vxtest::CaseName());

TEST(Number, OfNothingIsZero)
{
    EXPECT_EQ(NumberText(std::numeric_limits<double>::quiet_NaN()), "0");
}

// For every fraction: what is written is nearer to its number than to any other, and would not be with a decimal less.
TEST(Number, TellsNeighboursApartInTheFewestDecimals)
{
    for (int32_t raw = 1; raw < 65536; ++raw) {
        const std::string text = NumberText(raw / 65536.0);
        ASSERT_EQ(std::lround(std::strtod(text.c_str(), nullptr) * 65536), raw) << text;
        const auto places = static_cast<int>(text.size()) - 1;
        const double power = std::pow(10, places - 1);
        const double shorter = std::round(raw / 65536.0 * power) / power;
        ASSERT_GE(std::abs(shorter * 65536 - raw), 0.5) << text;
    }
}

const NumberCase kFactors[] = {
    {"One", 1, "1"},
    {"NineDecimals", 0.123456789, ".123456789"},
    {"NoTrailingZeros", -2.5, "-2.5"},
    {"Tiny", 1e-9, ".000000001"},
    {"RoundedUpToOne", 0.9999999999, "1"},
    {"Nothing", 1e-10, "0"},
};

class Factors : public testing::TestWithParam<NumberCase>
{
};

TEST_P(Factors, AreWrittenSo)
{
    EXPECT_EQ(FactorText(GetParam().value), GetParam().text);
}
INSTANTIATE_TEST_SUITE_P(Vector, Factors, testing::ValuesIn(kFactors), vxtest::CaseName());

} // namespace
