// The objects of the setup section, and the way to where the section's lines begin.
#include "plugin/setup/VXSetUp.h"

#include "tests/support/CaseName.h"
#include "tests/unit/input/HeapForTests.h"
#include "tests/unit/input/TestReader.h"
#include "tests/unit/input/Views.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using namespace vx;
using namespace vxtest;

struct SkipCase {
    const char *name;
    std::string text;
    bool skipOthers;
    Result result;
    std::string next; // on success, the line after the comment
};

class SkippingThroughAComment : public testing::TestWithParam<SkipCase>
{
};

TEST_P(SkippingThroughAComment, StopsBehindIt)
{
    TextStream stream(GetParam().text);
    ASSERT_EQ(SkipThroughComment(&stream.lines, "%%BeginSetup", GetParam().skipOthers), GetParam().result);
    if (GetParam().result == kOk) {
        EXPECT_EQ(stream.lines.text.length, 0);
        ASSERT_TRUE(RefillLineStreamText(&stream.lines));
        EXPECT_EQ(Text(stream.lines.text), GetParam().next);
    }
}

const SkipCase kSkips[] = {
    {"TheFirstLine", "%%BeginSetup\nab\n", true, kOk, "ab\n"},
    {"OtherLinesArePassedOver", "x\n%c\n\n 1 2 m\n%%BeginSetup\nab\n", true, kOk, "ab\n"},
    {"TrailingBlanksAreAccepted", "%%BeginSetup \t \nab\n", true, kOk, "ab\n"},
    {"ItMayBeIndented", " \t%%BeginSetup\nab\n", true, kOk, "ab\n"},
    {"WithTextItIsAnotherComment", "%%BeginSetup x\n%%BeginSetup\nab\n", true, kOk, "ab\n"},
    {"ALongerWordIsAnotherComment", "%%BeginSetups\n%%BeginSetup\nab\n", true, kOk, "ab\n"},
    {"OfTwoTheFirstCounts", "%%BeginSetup\n%%BeginSetup\n", true, kOk, "%%BeginSetup\n"},
    {"InsideALineItIsNone", "x %%BeginSetup\n%%BeginSetup\nab\n", true, kOk, "ab\n"},
    {"AMacDocument", "%c\r%%BeginSetup\rab\r", true, kOk, "ab\r"},
    {"APcDocument", "%c\r\n%%BeginSetup\r\nab\r\n", true, kOk, "\n"},
    {"AsTheLastLine", "%%BeginSetup", true, kOk, "%%EOF\n"},
    {"TheEndOfTheDataFails", "%%EndSetup\nx\n", true, kParserBadFormat, ""},
    {"NothingAtAllFails", "", true, kParserBadFormat, ""},
    {"EndOfFileBeforeItFails", "%%EOF \n%%BeginSetup\n", true, kParserBadFormat, ""},
    {"AnIndentedEndOfFileFailsToo", " %%EOF\n%%BeginSetup\n", true, kParserBadFormat, ""},
    {"EndOfFileWithTextIsAnotherComment", "%%EOF x\n%%BeginSetup\nab\n", true, kOk, "ab\n"},
    {"StrictlyCommentsAndBlankLinesArePassedOver", "%c\n\n  \n%%BeginSetup\nab\n", false, kOk, "ab\n"},
    {"StrictlyAnotherLineFails", "%c\nx\n%%BeginSetup\n", false, kParserBadFormat, ""},
};
INSTANTIATE_TEST_SUITE_P(VXSetUp, SkippingThroughAComment, testing::ValuesIn(kSkips), CaseName());

TEST(SkippingThroughACommentTest, FailsWithTheRefill)
{
    TextStream stream(std::string(600, 'x'));
    stream.reader.claimed = 500;
    EXPECT_EQ(SkipThroughComment(&stream.lines, "%%BeginSetup", true), kParserBadFormat);
}

struct VersionCase {
    const char *name;
    FileVersion version;
    std::string text;
    Result result;
    std::string next;
};

