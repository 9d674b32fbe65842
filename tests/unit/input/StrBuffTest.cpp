// An arena for text: appending, growing in place, giving back, running full.
#include "plugin/input/StrBuff.h"

#include "tests/unit/input/HeapForTests.h"
#include "tests/unit/input/Views.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using namespace vx;
using namespace vxtest;

class StringBufferTest : public testing::Test
{
  protected:
    static constexpr int32_t kCapacity = 10;

    StringBufferTest() { EXPECT_TRUE(InitializeStringBuffer(&buffer, kCapacity, &heap.procs)); }

    ~StringBufferTest() override
    {
        TerminateStringBuffer(&buffer);
        EXPECT_EQ(heap.live, 0);
    }

    BigString Append(const char *text)
    {
        const BigString string = View(text);
        BigString result = {};
        BufferAppendString(&buffer, &string, &result);
        return result;
    }

    HeapForTests heap;
    StringBuffer buffer = {};
};

TEST_F(StringBufferTest, StartsEmpty)
{
    EXPECT_EQ(heap.lastSize, kCapacity);
    EXPECT_EQ(buffer.end, buffer.base);
    EXPECT_EQ(buffer.capacity, kCapacity);
    EXPECT_FALSE(OverflowedStringBuffer(&buffer));
}

TEST_F(StringBufferTest, TerminationClearsItsFields)
{
    HeapForTests other;
    StringBuffer terminated = {};
    ASSERT_TRUE(InitializeStringBuffer(&terminated, 5, &other.procs));
    TerminateStringBuffer(&terminated);
    EXPECT_EQ(other.live, 0);
    EXPECT_EQ(terminated.base, nullptr);
    EXPECT_EQ(terminated.end, nullptr);
    EXPECT_EQ(terminated.capacity, 0);
}

TEST_F(StringBufferTest, InitializationFailsWithoutMemory)
{
    HeapForTests none;
    none.refused = 1;
    StringBuffer failed = {};
    EXPECT_FALSE(InitializeStringBuffer(&failed, 5, &none.procs));
}

TEST_F(StringBufferTest, AppendedStringsStandOneAfterAnother)
{
    const BigString first = Append("abc");
    const BigString second = Append("de");
    EXPECT_EQ(Text(first), "abc");
    EXPECT_EQ(Text(second), "de");
    EXPECT_EQ(first.text, buffer.base);
    EXPECT_EQ(second.text, buffer.base + 3);
    EXPECT_EQ(MarkStringBuffer(&buffer), buffer.base + 5);
}

TEST_F(StringBufferTest, AppendingMoreThanFitsTruncates)
{
    (void)Append("123456");
    const BigString cut = Append("abcdefghij");
    EXPECT_EQ(Text(cut), "abcd");
    EXPECT_TRUE(OverflowedStringBuffer(&buffer));
    const BigString none = Append("x");
    EXPECT_EQ(none.length, 0);
    EXPECT_EQ(none.text, buffer.base + kCapacity);
}

TEST_F(StringBufferTest, FillingItExactlyIsNoOverflow)
{
    EXPECT_EQ(Text(Append("0123456789")), "0123456789");
    EXPECT_FALSE(OverflowedStringBuffer(&buffer));
}

TEST_F(StringBufferTest, AppendingNothingIsNoOverflowEvenWhenFull)
{
    (void)Append("0123456789");
    EXPECT_EQ(Append("").length, 0);
    EXPECT_FALSE(OverflowedStringBuffer(&buffer));
}

TEST_F(StringBufferTest, CharactersAreAppendedUntilItIsFull)
{
    BigString result = {};
    for (int i = 0; i < kCapacity; ++i) {
        BufferAppendCharacter(&buffer, static_cast<uint8_t>('a' + i), &result);
        EXPECT_EQ(result.length, 1);
        EXPECT_EQ(result.text, buffer.base + i);
    }
    EXPECT_FALSE(OverflowedStringBuffer(&buffer));
    BufferAppendCharacter(&buffer, 'x', &result);
    EXPECT_EQ(result.length, 0);
    EXPECT_EQ(result.text, buffer.base + kCapacity);
    EXPECT_TRUE(OverflowedStringBuffer(&buffer));
    EXPECT_EQ(Text(buffer.base, kCapacity), "abcdefghij");
}

TEST_F(StringBufferTest, ANewStringIsEmptyAtTheEnd)
{
    (void)Append("abc");
    BigString fresh = {};
    BufferNewBigString(&buffer, &fresh);
    EXPECT_EQ(fresh.text, buffer.base + 3);
    EXPECT_EQ(fresh.length, 0);
    EXPECT_TRUE(BufferEndsWithString(&buffer, &fresh));
}

TEST_F(StringBufferTest, ContainsOnlyWhatWasAppended)
{
    const BigString first = Append("abc");
    const BigString second = Append("de");
    EXPECT_TRUE(BufferContainsString(&buffer, &first));
    EXPECT_TRUE(BufferContainsString(&buffer, &second));
    const BigString past = {second.text, second.length + 1};
    EXPECT_FALSE(BufferContainsString(&buffer, &past));
    const BigString elsewhere = View("abc");
    EXPECT_FALSE(BufferContainsString(&buffer, &elsewhere));
    const BigString emptyAtEnd = {buffer.end, 0};
    EXPECT_TRUE(BufferContainsString(&buffer, &emptyAtEnd));
}

