// The Toolbox's arithmetic: rounding, halves, the ends of the range.
#include "tests/support/CaseName.h"

#include <vx/Toolbox.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <random>

namespace vxhost
{
namespace
{

using vxtest::CaseName;

constexpr Fixed kOne = 0x10000;
constexpr Fixed kHalf = 0x8000;
constexpr int32_t kMost = INT32_MAX;
constexpr int32_t kLeast = INT32_MIN;
constexpr Fract kFractOne = 1 << 30;

struct BinaryCase {
    const char *name;
    int32_t (*operation)(int32_t, int32_t);
    int32_t x, y, result;
};

const BinaryCase kBinaryCases[] = {
    {"OneTimesOne", FixMul, kOne, kOne, kOne},
    {"SignsMultiply", FixMul, -3 * kOne, kHalf, -3 * kHalf},
    // 1 · 0x8000 is half a unit; the sum with 0x8000 reaches the next, for negative products it reaches 0.
    {"HalfAUnitOfAProductGoesUp", FixMul, 1, kHalf, 1},
    {"HalfAUnitBelowZeroGoesUpToo", FixMul, -1, kHalf, 0},
    {"OneAndAHalfBelowZeroGoesUpToMinusOne", FixMul, -3, kHalf, -1},
    {"LessThanHalfAUnitIsNothing", FixMul, 1, kHalf - 1, 0},
    {"LargeProductsFit", FixMul, 181 * kOne, 181 * kOne, 32761 * kOne},
    {"LargerProductsSaturate", FixMul, 182 * kOne, 182 * kOne, kMost},
    {"NegativeProductsSaturate", FixMul, -182 * kOne, 182 * kOne, kLeast},
    {"TheLeastTimesItself", FixMul, kLeast, kLeast, kMost},
    {"TheLeastTimesTheMost", FixMul, kLeast, kMost, kLeast},

    {"OneThirdGoesDown", FixDiv, 1, 3, 21845}, // 21845.33
    {"TwoThirdsGoUp", FixDiv, 2, 3, 43691},    // 43690.67
    {"IntegersGiveTheirQuotient", FixDiv, 7, 2, 7 * kHalf},
    {"HalfAUnitOfAQuotientGoesUp", FixDiv, 1, 2 * kOne, 1},
    {"HalfAUnitBelowZeroGoesDown", FixDiv, -1, 2 * kOne, -1},
    {"TwoAndAHalfUnitsGoUp", FixDiv, 5, 2 * kOne, 3},
    {"TwoAndAHalfUnitsBelowZeroGoDown", FixDiv, 5, -2 * kOne, -3},
    {"JustUnderHalfIsNothing", FixDiv, 1, 2 * kOne + 1, 0},
    {"ALargeHalfGoesUp", FixDiv, kMost, 2 * kOne, 0x40000000}, // 1073741823.5
    {"ZeroOverAnything", FixDiv, 0, -5, 0},
    {"ByZeroSaturates", FixDiv, 1, 0, kMost},
    {"ZeroByZeroIsTheMost", FixDiv, 0, 0, kMost},
    {"NegativeByZeroIsTheLeast", FixDiv, -1, 0, kLeast},
    {"LargeQuotientsSaturate", FixDiv, kMost, 1, kMost},
    {"LargeNegativeQuotientsSaturate", FixDiv, kMost, -1, kLeast},
    {"TheLeastByMinusOneSaturates", FixDiv, kLeast, -kOne, kMost},
    {"TheLeastByOneIsItself", FixDiv, kLeast, kOne, kLeast},
    {"TheMostByItself", FixDiv, kMost, kMost, kOne},

    {"FractOneTimesOne", FracMul, kFractOne, kFractOne, kFractOne},
    {"FractTimesFixedIsFixed", FracMul, kFractOne / 2, 3 * kOne, 3 * kHalf},
    {"HalfAUnitOfAFractGoesUp", FracMul, 1, kFractOne / 2, 1},
    {"HalfAUnitOfAFractBelowZeroGoesUp", FracMul, -1, kFractOne / 2, 0},
    {"FractsSaturate", FracMul, kFractOne + kFractOne / 2, kFractOne + kFractOne / 2, kMost},
    {"MinusTwoSquaredSaturates", FracMul, kLeast, kLeast, kMost},
    {"MinusTwoTimesOneIsTheLeast", FracMul, kLeast, kFractOne, kLeast},
};

class Arithmetic : public testing::TestWithParam<BinaryCase>
{
};

TEST_P(Arithmetic, Gives)
{
    EXPECT_EQ(GetParam().operation(GetParam().x, GetParam().y), GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(Toolbox, Arithmetic, testing::ValuesIn(kBinaryCases), CaseName());

// Twice the numerator plus the divisor, over twice the divisor: rounded without a fraction anywhere.
int32_t QuotientInIntegers(int32_t x, int32_t y)
{
    const int64_t numerator = (int64_t{x} < 0 ? -int64_t{x} : int64_t{x}) << 16;
    const int64_t divisor = int64_t{y} < 0 ? -int64_t{y} : int64_t{y};
    const int64_t quotient = (2 * numerator + divisor) / (2 * divisor);
    const bool isNegative = (x < 0) != (y < 0);
    if (isNegative)
        return quotient > int64_t{kMost} + 1 ? kLeast : static_cast<int32_t>(-quotient);
    return quotient > kMost ? kMost : static_cast<int32_t>(quotient);
}

TEST(FixDivTest, AgreesWithIntegersOnQuotientsOfEverySize)
{
    std::mt19937 random(7);
    for (int i = 0; i < 2000000; ++i) {
        const auto x = static_cast<int32_t>(random()) >> (random() % 32);
        const auto y = static_cast<int32_t>(random()) >> (random() % 32);
        if (y == 0)
            continue;
        ASSERT_EQ(FixDiv(x, y), QuotientInIntegers(x, y)) << x << " / " << y;
    }
}

// Divisors 2·k·65536 make every odd multiple of k an exact half.
TEST(FixDivTest, RoundsEveryExactHalfAway)
{
    for (int32_t k = 1; k < 8192; ++k) {
        const int32_t divisor = 2 * kOne * (1 + k % 8191);
        const int32_t half = (divisor / (2 * kOne)) * (2 * k + 1);
        ASSERT_EQ(FixDiv(half, divisor), k + 1) << half << " / " << divisor;
        ASSERT_EQ(FixDiv(-half, divisor), -k - 1) << half << " / " << divisor;
    }
}

struct ToFixedCase {
    const char *name;
    double value;
    Fixed result;
};

constexpr double kUnit = 1 / 65536.0;

const ToFixedCase kToFixedCases[] = {
    {"Zero", 0, 0},
    {"AHalf", 0.5, kHalf},
    {"MinusThreeAndAQuarter", -3.25, -212992},
    {"HalfAUnitGoesAway", kUnit / 2, 1},
    {"HalfAUnitBelowZeroGoesAway", -kUnit / 2, -1},
    {"TheNumberJustBelowHalfAUnitIsNothing", 0.49999999999999994 * kUnit, 0},
    {"TheMostFits", 32767 + 65535 * kUnit, kMost},
    {"AboveSaturates", 32768, kMost},
    {"BelowSaturates", -32769, kLeast},
    {"InfinitySaturates", std::numeric_limits<double>::infinity(), kMost},
    {"MinusInfinitySaturates", -std::numeric_limits<double>::infinity(), kLeast},
    {"NotANumberIsZero", std::numeric_limits<double>::quiet_NaN(), 0},
};

class ToFixed : public testing::TestWithParam<ToFixedCase>
{
};

TEST_P(ToFixed, Gives)
{
    EXPECT_EQ(X2Fix(GetParam().value), GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(Toolbox, ToFixed, testing::ValuesIn(kToFixedCases), CaseName());

TEST(Fix2XTest, IsExact)
{
    EXPECT_EQ(Fix2X(kLeast), -32768.0);
    EXPECT_EQ(Fix2X(1), kUnit);
    EXPECT_EQ(Fix2X(kMost), 32768.0 - kUnit);
}

} // namespace
} // namespace vxhost