class SetUps : public testing::TestWithParam<VersionCase>
{
};

TEST_P(SetUps, GoToWhereTheirVersionGoesOn)
{
    HeapForTests heap;
    HostCallRecord record = {};
    record.memory = &heap.procs;
    TextStream stream(GetParam().text);
    ASSERT_EQ(ParseSetUp(&stream.lines, &record, GetParam().version), GetParam().result);
    if (GetParam().result != kOk) {
        EXPECT_EQ(heap.live, 0) << "a failure leaves nothing behind";
        return;
    }
    EXPECT_EQ(heap.live, 3);
    ASSERT_TRUE(RefillLineStreamText(&stream.lines));
    EXPECT_EQ(Text(stream.lines.text), GetParam().next);
    TerminateSetUp(&record);
    EXPECT_EQ(heap.live, 0);
}

const std::string kSection = "%%BeginSetup\n1 2 m\n%%EndSetup\nab\n";

const VersionCase kVersions[] = {
    {"VersionTwoSkipsTheSection", 2, kSection, kOk, "ab\n"},
    {"VersionThreeEntersIt", 3, kSection, kOk, "1 2 m\n"},
    {"VersionFourEntersIt", 4, kSection, kOk, "1 2 m\n"},
    {"VersionFiveEntersIt", 5, kSection, kOk, "1 2 m\n"},
    {"VersionTwoNeedsNoBeginning", 2, "%%EndSetup\nab\n", kOk, "ab\n"},
    {"VersionTwoNeedsAnEnd", 2, "%%BeginSetup\nab\n", kParserBadFormat, ""},
    {"VersionFiveNeedsABeginning", 5, "%%EndSetup\nab\n", kParserBadFormat, ""},
    {"VersionFiveNeedsNoEnd", 5, "%%BeginSetup\nab\n", kOk, "ab\n"},
};
INSTANTIATE_TEST_SUITE_P(VXSetUp, SetUps, testing::ValuesIn(kVersions), CaseName());

// The blocks, as bits in the order in which they are asked for.
enum Block : uint32_t { kGradients = 1, kRecord = 2, kEncoding = 4 };

struct ShortageCase {
    const char *name;
    uint32_t refused;
    bool result;
    int live;
};

class Shortages : public testing::TestWithParam<ShortageCase>
{
};

TEST_P(Shortages, LeaveOnlyWhatIsRecorded)
{
    const ShortageCase &c = GetParam();
    HeapForTests heap;
    heap.refused = c.refused;
    HostCallRecord record = {};
    record.memory = &heap.procs;
    EXPECT_EQ(InitParseSetUp(&record, 5), c.result);
    EXPECT_EQ(heap.asked, 3);
    EXPECT_EQ(heap.live, c.live);
    const SetUpRecord *setup = GetSetUpRecord(&record);
    EXPECT_EQ(setup != nullptr, (c.refused & kRecord) == 0);
    if (setup != nullptr) {
        EXPECT_EQ(setup->gradients != nullptr, (c.refused & kGradients) == 0);
        EXPECT_EQ(setup->encoding != nullptr, (c.refused & kEncoding) == 0);
    }
    TerminateSetUp(&record);
    EXPECT_EQ(heap.live, 0);
}

const ShortageCase kShortages[] = {
    {"None", 0, true, 3},
    {"OfTheGradients", kGradients, true, 2},
    {"OfTheEncoding", kEncoding, true, 2},
    {"OfGradientsAndEncoding", kGradients | kEncoding, true, 1},
    // Blocks that cannot be recorded are released at once.
    {"OfTheRecord", kRecord, true, 0},
    {"OfRecordAndEncoding", kRecord | kEncoding, true, 0},
    {"OfGradientsAndRecord", kGradients | kRecord, true, 0},
    {"OfAllThree", kGradients | kRecord | kEncoding, false, 0},
};
INSTANTIATE_TEST_SUITE_P(VXSetUp, Shortages, testing::ValuesIn(kShortages), CaseName());

