// Numbers of page descriptions: short, rounded, without exponents.
#include "devices/text/DecimalText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace vxhost
{
namespace
{

std::string Decimal(double value)
{
    char text[kMaxDecimalText];
    return {text, WriteDecimal(value, text)};
}

std::string Factor(double value)
{
    char text[kMaxDecimalText];
    return {text, WriteFactor(value, text)};
}

TEST(DecimalTextTest, WritesFourPlacesAtMost)
{
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    const struct {
        double value;
        const char *text;
    } cases[] = {
        {0, "0"},
        {-0.0, "0"},
        {7, "7"},
        {10, "10"},
        {99, "99"},
        {100, "100"},
        {-1234567, "-1234567"},
        {0.5, "0.5"},
        {-0.25, "-0.25"},
        {0.0625, "0.0625"},
        {1.0625, "1.0625"},
        {12.34, "12.34"},
        {1.05, "1.05"},
        {1.005, "1.005"},
        {0.0001, "0.0001"},
        {0.00005, "0.0001"},
        {0.00004, "0"},
        {-0.00004, "0"},
        {0.99996, "1"},
        {9.99994, "9.9999"},
        {32767.9999, "32767.9999"},
        {429496.7295, "429496.7295"},
        {429496.7296, "429496.7296"},
        {8999999999.5, "8999999999.5"},
        {9e11, "900000000000"},
        {1e12, "1000000000000"},
        {-1e14, "-100000000000000"},
        {1e300, "1000000000000000"},
        {kInfinity, "1000000000000000"},
        {-kInfinity, "-1000000000000000"},
        {std::nan(""), "0"},
        {-std::nan(""), "0"},
    };
    for (const auto &row : cases)
        EXPECT_EQ(Decimal(row.value), row.text) << row.value;
}

TEST(DecimalTextTest, WritesTheDocumentsDigits)
{
    for (const int digits : {1, 360343, 100001, 99999, 3276799, 1234}) {
        const double written = digits / 10000.0;
        const double asFixed = std::nearbyint(written * 65536) / 65536; // what a document's number becomes
        EXPECT_EQ(std::stod(Decimal(asFixed)), written);
    }
}

TEST(DecimalTextTest, FactorsHaveSixPlaces)
{
    EXPECT_EQ(Factor(0.7071067811865476), "0.707107");
    EXPECT_EQ(Factor(-1), "-1");
    EXPECT_EQ(Factor(0.000001), "0.000001");
    EXPECT_EQ(Factor(0.0000004), "0");
    EXPECT_EQ(Factor(123456789.25), "123456789.25");
}

} // namespace
} // namespace vxhost
