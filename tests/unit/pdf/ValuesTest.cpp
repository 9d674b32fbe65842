#include "devices/pdf/Values.h"
#include "tests/support/CaseName.h"
#include "tests/unit/pdf/DrawnPage.h"

#include <gtest/gtest.h>

#include <vector>

using namespace vxhost::pdf;
using vxtest::CaseName;

namespace
{

struct TextCase {
    const char *name;
    std::string text;
    std::string value;
};

const TextCase kNames[] = {
    {"Plain", "F1", "/F1"},
    {"OfDelimitersAndSpaces", "a b(c)<d>[e]{f}/g%", "/a#20b#28c#29#3Cd#3E#5Be#5D#7Bf#7D#2Fg#25"},
    {"OfTheEscapeItself", "#1 #20", "/#231#20#2320"},
    {"BeyondAscii", "Gr\xC3\xBCn\x7F\x01", "/Gr#C3#BCn#7F#01"},
    {"OfOthers", "!\"$&'*+,-.:;=?@\\^_`|~", "/!\"$&'*+,-.:;=?@\\^_`|~"},
};

class PdfNames : public testing::TestWithParam<TextCase>
{
};

TEST_P(PdfNames, AreEscaped)
{
    EXPECT_EQ(NameValue(GetParam().text), GetParam().value);
    EXPECT_EQ(QPDFObjectHandle::parse(NameValue(GetParam().text)).getName(),
              QPDFObjectHandle::newName("/" + GetParam().text).getName());
}
INSTANTIATE_TEST_SUITE_P(Pdf, PdfNames, testing::ValuesIn(kNames), CaseName());

const TextCase kTexts[] = {
    {"Plain", "by hand", "(by hand)"},
    {"Nothing", "", "()"},
    {"OfBrackets", "a(b))\\c", "(a\\(b\\)\\)\\\\c)"},
    {"BeyondAscii", "Gr\xC3\xBCn", "<FEFF0047007200FC006E>"},
    {"BeyondSixteenBits", "\xF0\x9D\x84\x9E", "<FEFFD834DD1E>"},
    {"Controls", "a\nb", "<FEFF0061000A0062>"},
    {"NotUtf8", "a\xFF\xC3", "<FEFF0061FFFDFFFD>"},
};

class PdfTexts : public testing::TestWithParam<TextCase>
{
};

TEST_P(PdfTexts, AreStrings)
{
    EXPECT_EQ(TextValue(GetParam().text), GetParam().value);
}
INSTANTIATE_TEST_SUITE_P(Pdf, PdfTexts, testing::ValuesIn(kTexts), CaseName());

TEST(PdfValues, StandInArrays)
{
    EXPECT_EQ(ArrayValue({0, -1.5, 0.25}), "[0 -1.5 .25]");
    EXPECT_EQ(ArrayValue(std::vector<Reference>{{3}, {12}}), "[3 0 R 12 0 R]");
    EXPECT_EQ(ArrayValue(std::vector<Reference>()), "[]");
}

TEST(PdfValues, StandInDictionariesAsCloseAsTheyMay)
{
    EXPECT_TRUE(Dictionary().IsEmpty());
    EXPECT_EQ(Dictionary().Value(), "<<>>");
    Dictionary dictionary;
    dictionary.Add("A b", "/Name").Add("N", 2).Add("R", Reference{7}).Add("T", "true").Add("E", "[]");
    EXPECT_FALSE(dictionary.IsEmpty());
    EXPECT_EQ(dictionary.Value(), "<</A#20b/Name/N 2/R 7 0 R/T true/E[]>>");
}

} // namespace
