// Tests which values of options are read, and that others are refused rather than half read.
#include "library/OptionValues.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>

namespace vxhost
{

namespace
{

TEST(ReadNumberTest, TakesPlainDecimalsOnly)
{
    EXPECT_EQ(ReadNumber("300"), 300.0);
    EXPECT_EQ(ReadNumber("-0.5"), -0.5);
    for (const char *text : {"", "3x", " 3", "3 ", "1e3", "nan", "inf", "0x10", "1,5"})
        EXPECT_EQ(ReadNumber(text), std::nullopt) << text;
}

TEST(ReadSecondsTest, TakesDigitsOnly)
{
    EXPECT_EQ(ReadSeconds("0"), 0);
    EXPECT_EQ(ReadSeconds("4102444800"), 4102444800); // past 32 bits
    for (const char *text : {"", "-1", "+1", " 1", "1 ", "1.0", "0x1", "9223372036854775808"})
        EXPECT_EQ(ReadSeconds(text), std::nullopt) << text;
}

struct SizeCase {
    const char *text;
    std::optional<int64_t> bytes;
};

const SizeCase kSizes[] = {
    {"0", 0},
    {"1000", 1000},
    {"1k", 1024},
    {"512M", 536870912},
    {"2G", 2147483648},
    {"1GiB", 1073741824},
    {"1gb", 1073741824},
    {"1T", 1099511627776},
    {"7B", 7},
    {"", std::nullopt},
    {"G", std::nullopt},
    {"-1", std::nullopt},
    {"1.5G", std::nullopt},
    {"1KM", std::nullopt},
    {"1MK", std::nullopt},
    {"10000000T", std::nullopt}, // past 2^63
};

struct LengthCase {
    const char *text;
    std::optional<double> points;
};

const LengthCase kLengths[] = {
    {"9", 9},
    {"9pt", 9},
    {"0.5in", 36},
    {"25.4mm", 72},
    {"-1in", -72},
    {"", std::nullopt},
    {"mm", std::nullopt},
    {"3cm", std::nullopt},
    {"3 mm", std::nullopt},
    {"3mmpt", std::nullopt},
};

TEST(ReadLengthTest, IsInPointsUnlessAUnitIsSaid)
{
    for (const LengthCase &row : kLengths) {
        const std::optional<double> length = ReadLength(row.text);
        ASSERT_EQ(length.has_value(), row.points.has_value()) << row.text;
        EXPECT_NEAR(length.value_or(0), row.points.value_or(0), 1e-9) << row.text;
    }
}

struct PageSizeCase {
    const char *text;
    double width, height; // points; 0: it is no size
};

const PageSizeCase kPageSizes[] = {
    {"letter", 612, 792},
    {"Letter-landscape", 792, 612},
    {"tabloid", 792, 1224},
    {"a4", 595.275591, 841.889764},
    {"600x800", 600, 800},
    {"8.5x11in", 612, 792},
    {"8.5inx11in", 612, 792},
    {"1inx254mm", 72, 720},
    {"254x2in", 18288, 144},
    {"folio", 0, 0},
    {"a4-portrait", 0, 0},
    {"x5", 0, 0},
    {"5x", 0, 0},
    {"5x5x5", 0, 0},
    {"5", 0, 0},
    {"", 0, 0},
};

TEST(ReadPageSizeTest, TakesNamesAndSides)
{
    for (const PageSizeCase &row : kPageSizes) {
        const std::optional<PageSize> size = ReadPageSize(row.text);
        ASSERT_EQ(size.has_value(), row.width != 0) << row.text;
        EXPECT_NEAR(size.value_or(PageSize()).width, row.width, 1e-5) << row.text;
        EXPECT_NEAR(size.value_or(PageSize()).height, row.height, 1e-5) << row.text;
    }
}

TEST(ReadSizeTest, CountsInPowersOf1024)
{
    for (const SizeCase &size : kSizes)
        EXPECT_EQ(ReadSize(size.text), size.bytes) << size.text;
}

TEST(SizeTextTest, TakesTheLargestWholeUnit)
{
    EXPECT_EQ(SizeText(int64_t{1} << 30), "1 GiB");
    EXPECT_EQ(SizeText(int64_t{1536} << 20), "1536 MiB");
    EXPECT_EQ(SizeText(1001), "1001 bytes");
}

struct ColourCase {
    const char *text;
    std::optional<Rgb> rgb;
};

const ColourCase kColours[] = {
    {"white", Rgb{255, 255, 255}}, {"Teal", Rgb{0, 128, 128}},
    {"#fff", Rgb{255, 255, 255}},  {"#1aF", Rgb{0x11, 0xAA, 0xFF}},
    {"#0a0B0c", Rgb{10, 11, 12}},  {"", std::nullopt},
    {"#", std::nullopt},           {"#ffff", std::nullopt},
    {"#ggg", std::nullopt},        {"#+1+1+1", std::nullopt},
    {"#-1-1-1", std::nullopt},     {"none", std::nullopt},
    {"reddish", std::nullopt},
};

TEST(ReadColourTest, KnowsNamesAndHexadecimal)
{
    for (const ColourCase &colour : kColours)
        EXPECT_EQ(ReadColour(colour.text), colour.rgb) << colour.text;
}

TEST(ReadBoxTest, TakesFourSidesAsTheyAre)
{
    const std::optional<Box> box = ReadBox("10,-20.5,5,0");
    ASSERT_TRUE(box.has_value());
    EXPECT_EQ(box->left, 10);
    EXPECT_EQ(box->bottom, -20.5);
    EXPECT_EQ(box->right, 5);
    EXPECT_EQ(box->top, 0);
    for (const char *text : {"", "1,2,3", "1,2,3,", "1,2,3,4,", "1,2,3,4,5", "1 2 3 4", "a,b,c,d", ",,,"})
        EXPECT_FALSE(ReadBox(text).has_value()) << text;
}

TEST(ReadDayTest, IsInUtc)
{
    EXPECT_EQ(ReadDay("1970-01-02"), 86400);
    EXPECT_EQ(ReadDay("1970-01-01T00:00:05"), 5);
    EXPECT_EQ(ReadDay("2000-03-01 01:30"), 951868800 + 5400); // the day after the 29th of February
    for (const char *none :
         {"", "1969-12-31", "2026-02-30", "2026-11-22T25:00", "22 November 2026", "3/5/94", "T"})
        EXPECT_EQ(ReadDay(none), std::nullopt) << none;
}

} // namespace

} // namespace vxhost