TEST_F(StringBufferTest, EndsOnlyWithTheMostRecentString)
{
    const BigString first = Append("abc");
    EXPECT_TRUE(BufferEndsWithString(&buffer, &first));
    const BigString second = Append("de");
    EXPECT_FALSE(BufferEndsWithString(&buffer, &first));
    EXPECT_TRUE(BufferEndsWithString(&buffer, &second));
}

TEST_F(StringBufferTest, ForcingTheLastStringCopiesNothing)
{
    (void)Append("abc");
    const BigString last = Append("de");
    BigString forced = {};
    BufferForceStringToEnd(&buffer, &last, &forced);
    EXPECT_EQ(forced.text, last.text);
    EXPECT_EQ(forced.length, 2);
    EXPECT_EQ(MarkStringBuffer(&buffer), buffer.base + 5);
}

TEST_F(StringBufferTest, ForcingAnEarlierStringCopiesIt)
{
    const BigString first = Append("abc");
    (void)Append("de");
    BigString forced = {};
    BufferForceStringToEnd(&buffer, &first, &forced);
    EXPECT_EQ(forced.text, buffer.base + 5);
    EXPECT_EQ(Text(forced), "abc");
    EXPECT_EQ(Text(buffer.base, 8), "abcdeabc");
}

TEST_F(StringBufferTest, TheLastStringGrowsByACharacterInPlace)
{
    const BigString string = Append("abc");
    BigString grown = {};
    BufferAppendStringAndCharacter(&buffer, &string, 'd', &grown);
    EXPECT_EQ(grown.text, string.text);
    EXPECT_EQ(Text(grown), "abcd");
    BufferAppendStringAndCharacter(&buffer, &grown, 'e', &grown);
    EXPECT_EQ(Text(grown), "abcde");
    EXPECT_EQ(MarkStringBuffer(&buffer), buffer.base + 5);
}

TEST_F(StringBufferTest, TheLastStringOfAFullBufferKeepsItsLength)
{
    const BigString string = Append("0123456789");
    BigString grown = {};
    BufferAppendStringAndCharacter(&buffer, &string, 'x', &grown);
    EXPECT_EQ(grown.text, string.text);
    EXPECT_EQ(grown.length, 10);
    EXPECT_TRUE(OverflowedStringBuffer(&buffer));
}

TEST_F(StringBufferTest, TextFromElsewhereIsCopiedWithItsCharacter)
{
    (void)Append("ab");
    const BigString elsewhere = View("cd");
    BigString grown = {};
    BufferAppendStringAndCharacter(&buffer, &elsewhere, 'e', &grown);
    EXPECT_EQ(grown.text, buffer.base + 2);
    EXPECT_EQ(Text(grown), "cde");
}

TEST_F(StringBufferTest, TwoStringsAreJoined)
{
    const BigString first = Append("abc");
    const BigString second = View("de");
    BigString joined = {};
    BufferAppendStringAndString(&buffer, &first, &second, &joined);
    EXPECT_EQ(joined.text, first.text);
    EXPECT_EQ(Text(joined), "abcde");
}

TEST_F(StringBufferTest, JoiningTruncatesTheSecond)
{
    const BigString first = Append("12345678");
    const BigString second = View("abcde");
    BigString joined = {};
    BufferAppendStringAndString(&buffer, &first, &second, &joined);
    EXPECT_EQ(Text(joined), "12345678ab");
    EXPECT_TRUE(OverflowedStringBuffer(&buffer));
}

TEST_F(StringBufferTest, OnlyTheLastStringIsGivenBack)
{
    const BigString first = Append("abc");
    const BigString second = Append("de");
    BufferReturnString(&buffer, &first);
    EXPECT_EQ(MarkStringBuffer(&buffer), buffer.base + 5);
    BufferReturnString(&buffer, &second);
    EXPECT_EQ(MarkStringBuffer(&buffer), buffer.base + 3);
    BufferReturnString(&buffer, &first);
    EXPECT_EQ(MarkStringBuffer(&buffer), buffer.base);
}

TEST_F(StringBufferTest, AResetGivesBackWhatFollowsTheMark)
{
    (void)Append("abc");
    uint8_t *mark = MarkStringBuffer(&buffer);
    (void)Append("defghijklm");
    ASSERT_TRUE(OverflowedStringBuffer(&buffer));
    ResetStringBuffer(&buffer, mark);
    EXPECT_EQ(MarkStringBuffer(&buffer), mark);
    EXPECT_FALSE(OverflowedStringBuffer(&buffer));
    EXPECT_EQ(Text(Append("xyz")), "xyz");
}

TEST_F(StringBufferTest, AResetToTheVeryEndCountsAsOverflow)
{
    (void)Append("0123456789");
    ASSERT_FALSE(OverflowedStringBuffer(&buffer));
    ResetStringBuffer(&buffer, MarkStringBuffer(&buffer));
    EXPECT_TRUE(OverflowedStringBuffer(&buffer));
    EXPECT_EQ(MarkStringBuffer(&buffer), buffer.base + kCapacity);
    ClearStringBuffer(&buffer);
    EXPECT_FALSE(OverflowedStringBuffer(&buffer));
    EXPECT_EQ(MarkStringBuffer(&buffer), buffer.base);
}

TEST_F(StringBufferTest, ReturningAnEmptyStringFromAFullBufferCountsAsOverflow)
{
    (void)Append("0123456789");
    const BigString empty = {buffer.end, 0};
    BufferReturnString(&buffer, &empty);
    EXPECT_TRUE(OverflowedStringBuffer(&buffer));
}

} // namespace
