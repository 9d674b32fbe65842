// The seven requests, the check of the table, the wrapper around a PostScript section.
#include "plugin/entry/VXParser.h"

#include "plugin/body/HostTable.h"
#include "tests/support/CaseName.h"
#include "tests/support/RecordingHost.h"
#include "tests/unit/body/BodyDocument.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

namespace
{

using namespace vx;
using namespace vxtest;

const std::string kGood =
    "%!PS-Tavro-3.0\n%%BoundingBox: 1 2 3 4.5\n%VX5_FileFormat 3\n%%ColorUsage: Black&White\n"
    "%%EndComments\n%%BeginSetup\n%%EndSetup\n1 2 m\n%%EOF\n";

struct SelectorCase {
    const char *name;
    int32_t selector;
    int16_t result;
};

class Selectors : public testing::TestWithParam<SelectorCase>
{
};

TEST_P(Selectors, AreAnswered)
{
    RecordingHost host;
    host.SetDocument(kGood);
    EXPECT_EQ(host.Call(GetParam().selector), GetParam().result);
    EXPECT_EQ(host.liveBlocks, 0);
}

const SelectorCase kSelectors[] = {
    {"About", 0, kVXOk},
    {"CanRead", 1, kVXOk},
    {"Open", 2, kVXOk},
    {"OpenAgain", 3, kVXOk},
    {"StreamInfo", 4, kVXOk},
    {"Parse", 5, kVXOk},
    {"Close", 6, kVXOk},
    {"SevenIsNone", 7, kVXBadSelector},
    {"MinusOneIsNone", -1, kVXBadSelector},
    {"TheLargestIsNone", 32767, kVXBadSelector},
    {"TheSmallestIsNone", -32768, kVXBadSelector},
    {"OnlyTheLowHalfCounts", 0x70006, kVXOk},
    {"TheLowHalfIsSigned", 0x1FFFF, kVXBadSelector},
};
INSTANTIATE_TEST_SUITE_P(VXParser, Selectors, testing::ValuesIn(kSelectors), CaseName());

struct TableCase {
    const char *name;
    int32_t version, count;
    int missing; // an entry that is null, or -1
    bool good;
};

class Tables : public testing::TestWithParam<TableCase>
{
  protected:
    // A host may append entries of its own.
    struct LongTable {
        ZRKProcs table;
        std::array<ZRKProc, 8> more;
    };
};

TEST_P(Tables, AreChecked)
{
    RecordingHost host;
    LongTable longTable = {*host.procs(), {}};
    ZRKProcs *table = &longTable.table;
    table->version = GetParam().version;
    table->count = GetParam().count;
    if (GetParam().missing >= 0)
        table->entry[GetParam().missing] = nullptr;
    EXPECT_EQ(CheckZRKProcs(table), GetParam().good);

    host.SetDocument(kGood);
    host.record.procs = table;
    const int16_t refused = kVXBadProcs;
    const int16_t accepted = kVXOk;
    EXPECT_EQ(host.Call(kVXCanRead), GetParam().good ? accepted : refused);
    EXPECT_EQ(host.Call(kVXOpen), GetParam().good ? accepted : refused);
    EXPECT_EQ(host.Call(kVXOpenAgain), GetParam().good ? accepted : refused);
    EXPECT_EQ(host.Call(kVXStreamInfo), kVXOk) << "needs no table";
    EXPECT_EQ(host.Call(kVXParse), GetParam().good ? accepted : int16_t{kVXProcsUnusable});
    EXPECT_EQ(host.liveBlocks, 0);
}

const TableCase kTables[] = {
    {"TheExactCount", 1, 42, -1, true},
    {"FurtherEntriesMayBeNull", 1, 50, -1, true},
    {"ACountOfFortyOne", 1, 41, -1, false},
    {"ACountOfZero", 1, 0, -1, false},
    {"ANegativeCount", 1, -42, -1, false},
    {"VersionZero", 0, 42, -1, false},
    {"VersionTwo", 2, 42, -1, false},
    {"TheFirstEntryMissing", 1, 42, 0, false},
    {"AnEntryMissingThatIsNeverCalled", 1, 42, 2, false},
    {"TheLastEntryMissing", 1, 42, 41, false},
};
INSTANTIATE_TEST_SUITE_P(VXParser, Tables, testing::ValuesIn(kTables), CaseName());

TEST(TablesTest, NoTableIsRefusedByEachInItsWay)
{
    RecordingHost host;
    host.SetDocument(kGood);
    host.record.procs = nullptr;
    EXPECT_FALSE(CheckZRKProcs(nullptr));
    EXPECT_EQ(host.Call(kVXCanRead), kVXBadProcs);
    EXPECT_EQ(host.Call(kVXOpen), kVXBadProcs);
    EXPECT_EQ(host.Call(kVXOpenAgain), kVXBadProcs);
    EXPECT_EQ(host.Call(kVXStreamInfo), kVXOk);
    EXPECT_EQ(host.Call(kVXParse), kVXBadSelector);
    EXPECT_EQ(host.liveBlocks, 0);
}

TEST(TablesTest, NoDrawingIsABadRequest)
{
    RecordingHost host;
    host.SetDocument(kGood);
    host.record.drawing = nullptr;
    EXPECT_EQ(host.Call(kVXParse), kVXBadSelector);
    EXPECT_EQ(host.Call(kVXCanRead), kVXOk);
    EXPECT_EQ(host.liveBlocks, 0);
}

// The header is read before the table is looked at.
TEST(TablesTest, ABadDocumentComesBeforeABadTable)
{
    RecordingHost host;
    host.SetDocument("%!PS-Adobe-3.0\n");
    host.record.procs = nullptr;
    EXPECT_EQ(host.Call(kVXParse), kVXBadFormat);
}

constexpr std::array<Fixed, 4> kUntouched = {11, 22, 33, 44};
constexpr std::array<Fixed, 4> kGoodBox = {0x10000, 0x20000, 0x30000, 0x48000};
constexpr uint8_t kUntouchedFlag = 55;

struct OutputCase {
    const char *name;
    int32_t selector;
    std::string document;
    int16_t result;
    bool filled;
};

class Outputs : public testing::TestWithParam<OutputCase>
{
};

TEST_P(Outputs, AreWrittenOnFullSuccessOnly)
{
    RecordingHost host;
    host.SetDocument(GetParam().document);
    std::copy(kUntouched.begin(), kUntouched.end(), host.record.boundingBox);
    host.record.monochrome = kUntouchedFlag;
    EXPECT_EQ(host.Call(GetParam().selector), GetParam().result);
    const std::array<Fixed, 4> &box = GetParam().filled ? kGoodBox : kUntouched;
    EXPECT_TRUE(std::equal(box.begin(), box.end(), host.record.boundingBox));
    EXPECT_EQ(host.record.monochrome, GetParam().filled ? 1 : kUntouchedFlag);
}

const OutputCase kOutputs[] = {
    {"CanReadFillsThem", kVXCanRead, kGood, kVXOk, true},
    {"StreamInfoFillsThem", kVXStreamInfo, kGood, kVXOk, true},
    {"ParseLeavesThem", kVXParse, kGood, kVXOk, false},
    {"OpenLeavesThem", kVXOpen, kGood, kVXOk, false},
    {"CloseLeavesThem", kVXClose, kGood, kVXOk, false},
    {"ABadBoxLeavesThem", kVXStreamInfo, "%!PS-Tavro-3.0\n%%BoundingBox: 7 8 9 x\n%VX5_FileFormat\n",
     kVXBadFormat, false},
    {"ALateFailureLeavesThem", kVXCanRead, "%!PS-Tavro-3.0\n%%BoundingBox: 7 8 9 10\n%%Title: x\n",
     kVXBadFormat, false},
};
INSTANTIATE_TEST_SUITE_P(VXParser, Outputs, testing::ValuesIn(kOutputs), CaseName());

TEST(OutputsTest, AColouredDocumentClearsTheFlag)
{
    RecordingHost host;
    host.SetDocument(HeaderOfVersion(5));
    host.record.monochrome = 1;
    EXPECT_EQ(host.Call(kVXStreamInfo), kVXOk);
    EXPECT_EQ(host.record.monochrome, 0);
}

TEST(RequestsTest, AreCompleteInThemselves)
{
    RecordingHost host;
    host.SetDocument(kGood);
    EXPECT_EQ(host.Call(kVXParse), kVXOk);
    EXPECT_EQ(host.Call(kVXStreamInfo), kVXOk);
    EXPECT_EQ(host.Call(kVXParse), kVXOk);
    EXPECT_EQ(host.Joined(), "moveto 1 2; moveto 1 2");
}

struct FormatCase {
    const char *name;
    std::string bytes;
    int16_t result;
};

class Formats : public testing::TestWithParam<FormatCase>
{
};

TEST_P(Formats, AreToldAlikeByAllThatRead)
{
    for (const int32_t selector : {kVXCanRead, kVXStreamInfo, kVXParse}) {
        RecordingHost host;
        host.SetDocument(GetParam().bytes);
        EXPECT_EQ(host.Call(selector), GetParam().result) << selector;
        EXPECT_EQ(host.liveBlocks, 0);
    }
}

std::string LittleEndian(uint32_t number)
{
    std::string bytes;
    for (int shift = 0; shift < 32; shift += 8)
        bytes += static_cast<char>(number >> shift & 0xFF);
    return bytes;
}

// A wrapper of 30 bytes, as an encapsulated file with a preview has it, declaring where its section is.
std::string Wrapper(uint32_t start, uint32_t length)
{
    std::string header = "\xC5\xD0\xD3\xC6" + LittleEndian(start) + LittleEndian(length);
    header.resize(30, '\0');
    return header;
}

constexpr uint32_t kMostNegative = 0x80000000;
const auto kGoodLength = static_cast<uint32_t>(kGood.size());
const std::string kPreview = "\x4D\x4D preview %!PS-Tavro-\n 9 9 m\n";

const FormatCase kFormats[] = {
    {"APlainDocument", kGood, kVXOk},
    {"Nothing", "", kVXBadFormat},
    {"ElevenBytes", "%!PS-Tavro-", kVXBadFormat},
    {"TwelveBytesWithoutAHeader", "%!PS-Tavro-3", kVXBadFormat},
    {"AnotherKindOfFile", "GIF89a..............", kVXBadFormat},
    {"AWrappedDocument", Wrapper(30, kGoodLength) + kGood + kPreview, kVXOk},
    {"AWrappedDocumentBehindItsPreview", Wrapper(30 + 28, kGoodLength) + std::string(28, 'x') + kGood, kVXOk},
    {"ASectionPastTheEndIsReadUpToTheEnd", Wrapper(30, kGoodLength + 1000) + kGood, kVXOk},
    {"ASectionThatJustReachesTheEnd", Wrapper(30, kGoodLength) + kGood, kVXOk},
    {"ASectionBeyondTheEndIsEmpty", Wrapper(30 + kGoodLength, kGoodLength) + kGood, kVXBadFormat},
    {"ASectionFarBeyondTheEndIsEmpty", Wrapper(0x7FFFFFFF, kGoodLength) + kGood, kVXBadFormat},
    {"ASectionOfNoLength", Wrapper(30, 0) + kGood, kVXBadFormat},
    {"ASectionOfNegativeLength", Wrapper(30, kMostNegative) + kGood, kVXBadFormat},
    {"ASectionCutInItsHeader", Wrapper(30, 20) + kGood, kVXBadFormat},
    {"TheLargestSectionIsReadUpToTheEnd", Wrapper(30, 0x7FFFFFFF) + kGood, kVXOk},
    {"AnotherSignatureIsNoWrapper", "\xC5\xD0\xD3\xC7" + Wrapper(30, kGoodLength).substr(4) + kGood,
     kVXBadFormat},
};
INSTANTIATE_TEST_SUITE_P(VXParser, Formats, testing::ValuesIn(kFormats), CaseName());

TEST(WrapperTest, NothingBehindTheSectionIsSeen)
{
    const std::string body = HeaderOfVersion(5) + "%%BeginSetup\n%%EndSetup\n1 2 m\n";
    RecordingHost host;
    EXPECT_EQ(host.Parse(Wrapper(30, static_cast<uint32_t>(body.size())) + body + "3 4 m\n"), kVXOk);
    EXPECT_EQ(host.Joined(), "moveto 1 2");
}

TEST(WrapperTest, AStartBeforeTheFileDoesNotHarm)
{
    RecordingHost host;
    host.SetDocument(Wrapper(kMostNegative, kGoodLength) + kGood);
    const int16_t result = host.Call(kVXParse);
    EXPECT_TRUE(result == kVXOk || result == kVXBadFormat); // the host decides where such a seek ends
    EXPECT_EQ(host.liveBlocks, 0);
}

TEST(WrapperTest, ALengthShorterThanTheDocumentCutsIt)
{
    const std::string start = HeaderOfVersion(5) + "%%BeginSetup\n%%EndSetup\n1 2 m\n";
    RecordingHost host;
    EXPECT_EQ(host.Parse(Wrapper(30, static_cast<uint32_t>(start.size())) + start + "bad ]\n"), kVXOk);
    EXPECT_EQ(host.Joined(), "moveto 1 2");
}

TEST(StreamLengthTest, IsTheRecordsNotTheReaders)
{
    const std::string start = HeaderOfVersion(5) + "%%BeginSetup\n%%EndSetup\n1 2 m\n";
    RecordingHost host;
    host.SetDocument(start + "3 4 m\n");
    host.record.streamLength = static_cast<int32_t>(start.size());
    EXPECT_EQ(host.Call(kVXParse), kVXOk);
    EXPECT_EQ(host.Joined(), "moveto 1 2");
}

TEST(ParseTest, ReturnsTheBodysCodeAndReleasesTheSetup)
{
    RecordingHost host;
    EXPECT_EQ(host.Parse(Document("1 2 m ]")), kVXBadFormat);
    EXPECT_EQ(host.Joined(), "moveto 1 2");
    EXPECT_EQ(host.liveBlocks, 0);
}

TEST(ParseTest, ShortReadsDoNotHarmLinesShorterThanThem)
{
    for (const int32_t most : {40, 64, 499}) {
        RecordingHost host;
        host.readCount = [most](std::string_view left, int32_t wanted) {
            return std::min({wanted, most, static_cast<int32_t>(left.size())});
        };
        EXPECT_EQ(host.Parse(kGood), kVXOk) << most;
        EXPECT_EQ(host.Joined(), "moveto 1 2") << most;
    }
}

} // namespace