TEST(ParseSetUpTest, ReportsMemoryOnlyWhenNothingCouldBeHad)
{
    HeapForTests heap;
    heap.refused = kGradients | kRecord | kEncoding;
    HostCallRecord record = {};
    record.memory = &heap.procs;
    TextStream stream(kSection);
    EXPECT_EQ(ParseSetUp(&stream.lines, &record, 5), kOutOfMemory);

    HeapForTests one;
    one.refused = kGradients | kRecord;
    record.memory = &one.procs;
    TextStream again(kSection);
    EXPECT_EQ(ParseSetUp(&again.lines, &record, 5), kOk);
    TerminateSetUp(&record);
    EXPECT_EQ(one.live, 0);
}

class SetUpObjects : public testing::Test
{
  protected:
    SetUpObjects()
    {
        record.memory = &heap.procs;
        EXPECT_TRUE(InitParseSetUp(&record, 5));
        setup = GetSetUpRecord(&record);
    }

    template <typename Object>
    Object *Make()
    {
        auto *object = static_cast<Object *>(HeapForTests::Allocate(sizeof(Object), &heap));
        *object = {};
        return object;
    }

    HeapForTests heap;
    HostCallRecord record = {};
    SetUpRecord *setup = nullptr;
};

TEST_F(SetUpObjects, StartWithoutGradientsAndClosed)
{
    EXPECT_EQ(setup->gradients->gradientCount, 0);
    EXPECT_EQ(setup->gradients->lookupIndex, 0);
    EXPECT_EQ(setup->gradients->firstGradient, nullptr);
    EXPECT_EQ(setup->gradients->lastGradient, nullptr);
    EXPECT_EQ(setup->gradients->definitionClosed, 222);
    EXPECT_EQ(setup->gradients->instanceClosed, 222);
    EXPECT_FALSE(IsInGradientDefinition(setup->gradients));
    EXPECT_FALSE(IsInGradientInstance(setup->gradients));
    TerminateSetUp(&record);
    EXPECT_EQ(heap.live, 0);
}

TEST_F(SetUpObjects, CarryTheVersion)
{
    EXPECT_EQ(setup->encoding->fileVersion, 5);
    EXPECT_EQ(setup->encoding->encodingState, kOutsideEncodingBlock);
    TerminateSetUp(&record);
}

TEST_F(SetUpObjects, AreReleasedOnce)
{
    TerminateSetUp(&record);
    EXPECT_EQ(heap.live, 0);
    TerminateSetUp(&record);
    DeallocateGradientObj(&record);
    DeallocateFontDataObj(&record);
    EXPECT_EQ(heap.live, 0);
}

// Every stop is released, whatever the declared counts say.
TEST_F(SetUpObjects, AreReleasedWithEveryGradientAndStop)
{
    GradientState *state = setup->gradients;
    for (int i = 0; i < 3; ++i) {
        auto *gradient = Make<GradientObject>();
        gradient->stopCount = i == 1 ? 100 : 1;
        for (int j = 0; j < 2; ++j) {
            auto *stop = Make<BlendStopObject>();
            stop->next = gradient->firstStop;
            gradient->firstStop = stop;
        }
        gradient->next = state->firstGradient;
        state->firstGradient = gradient;
    }
    state->gradientCount = 1;
    EXPECT_EQ(heap.live, 3 + 3 + 6);
    TerminateSetUp(&record);
    EXPECT_EQ(heap.live, 0);
}

TEST_F(SetUpObjects, AreReleasedWithEveryReencodedFont)
{
    for (int i = 0; i < 3; ++i) {
        auto *font = Make<ReencodedFont>();
        font->next = setup->encoding->firstFont;
        setup->encoding->firstFont = font;
    }
    setup->encoding->fontCount = 3;
    DeallocateFontDataObj(&record);
    EXPECT_EQ(setup->encoding->firstFont, nullptr);
    EXPECT_EQ(heap.live, 3) << "the object itself goes with the setup record";
    TerminateSetUp(&record);
    EXPECT_EQ(heap.live, 0);
}

} // namespace
