// What comes through a worker's pipe, in whatever pieces.
#include "library/pipe/WorkerFrames.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vxhost
{
namespace
{

using namespace std::string_literals;

constexpr size_t kMost = 8; // bytes of an answer

std::string Framed(const std::string &answer)
{
    return AnswerFrameHead(answer.size()) + answer;
}

// All that is found out from bytes that come in two pieces.
struct Seen {
    bool isRead = true;
    std::vector<int> progress;
    bool isOutOfMemory = false;
    std::optional<std::string> answer;

    bool operator==(const Seen &) const = default;
};

Seen Read(std::string_view bytes, size_t cut = 0)
{
    Seen seen;
    WorkerFrames frames(kMost, [&seen](int percent) { seen.progress.push_back(percent); });
    for (const std::string_view piece : {bytes.substr(0, cut), bytes.substr(cut)})
        seen.isRead = seen.isRead && frames.Add(piece);
    seen.isOutOfMemory = frames.IsOutOfMemory();
    seen.answer = frames.TakeAnswer();
    return seen;
}

struct FramesCase {
    const char *name;
    std::string bytes;
    Seen seen;
};

const FramesCase kCases[] = {
    {"Nothing", "", {}},
    {"AnEmptyAnswer", Framed(""), {true, {}, false, ""}},
    {"TheLongestAnswer", Framed("12345678"), {true, {}, false, "12345678"}},
    {"AnAnswerOfFrames", Framed("pppmma"), {true, {}, false, "pppmma"}},
    {"TheLastOfTwo", Framed("one") + Framed("two"), {true, {}, false, "two"}},
    {"AWholeOneBeforeOneThatIsNot", Framed("one") + AnswerFrameHead(3) + "tw", {true, {}, false, "one"}},
    {"ProgressBeforeAnAnswer", "p\0pdp\x07"s + Framed("a"), {true, {0, 100, 7}, false, "a"}},
    {"ProgressBeyondAllBounds", "p\x65p\x7F", {true, {100, 100}, false, std::nullopt}},
    {"HalfOfAProgress", "p\x05p", {true, {5}, false, std::nullopt}},
    {"MemoryThatRanOut", "p\x05m", {true, {5}, true, std::nullopt}},
    {"AnAnswerThatIsTooLong", AnswerFrameHead(kMost + 1), {false, {}, false, std::nullopt}},
    {"AnAnswerWithoutEnd", AnswerFrameHead(~uint64_t{0}), {false, {}, false, std::nullopt}},
    {"WhatBeginsNoFrame", "Q", {false, {}, false, std::nullopt}},
    {"WhatBeginsNoFrameBehindSome", "p\x05m" + Framed("one") + '\0', {false, {5}, true, "one"}},
};

class WorkerFramesTest : public testing::TestWithParam<FramesCase>
{
};

TEST_P(WorkerFramesTest, AreTheSameWhereverTheyAreCut)
{
    const auto &[name, bytes, seen] = GetParam();
    for (size_t cut = 0; cut <= bytes.size(); ++cut)
        EXPECT_EQ(Read(bytes, cut), seen) << cut;
}

INSTANTIATE_TEST_SUITE_P(All, WorkerFramesTest, testing::ValuesIn(kCases),
                         [](const auto &found) { return std::string(found.param.name); });

TEST(WorkerFrames, NeedNobodyWhoListensToProgress)
{
    WorkerFrames frames(kMost);
    EXPECT_TRUE(frames.Add("p\x05" + Framed("a")));
    EXPECT_EQ(frames.TakeAnswer(), "a");
}

} // namespace
} // namespace vxhost
