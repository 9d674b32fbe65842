// The host's string lists, as data and as the plug-in reads them.
#include "host/resources/StringLists.h"

#include "host/toolbox/HostContext.h"
#include "host/toolbox/PascalString.h"
#include "tests/support/CaseName.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace vxhost
{
namespace
{

struct ListCase {
    const char *name;
    int16_t number;
    size_t least, most;
    const char *first;
};

const ListCase kLists[] = {
    {"FiveProblemsHaveTwoTextsEach", kVXProblemStrings, 10, 10, "pattern replaced"},
    {"JapaneseFonts", kVXJapaneseFonts, 3, 100, "Ryumin-Light"},
    {"OtherFonts", kVXOtherFonts, 3, 100, "Helvetica"},
    {"ReplacedFaces", kVXReplacedFaces, 3, 100, "Arial"},
    {"EncodingSuffixes", kVXEncodingSuffixes, 4, 4, "-83pv-RKSJ"},
    {"OrientationSuffixes", kVXOrientationSuffixes, 2, 2, "-H"},
};

class StringLists : public testing::TestWithParam<ListCase>
{
};

TEST_P(StringLists, HasItsStringsAndNoEmptyOne)
{
    const auto list = FindStringList(GetParam().number);
    ASSERT_GE(list.size(), GetParam().least);
    EXPECT_LE(list.size(), GetParam().most);
    EXPECT_EQ(list[0], GetParam().first);
    for (const std::string_view string : list)
        EXPECT_FALSE(string.empty());
}

TEST_P(StringLists, ReadsTheSameThroughTheToolbox)
{
    HostContext host;
    const HostScope scope(&host);
    const auto list = FindStringList(GetParam().number);
    const Handle resource = GetResource(kVXStringListType, GetParam().number);
    ASSERT_NE(resource, nullptr);
    int16_t count = 0;
    std::memcpy(&count, *resource, sizeof count);
    EXPECT_EQ(static_cast<size_t>(count), list.size());
    for (int16_t index = 1; index <= count; ++index) {
        uint8_t string[256];
        GetIndString(string, GetParam().number, index);
        EXPECT_EQ(PascalView(string), list[static_cast<size_t>(index) - 1]);
    }
}

INSTANTIATE_TEST_SUITE_P(Host, StringLists, testing::ValuesIn(kLists), vxtest::CaseName());

TEST(StringListsTest, EveryReplacedFaceHasItsReplacement)
{
    EXPECT_EQ(FindStringList(kVXReplacedFaces).size(), FindStringList(kVXReplacingFaces).size());
}

TEST(StringListsTest, ThereAreNoOthers)
{
    EXPECT_TRUE(FindStringList(16001).empty());
}

TEST(StringListsTest, AProblemIsFoundByItsTitle)
{
    const auto texts = FindStringList(kVXProblemStrings);
    for (int problem = kVXProblemPattern; problem <= kVXProblemFont; ++problem)
        EXPECT_EQ(FindProblem(texts[static_cast<size_t>(2 * problem - 2)]), problem);
    EXPECT_EQ(FindProblem(texts[1]), 0) << "a message is no title";
    EXPECT_EQ(FindProblem(""), 0);
}

TEST(StringListsTest, ACountIsInTheMachinesOrderAndAStringHasItsLengthFirst)
{
    const int16_t two = 2;
    std::string expected(reinterpret_cast<const char *>(&two), sizeof two);
    expected += "\3abc";
    expected += '\0';
    const std::vector<char> packed = PackStringList({"abc", ""});
    EXPECT_EQ(std::string(packed.begin(), packed.end()), expected);
}

TEST(StringListsTest, ALongStringIsCut)
{
    const std::string longOne(300, 'x');
    const std::vector<char> packed = PackStringList({longOne});
    EXPECT_EQ(packed.size(), 2u + 1 + 255);
    EXPECT_EQ(static_cast<uint8_t>(packed[2]), 255);
}

} // namespace
} // namespace vxhost
