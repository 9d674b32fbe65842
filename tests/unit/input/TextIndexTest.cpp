// The index of a text beside a look at every byte.
#include "plugin/input/TextIndex.h"

#include <gtest/gtest.h>

#include <array>
#include <random>

namespace
{

using namespace vx;

using Block = std::array<uint8_t, kIndexBlock>;

void ExpectTwins(const Block &text)
{
    const BlockMarks plain = MarkBlockPlainly(text.data());
    for (const auto mark : {MarkBlock, MarkBlockByWords}) {
        const BlockMarks quick = mark(text.data());
        ASSERT_EQ(quick.lineEnds, plain.lineEnds);
        ASSERT_EQ(quick.spaces, plain.spaces);
    }
}

TEST(MarkBlockTest, PlainMarksAreThoseOfLineEndsAndWhiteSpace)
{
    Block text;
    text.fill('x');
    text[0] = '\n';
    text[1] = '\t';
    text[31] = '\r';
    text[62] = '\v';
    text[63] = ' ';
    const BlockMarks marks = MarkBlockPlainly(text.data());
    EXPECT_EQ(marks.lineEnds, 0x80000001u);
    EXPECT_EQ(marks.spaces, 0xC000000080000003u);
}

TEST(MarkBlockTest, MarksEveryByteInEveryPlaceAsPlainly)
{
    for (const uint8_t around : {uint8_t{'x'}, uint8_t{' '}, uint8_t{0xFF}})
        for (size_t place = 0; place < kIndexBlock; ++place)
            for (int byte = 0; byte < 256; ++byte) {
                Block text;
                text.fill(around);
                text[place] = static_cast<uint8_t>(byte);
                ASSERT_NO_FATAL_FAILURE(ExpectTwins(text));
            }
}

TEST(MarkBlockTest, MarksAnyBytesAsPlainly)
{
    std::mt19937 random(3);
    for (int i = 0; i < 20000; ++i) {
        Block text;
        for (uint8_t &byte : text)
            byte = static_cast<uint8_t>(i % 2 == 0 ? random() : random() % 34);
        ASSERT_NO_FATAL_FAILURE(ExpectTwins(text));
    }
}

TEST(FindMarkTest, IsTheFirstMarkOfTheRange)
{
    std::mt19937 random(4);
    for (int i = 0; i < 2000; ++i) {
        std::array<uint8_t, kIndexedBytes> text;
        text.fill('x');
        for (auto marks = random() % 12; marks > 0; --marks)
            text[random() % text.size()] = random() % 2 == 0 ? '\n' : ' ';
        TextIndex index = {};
        IndexText(text.data(), kIndexedBytes, &index);
        for (int32_t from = 0; from < kIndexedBytes; ++from) {
            const auto end = static_cast<int32_t>(random() % (kIndexedBytes + 1));
            int32_t expected = from;
            while (expected < end && text[static_cast<size_t>(expected)] != '\n')
                ++expected;
            ASSERT_EQ(FindMark(&index.lineEnds, from, end), end < from ? end : expected)
                << from << " to " << end;
        }
    }
}

TEST(MarksFromTest, AreThoseOfTheNextBytes)
{
    std::array<uint8_t, kIndexedBytes> text;
    std::mt19937 random(5);
    for (uint8_t &byte : text)
        byte = random() % 3 == 0 ? ' ' : 'x';
    TextIndex index = {};
    IndexText(text.data(), kIndexedBytes, &index);
    for (int32_t from = 0; from < kIndexedBytes; ++from) {
        const uint64_t marks = MarksFrom(&index.spaces, from);
        for (int32_t i = 0; i < kIndexBlock; ++i) {
            const auto at = static_cast<size_t>(from + i);
            ASSERT_EQ(marks >> i & 1, at < text.size() && text[at] == ' ' ? 1u : 0u) << from << " + " << i;
        }
    }
}

// A line end that is added behind the text.
TEST(AddMarkTest, MarksOneByteMore)
{
    TextIndex index = {};
    for (const int32_t at : {0, 63, 64, 499}) {
        AddMark(&index.spaces, at);
        EXPECT_EQ(FindMark(&index.spaces, at, kIndexedBytes), at);
    }
    EXPECT_EQ(FindMark(&index.spaces, 65, kIndexedBytes), 499);
}

} // namespace
