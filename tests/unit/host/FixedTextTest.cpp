// Shortest decimals, and that they come back as the same number.
#include "host/drawing/FixedText.h"

#include "tests/support/CaseName.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>

namespace vxhost
{
namespace
{

struct TextCase {
    const char *name;
    Fixed value;
    const char *text;
};

const TextCase kCases[] = {
    {"Zero", 0, "0"},
    {"Integer", 12 * 65536, "12"},
    {"NegativeInteger", -700 * 65536, "-700"},
    {"IntegerWithZeros", 1000 * 65536, "1000"},
    {"AHalf", 32768, "0.5"},
    {"MinusThreeAndAQuarter", -212992, "-3.25"},
    {"ATenth", 6554, "0.1"},           // 6553.6
    {"AlmostATenth", 6553, "0.09999"}, // 0.099991; 0.1 would be 6554
    {"AHundredth", 655, "0.01"},       // 655.36
    {"AThousandth", 66, "0.001"},      // 65.536
    {"OneThird", 21845, "0.33333"},
    {"TheSmallest", 1, "0.00002"}, // 0.0000153
    {"TheSmallestBelowZero", -1, "-0.00002"},
    {"JustBelowOne", 65535, "0.99998"}, // 0.9999847
    {"TheMost", INT32_MAX, "32767.99998"},
    {"TheLeast", INT32_MIN, "-32768"},
};

class FixedTexts : public testing::TestWithParam<TextCase>
{
};

TEST_P(FixedTexts, Reads)
{
    EXPECT_EQ(FixedText(GetParam().value), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Host, FixedTexts, testing::ValuesIn(kCases), vxtest::CaseName());

TEST(FixedTextTest, EveryFractionComesBackAndNoShorterOneDoes)
{
    for (Fixed value = 0; value < 65536; ++value) {
        std::string text = FixedText(value);
        ASSERT_EQ(std::lround(std::stod(text) * 65536), value) << text;
        const size_t point = text.find('.');
        if (point == std::string::npos)
            continue;
        // The two nearest decimals with one place less.
        const double scale = std::pow(10.0, static_cast<double>(text.size() - point - 2));
        const double shorter = std::floor(value / 65536.0 * scale);
        EXPECT_NE(std::lround(shorter / scale * 65536), value) << text;
        EXPECT_NE(std::lround((shorter + 1) / scale * 65536), value) << text;
    }
}

} // namespace
} // namespace vxhost
