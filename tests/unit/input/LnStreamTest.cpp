// Lines of any length and line end, read through one small buffer.
#include "plugin/input/LnStream.h"

#include "tests/support/CaseName.h"
#include "tests/unit/input/TestReader.h"
#include "tests/unit/input/Views.h"

#include <vx/HostCall.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string>
#include <vector>

namespace
{

using namespace vx;
using namespace vxtest;

struct Stream {
    TestReader reader;
    LineStream lines;

    explicit Stream(const std::string &bytes, int32_t total = -1, ProgressProc progress = nullptr)
        : reader(bytes)
    {
        memset(static_cast<void *>(&lines), 0x5A, sizeof lines);
        InitializeLineStream(&lines, &reader.reader, total < 0 ? static_cast<int32_t>(bytes.size()) : total,
                             progress);
    }

    std::string Next()
    {
        EXPECT_TRUE(RefillLineStreamText(&lines));
        EXPECT_TRUE(IsTextAtLineStart(&lines));
        return std::string(Text(lines.text));
    }
};

TEST(LineStreamTest, ReadsNothingUntilAsked)
{
    const Stream stream("abc\n");
    EXPECT_TRUE(stream.reader.wanted.empty());
    EXPECT_EQ(stream.lines.text.length, 0);
    EXPECT_EQ(stream.lines.lineStart, stream.lines.buffer);
    EXPECT_EQ(stream.lines.text.text, stream.lines.buffer);
    EXPECT_EQ(stream.lines.fill, 0);
    EXPECT_EQ(stream.lines.next, 0);
    EXPECT_EQ(stream.lines.bytesRead, 0);
    EXPECT_EQ(stream.lines.flushProc, nullptr);
}

struct LinesCase {
    const char *name;
    std::string bytes;
    std::vector<std::string> lines; // all of them up to the first "%%EOF" that the stream adds
};

class Lines : public testing::TestWithParam<LinesCase>
{
};

void ExpectLines(Stream *stream, const std::vector<std::string> &lines)
{
    for (const std::string &line : lines)
        EXPECT_EQ(stream->Next(), line);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(stream->Next(), "%%EOF\n");
}

TEST_P(Lines, AreCutAtLineEnds)
{
    Stream stream(GetParam().bytes);
    ExpectLines(&stream, GetParam().lines);
}

const std::string kLong(498, 'x');

const LinesCase kLineCases[] = {
    {"AnEmptyStreamIsAtItsEnd", "", {}},
    {"LineFeedsEndLines", "a\nbc\n", {"a\n", "bc\n"}},
    {"CarriageReturnsEndLines", "a\rbc\r", {"a\r", "bc\r"}},
    {"BothTogetherEndTwoLines", "A\r\nB", {"A\r", "\n", "B\r"}},
    {"EmptyLinesAreLines", "\n\n\r", {"\n", "\n", "\r"}},
    {"TheLastLineGetsACarriageReturn", "a\nb", {"a\n", "b\r"}},
    {"AnEndOfFileCommentIsALineLikeAnother", "%%EOF\nx\n", {"%%EOF\n", "x\n"}},
    {"NulBytesAreBytes", std::string("a\0b\nc\0", 6), {std::string("a\0b\n", 4), std::string("c\0\r", 3)}},
    {"ALineThatFillsTheBufferIsWhole", kLong + "\nb\n", {kLong + "\n", "b\n"}},
    {"ALineOneByteLongerIsCut", kLong + "x\nb\n", {kLong + "x\r", "\n", "b\n"}},
    {"ALineTwoBytesLongerIsCut", kLong + "xy\nb\n", {kLong + "x\r", "y\n", "b\n"}},
    {"ALongLineComesInPieces",
     std::string(1200, 'x'),
     {std::string(499, 'x') + "\r", std::string(499, 'x') + "\r", std::string(202, 'x') + "\r"}},
    {"ALineAcrossTheBufferEndIsMovedTogether",
     std::string(400, 'a') + "\n" + std::string(300, 'b') + "\nc\n",
     {std::string(400, 'a') + "\n", std::string(300, 'b') + "\n", "c\n"}},
    {"ALongLineAfterAShortOneStartsItsPieceAfterTheMove",
     "a\n" + std::string(600, 'b') + "\n",
     {"a\n", std::string(499, 'b') + "\r", std::string(101, 'b') + "\n"}},
};
INSTANTIATE_TEST_SUITE_P(LineStream, Lines, testing::ValuesIn(kLineCases), CaseName());

TEST(LineStreamTest, TheTotalEndsTheDataThoughTheReaderHasMore)
{
    Stream stream("ab\ncd\nef\n", 4);
    ExpectLines(&stream, {"ab\n", "c\r"});
    EXPECT_EQ(stream.reader.position, 4u);
}

TEST(LineStreamTest, ATotalBelowZeroDeliversNothing)
{
    TestReader reader("ab\n");
    LineStream lines;
    InitializeLineStream(&lines, &reader.reader, INT32_MIN, nullptr);
    ASSERT_TRUE(RefillLineStreamText(&lines));
    EXPECT_EQ(Text(lines.text), "%%EOF\n");
    EXPECT_TRUE(reader.wanted.empty());
}

TEST(LineStreamTest, AtMostFourHundredNinetyNineBytesAreAskedFor)
{
    Stream stream(std::string(1200, 'x'));
    while (stream.Next() != "%%EOF\n")
        ;
    EXPECT_EQ(stream.reader.wanted, (std::vector<int32_t>{499, 499, 202}));
}

TEST(LineStreamTest, OnlyTheRoomBehindAPartialLineIsAskedFor)
{
    Stream stream(std::string(400, 'a') + "\n" + std::string(300, 'b') + "\n");
    (void)stream.Next(); // 401 of 499 bytes; 98 stay
    (void)stream.Next();
    EXPECT_EQ(stream.reader.wanted, (std::vector<int32_t>{499, 203})); // 499 - 98 would be past the total
    EXPECT_EQ(stream.lines.bytesRead, 702);
}

TEST(LineStreamTest, ShortReadsCutLinesWhereTheyStop)
{
    Stream stream("abcd\nef\n");
    stream.reader.mostAtOnce = 3;
    // The first read holds no line end, so a line end is added, as if the data ended there.
    ExpectLines(&stream, {"abc\r", "d\n", "ef\n"});
}

TEST(LineStreamTest, ANegativeCountIsNothing)
{
    Stream stream("abc\n");
    stream.reader.claimed = -100;
    EXPECT_EQ(stream.Next(), "%%EOF\n");
    EXPECT_EQ(stream.lines.bytesRead, 0);
    EXPECT_EQ(stream.Next(), "%%EOF\n");
}

// The total leaves room in the buffer, and what it holds there looks like lines.
TEST(LineStreamTest, ACountBeyondWhatWasAskedForFails)
{
    for (const int32_t claimed : {4, 5, 6, 498, 499}) {
        Stream stream("ab\ncd\n", 3);
        memset(stream.lines.buffer, '\n', sizeof stream.lines.buffer);
        stream.reader.claimed = claimed;
        EXPECT_FALSE(RefillLineStreamText(&stream.lines)) << claimed;
    }
}

TEST(LineStreamTest, ACountBeyondTheRoomBehindAPartialLineFails)
{
    Stream stream(std::string(400, 'a') + "\n" + std::string(900, 'b'));
    (void)stream.Next(); // 98 bytes stay
    stream.reader.claimed = 402;
    EXPECT_FALSE(RefillLineStreamText(&stream.lines));
}

TEST(LineStreamTest, ACountBeyondTheBufferFails)
{
    Stream stream(std::string(600, 'x'), 600);
    stream.reader.claimed = 500;
    EXPECT_FALSE(RefillLineStreamText(&stream.lines));
}

TEST(LineStreamTest, AnEnormousCountFails)
{
    Stream stream(std::string(600, 'x'), 600);
    stream.reader.claimed = INT32_MAX;
    EXPECT_FALSE(RefillLineStreamText(&stream.lines));
}

TEST(LineStreamTest, TheRestOfALineIsDropped)
{
    Stream stream("abc\nd\n");
    (void)stream.Next();
    TrimFirstCharacter(&stream.lines.text);
    EXPECT_FALSE(IsTextAtLineStart(&stream.lines));
    EXPECT_EQ(stream.Next(), "d\n");
}

// A ProgressProc is handed nothing of the host's, so its calls are noted here.
std::vector<std::pair<int32_t, int32_t>> progressCalls;
void NoteProgress(int32_t bytesRead, int32_t total)
{
    progressCalls.emplace_back(bytesRead, total);
}

TEST(LineStreamTest, ProgressIsToldBeforeEveryRefill)
{
    progressCalls.clear();
    Stream stream("a\nb\n" + std::string(600, 'c'), -1, NoteProgress);
    while (stream.Next() != "%%EOF\n")
        ;
    // a and b come from the first 499 bytes; the partial line has room for 4 more, then 101 are left, then none.
    const std::vector<std::pair<int32_t, int32_t>> told = {
        {0, 604}, {499, 604}, {499, 604}, {503, 604}, {604, 604}};
    EXPECT_EQ(progressCalls, told);
}

struct Flush {
    const LineStream *lines;
    int calls = 0;
    std::string buffered; // what the buffer held at the last call
};

void NoteFlush(void *refcon)
{
    auto *flush = static_cast<Flush *>(refcon);
    ++flush->calls;
    flush->buffered.assign(reinterpret_cast<const char *>(flush->lines->buffer),
                           static_cast<size_t>(flush->lines->fill));
}

TEST(LineStreamTest, FlushingComesOnlyBeforeBytesMove)
{
    const std::string first = "a\nb\n" + std::string(495, 'c');
    Stream stream(first + "cc\n");
    Flush flush = {&stream.lines, 0, ""};
    SetLineStreamFlushingProc(&stream.lines, NoteFlush, &flush);

    EXPECT_EQ(stream.Next(), "a\n");
    EXPECT_EQ(flush.calls, 1); // the first read overwrites the buffer too
    EXPECT_EQ(flush.buffered, "");
    EXPECT_EQ(stream.Next(), "b\n");
    EXPECT_EQ(flush.calls, 1) << "a whole line was buffered";
    EXPECT_EQ(stream.Next(), std::string(497, 'c') + "\n");
    EXPECT_EQ(flush.calls, 2);
    EXPECT_EQ(flush.buffered, first) << "called after bytes were moved or read";

    SetLineStreamFlushingProc(&stream.lines, nullptr, nullptr);
    EXPECT_EQ(stream.Next(), "%%EOF\n");
    EXPECT_EQ(flush.calls, 2);
}

struct ScanCase {
    const char *name, *text;
    int32_t count, found; // found: offset of the line end, or -1
};

class ScanningForALineEnd : public testing::TestWithParam<ScanCase>
{
};

TEST_P(ScanningForALineEnd, FindsTheFirst)
{
    const auto *text = reinterpret_cast<const uint8_t *>(GetParam().text);
    const uint8_t *found = ScanForLineEnd(text, GetParam().count);
    EXPECT_EQ(found, GetParam().found < 0 ? nullptr : text + GetParam().found);
}

const ScanCase kScans[] = {
    {"ALineFeed", "ab\ncd\n", 6, 2},        {"ACarriageReturnFirst", "ab\r\n", 4, 2},
    {"AtTheVeryStart", "\nab", 3, 0},       {"AsTheLastByte", "abc\n", 4, 3},
    {"NoneWithinTheCount", "abc\n", 3, -1}, {"NothingToLookAt", "\n", 0, -1},
    {"ANegativeCount", "\n", -1, -1},       {"OtherControlsAreNoLineEnds", "\t\v\f\x0E\x09", 5, -1},
};
INSTANTIATE_TEST_SUITE_P(LineStream, ScanningForALineEnd, testing::ValuesIn(kScans), CaseName());

// Every byte that is no line end is passed over, at every alignment and length.
TEST(ScanningForALineEndTest, LooksAtEveryByte)
{
    // Near misses: line ends with the high bit, and the bytes beside them.
    constexpr uint8_t kOthers[] = {0x8A, 0x8D, 0x0B, 0x0C, 0x0E, 0x09, 0x00, 0xFF, 0x4A, 0x2D, 0x1A};
    std::vector<uint8_t> bytes(64);
    for (size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = kOthers[i % std::size(kOthers)];
    for (size_t start = 0; start < 16; ++start) {
        const auto count = static_cast<int32_t>(bytes.size() - start);
        EXPECT_EQ(ScanForLineEnd(&bytes[start], count), nullptr);
        for (size_t at = start; at < bytes.size(); ++at) {
            for (const uint8_t end : {uint8_t{10}, uint8_t{13}}) {
                const uint8_t kept = bytes[at];
                bytes[at] = end;
                EXPECT_EQ(ScanForLineEnd(&bytes[start], count), &bytes[at]);
                bytes[at] = kept;
            }
        }
    }
}

TEST(SkipToNonWhiteSpaceTest, RefillsUntilThereIsText)
{
    Stream stream(" \t\r\n\n   \n  a b\n");
    ASSERT_TRUE(SkipToNonWhiteSpace(&stream.lines));
    EXPECT_EQ(Text(stream.lines.text), "a b\n");
    EXPECT_FALSE(IsTextAtLineStart(&stream.lines)) << "the line began with blanks";
}

TEST(SkipToNonWhiteSpaceTest, StaysWhereThereIsText)
{
    Stream stream("a\nb\n");
    ASSERT_TRUE(SkipToNonWhiteSpace(&stream.lines));
    EXPECT_TRUE(IsTextAtLineStart(&stream.lines));
    ASSERT_TRUE(SkipToNonWhiteSpace(&stream.lines));
    EXPECT_EQ(Text(stream.lines.text), "a\n");
    EXPECT_TRUE(IsTextAtLineStart(&stream.lines));
}

TEST(SkipToNonWhiteSpaceTest, FindsTheAddedEndOfFile)
{
    Stream stream("  \n \n");
    ASSERT_TRUE(SkipToNonWhiteSpace(&stream.lines));
    EXPECT_EQ(Text(stream.lines.text), "%%EOF\n");
    EXPECT_TRUE(IsTextAtLineStart(&stream.lines));
}

TEST(SkipToNonWhiteSpaceTest, FailsWithTheRefill)
{
    Stream stream(std::string(600, ' '), 600);
    stream.reader.claimed = 500;
    EXPECT_FALSE(SkipToNonWhiteSpace(&stream.lines));
}

} // namespace
