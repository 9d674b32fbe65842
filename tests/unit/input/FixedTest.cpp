// Matrices and the thin layer over the host's arithmetic.
#include "plugin/input/Fixed.h"

#include "tests/support/CaseName.h"

#include <gtest/gtest.h>

#include <cstring>
#include <iterator>
#include <ostream>
#include <random>

static bool operator==(const FixedMatrix &x, const FixedMatrix &y)
{
    return memcmp(&x, &y, sizeof x) == 0;
}

static std::ostream &operator<<(std::ostream &out, const FixedMatrix &m)
{
    return out << m.a << ' ' << m.b << ' ' << m.c << ' ' << m.d << ' ' << m.tx << ' ' << m.ty;
}

namespace
{

using namespace vx;
using namespace vxtest;

constexpr Fixed Whole(int32_t x)
{
    return IntegerToFixed(x);
}
constexpr Fixed kHalf = 0x8000;

constexpr FixedMatrix kIdentity = {kFixedOne, 0, 0, kFixedOne, 0, 0};
constexpr FixedMatrix kShear = {Whole(2), Whole(3), Whole(5), Whole(7), Whole(11), Whole(13)};
constexpr FixedMatrix kOther = {Whole(1), Whole(-2), Whole(4), kHalf, Whole(6), Whole(-8)};

TEST(Arithmetic, OneIsNeutralAndOrderCounts)
{
    EXPECT_EQ(FixedMul(kFixedOne, Whole(-3)), Whole(-3));
    EXPECT_EQ(FixedMul(kHalf, kHalf), 0x4000);
    EXPECT_EQ(FixedDiv(Whole(1), Whole(4)), 0x4000);
    EXPECT_EQ(FixedDiv(3, 4), 0xC000); // two integers give their quotient
    EXPECT_EQ(Fixed2Double(Whole(-2) + kHalf), -1.5);
    EXPECT_EQ(Double2Fixed(-1.5), -0x18000);
}

// Some products are known without the host.
TEST(Arithmetic, ProductsAreTheHosts)
{
    constexpr Fixed kPlain[] = {
        0, 1, -1, kHalf, kFixedOne - 1, kFixedOne, kFixedOne + 1, -kFixedOne, INT32_MAX, INT32_MIN};
    std::mt19937 random(5);
    for (int i = 0; i < 100000; ++i) {
        const auto any = [&random] { return static_cast<Fixed>(random()) >> (random() % 32); };
        const Fixed plain = kPlain[random() % std::size(kPlain)], x = any(), y = any();
        ASSERT_EQ(FixedMul(x, y), FixMul(x, y)) << x << " * " << y;
        ASSERT_EQ(FixedMul(x, plain), FixMul(x, plain)) << x << " * " << plain;
        ASSERT_EQ(FixedMul(plain, y), FixMul(plain, y)) << plain << " * " << y;
    }
}

TEST(Arithmetic, FractionsMultiplyAndZeroShortensIt)
{
    constexpr Fract kOne = 0x40000000;
    EXPECT_EQ(FractMul(kOne, 12345), 12345);
    EXPECT_EQ(FractMul(kOne / 2, kOne / 2), kOne / 4);
    EXPECT_EQ(FractMul(0, kOne), 0);
    EXPECT_EQ(FractMul(INT32_MIN, 0), 0);
}

TEST(Arithmetic, SumsWrap)
{
    EXPECT_EQ(AddFixed(INT32_MAX, 1), INT32_MIN);
    EXPECT_EQ(SubtractFixed(INT32_MIN, 1), INT32_MAX);
    EXPECT_EQ(NegateFixed(INT32_MIN), INT32_MIN);
    EXPECT_EQ(IntegerToFixed(40000), static_cast<Fixed>(40000u << 16));
    EXPECT_EQ(IntegerToFixed(-32768), INT32_MIN);
}

struct ConcatCase {
    const char *name;
    FixedMatrix m, n, result;
};

class Concatenation : public testing::TestWithParam<ConcatCase>
{
};

TEST_P(Concatenation, IsTheSecondFollowedByTheFirst)
{
    const ConcatCase &c = GetParam();
    FixedMatrix result = {};
    ConcatZRKMats(&c.m, &c.n, &result);
    EXPECT_EQ(result, c.result);

    FixedMatrix m = c.m;
    ConcatZRKMats(&m, &c.n, &m);
    EXPECT_EQ(m, c.result) << "written over the first";

    FixedMatrix n = c.n;
    ConcatZRKMats(&c.m, &n, &n);
    EXPECT_EQ(n, c.result) << "written over the second";
}

const ConcatCase kConcats[] = {
    {"IdentityFirstChangesNothing", kIdentity, kShear, kShear},
    {"IdentitySecondChangesNothing", kShear, kIdentity, kShear},
    // a 2·1+5·-2  b 3·1+7·-2  c 2·4+5·0.5  d 3·4+7·0.5  tx 2·6+5·-8+11  ty 3·6+7·-8+13
    {"GeneralMatrices",
     kShear,
     kOther,
     {Whole(-8), Whole(-11), Whole(10) + kHalf, Whole(15) + kHalf, Whole(-17), Whole(-25)}},
    // a 1·2+4·3  b -2·2+0.5·3  c 1·5+4·7  d -2·5+0.5·7  tx 1·11+4·13+6  ty -2·11+0.5·13-8
    {"TheOtherWayRound",
     kOther,
     kShear,
     {Whole(14), -Whole(2) - kHalf, Whole(33), -Whole(6) - kHalf, Whole(69), -Whole(23) - kHalf}},
};
INSTANTIATE_TEST_SUITE_P(Matrices, Concatenation, testing::ValuesIn(kConcats), CaseName());

TEST(Matrices, ConcatenationSumsWrap)
{
    const FixedMatrix moved = {kFixedOne, 0, 0, kFixedOne, Whole(20000), 0};
    FixedMatrix result = {};
    ConcatZRKMats(&moved, &moved, &result);
    EXPECT_EQ(result.tx, Whole(40000)); // that is, 40000 - 65536
}

TEST(Matrices, PointsAreTransformedWithAndWithoutTranslation)
{
    const FixedPoint point = {Whole(1), Whole(-1)};
    FixedPoint result = {};
    TransformZRKPoint(&kShear, &point, &result);
    EXPECT_EQ(result.x, Whole(2 - 5 + 11));
    EXPECT_EQ(result.y, Whole(3 - 7 + 13));
    DTransformZRKPoint(&kShear, &point, &result);
    EXPECT_EQ(result.x, Whole(2 - 5));
    EXPECT_EQ(result.y, Whole(3 - 7));
}

TEST(Matrices, ATransformedPointMayReplaceItself)
{
    FixedPoint point = {Whole(1), Whole(-1)};
    TransformZRKPoint(&kShear, &point, &point);
    EXPECT_EQ(point.x, Whole(8));
    EXPECT_EQ(point.y, Whole(9));
    FixedPoint vector = {Whole(2), Whole(1)};
    DTransformZRKPoint(&kShear, &vector, &vector);
    EXPECT_EQ(vector.x, Whole(9));
    EXPECT_EQ(vector.y, Whole(13));
}

TEST(Matrices, ConcatenationTransformsAsOneAfterTheOther)
{
    const FixedPoint point = {Whole(3), Whole(-2)};
    FixedMatrix both = {};
    ConcatZRKMats(&kShear, &kOther, &both);
    FixedPoint once = {};
    TransformZRKPoint(&both, &point, &once);
    FixedPoint twice = {};
    TransformZRKPoint(&kOther, &point, &twice);
    TransformZRKPoint(&kShear, &twice, &twice);
    EXPECT_EQ(once.x, twice.x);
    EXPECT_EQ(once.y, twice.y);
}

TEST(Matrices, TranslationActsBeforeTheMatrixAndOnlyMovesIt)
{
    FixedMatrix m = kShear;
    TranslateZRKMatrix(&m, Whole(1), kHalf);
    const FixedMatrix moved = {
        Whole(2), Whole(3), Whole(5), Whole(7), Whole(11 + 2) + Whole(5) / 2, Whole(13 + 3) + Whole(7) / 2};
    EXPECT_EQ(m, moved);
}

TEST(Matrices, ScalingActsBeforeTheMatrixAndDoesNotMoveIt)
{
    FixedMatrix m = kShear;
    ScaleZRKMatrix(&m, Whole(2), kHalf);
    const FixedMatrix scaled = {Whole(4), Whole(6), Whole(5) / 2, Whole(7) / 2, Whole(11), Whole(13)};
    EXPECT_EQ(m, scaled);
}

} // namespace
