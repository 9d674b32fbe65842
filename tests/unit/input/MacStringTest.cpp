// Length-prefixed strings, and what is read of the host's string lists.
#include "plugin/input/MacString.h"

#include "host/toolbox/HostContext.h"
#include "tests/support/CaseName.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>
#include <string_view>

namespace
{

using namespace vx;
using namespace vxtest;

using Buffer = std::array<uint8_t, 2 * kPascalStringSize>;

Buffer Prefixed(std::string_view text)
{
    Buffer buffer = {};
    buffer[0] = static_cast<uint8_t>(text.size());
    memcpy(&buffer[1], text.data(), text.size());
    return buffer;
}

std::string Contents(const uint8_t *string)
{
    return {reinterpret_cast<const char *>(string + 1), string[0]};
}

struct JoinCase {
    const char *name, *destination, *source, *appended, *inserted;
};

class Joining : public testing::TestWithParam<JoinCase>
{
};

TEST_P(Joining, AppendsOrInserts)
{
    const Buffer source = Prefixed(GetParam().source);
    Buffer appended = Prefixed(GetParam().destination);
    pstrcat(appended.data(), source.data());
    EXPECT_EQ(Contents(appended.data()), GetParam().appended);

    Buffer inserted = Prefixed(GetParam().destination);
    pstrinsert(inserted.data(), source.data());
    EXPECT_EQ(Contents(inserted.data()), GetParam().inserted);
}

const JoinCase kJoins[] = {
    {"TwoWords", "abc", "de", "abcde", "deabc"},
    {"ALongSourceShiftsFar", "ab", "0123456789", "ab0123456789", "0123456789ab"},
    {"AnOverlappingShiftKeepsTheText", "0123456789", "x", "0123456789x", "x0123456789"},
    {"EmptyDestination", "", "de", "de", "de"},
    {"EmptySource", "abc", "", "abc", "abc"},
    {"BothEmpty", "", "", "", ""},
};
INSTANTIATE_TEST_SUITE_P(MacString, Joining, testing::ValuesIn(kJoins), CaseName());

TEST(MacStringTest, JoiningGoesUpToTheLongestSafeString)
{
    Buffer destination = Prefixed(std::string(100, 'a'));
    const Buffer source = Prefixed(std::string(27, 'b'));
    pstrcat(destination.data(), source.data());
    EXPECT_EQ(Contents(destination.data()), std::string(100, 'a') + std::string(27, 'b'));
}

TEST(MacStringTest, LengthsAddAsUnsignedBytes)
{
    Buffer destination = Prefixed(std::string(127, 'a'));
    const Buffer source = Prefixed(std::string(127, 'b'));
    pstrcat(destination.data(), source.data());
    EXPECT_EQ(destination[0], 254);
    EXPECT_EQ(Contents(destination.data()), std::string(127, 'a') + std::string(127, 'b'));
}

TEST(MacStringTest, CopyingTakesBytesAndLength)
{
    Buffer destination = Prefixed("something longer");
    const Buffer source = Prefixed("abc");
    pstrcpy(destination.data(), source.data());
    EXPECT_EQ(Contents(destination.data()), "abc");

    const Buffer empty = Prefixed("");
    pstrcpy(destination.data(), empty.data());
    EXPECT_EQ(Contents(destination.data()), "");
}

TEST(MacStringTest, PackedListsAreWalkedByTheirLengths)
{
    const uint8_t list[] = "\002ab\000\003cde\001f";
    EXPECT_EQ(pstrIndex(list, 1), list);
    EXPECT_EQ(pstrIndex(list, 2), list + 3);
    EXPECT_EQ(pstrIndex(list, 3), list + 4);
    EXPECT_EQ(Contents(pstrIndex(list, 4)), "f");
}

constexpr int16_t kList = 16000;
constexpr int16_t kEmptyList = 16001;
constexpr int16_t kNoList = 31999;

class StringLists : public testing::Test
{
  protected:
    StringLists() : scope(&host)
    {
        host.stringLists[kList] = {"one", "", std::string(255, 'x')};
        host.stringLists[kEmptyList] = {};
    }

    vxhost::HostContext host;
    const vxhost::HostScope scope;
};

TEST_F(StringLists, AreCounted)
{
    EXPECT_EQ(countString(kList), 3);
    EXPECT_EQ(countString(kEmptyList), 0);
    EXPECT_EQ(countString(kNoList), 0);
}

TEST_F(StringLists, AreReadFromOne)
{
    Buffer text = Prefixed("old");
    EXPECT_EQ(getString(kList, 1, text.data()), kList);
    EXPECT_EQ(Contents(text.data()), "one");
    EXPECT_EQ(getString(kList, 2, text.data()), kList);
    EXPECT_EQ(Contents(text.data()), "");
    EXPECT_EQ(getString(kList, 3, text.data()), kList);
    EXPECT_EQ(Contents(text.data()), std::string(255, 'x'));
}

struct AbsentCase {
    const char *name;
    int16_t list, index;
};

class AbsentEntries : public StringLists, public testing::WithParamInterface<AbsentCase>
{
};

TEST_P(AbsentEntries, AreEmptyStrings)
{
    Buffer text = Prefixed("old");
    EXPECT_EQ(getString(GetParam().list, GetParam().index, text.data()), GetParam().list);
    EXPECT_EQ(text[0], 0);
}

const AbsentCase kAbsent[] = {
    {"IndexZero", kList, 0},
    {"NegativeIndex", kList, -1},
    {"OnePastTheCount", kList, 4},
    {"TheLargestIndex", kList, INT16_MAX},
    {"AnEmptyListsFirst", kEmptyList, 1},
    {"NoSuchList", kNoList, 1},
};
INSTANTIATE_TEST_SUITE_P(MacString, AbsentEntries, testing::ValuesIn(kAbsent), CaseName());

} // namespace
