#include "devices/vector/Numbers.h"
#include "tests/support/CaseName.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <string_view>

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

// All fractions, with whole parts of any length up to and past the shortcut's last, and doubles of any bits.
TEST(Number, IsTheSameWithoutTheShortcut)
{
    const auto check = [](double value) {
        char quick[kMaxNumber], plain[kMaxNumber];
        const std::string_view one(quick, static_cast<size_t>(WriteNumber(value, quick) - quick));
        const std::string_view other(plain, static_cast<size_t>(WriteNumberPlainly(value, plain) - plain));
        ASSERT_EQ(one, other) << value;
    };
    uint64_t random = 1;
    const auto next = [&random] { return random = random * 6364136223846793005 + 1442695040888963407; };
    constexpr uint64_t kWholes[] = {0, 1, 10, 100, 1000, 10001, 1000000001};
    for (int32_t fraction = 0; fraction < 65536; ++fraction) {
        for (const uint64_t bound : kWholes) {
            const double whole = bound == 0 ? 0 : static_cast<double>((next() >> 32) % bound);
            check(whole + fraction / 65536.0);
            check(-whole - fraction / 65536.0);
            check(whole + (fraction + 0.5) / 65536.0);
            check(-whole - (fraction + 0.5) / 65536.0);
        }
        check(std::bit_cast<double>(next()));
        check(
            std::bit_cast<double>((next() & 0x801FFFFFFFFFFFFF) | (uint64_t{0x3E0} + (next() >> 58)) << 52));
    }
    for (const double value :
         {9998.99999, 9998.999995, 9998.999999999, 9999.0, 9999.5, 10000.0, 9999.99999, 9999.999999})
        for (const double signed_ : {value, -value})
            check(signed_);
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
