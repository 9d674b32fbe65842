// Readers that deliver less than they are asked for, end early, or claim more: the document stays the same, becomes
// another one that the test can work out, or fails at once.
#include "tests/golden/Documents.h"
#include "tests/golden/Parses.h"
#include "tests/golden/Random.h"
#include "tests/support/RecordingHost.h"

#include <vx/HostCall.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace vxtest
{
namespace
{

using Reader = testing::TestWithParam<TestDocument>;
INSTANTIATE_TEST_SUITE_P(Documents, Reader, testing::ValuesIn(GoldenDocuments()), DocumentName());
INSTANTIATE_TEST_SUITE_P(Samples, Reader, testing::ValuesIn(Samples()), DocumentName());

// Small documents are tried several times.
size_t TrialsFor(const std::string &bytes)
{
    return std::clamp<size_t>(40000 / (bytes.size() + 1), 1, 8);
}

constexpr std::string_view kLineEnds = "\r\n";

int32_t CountThere(std::string_view left, int32_t wanted)
{
    return static_cast<int32_t>(std::min(left.size(), static_cast<size_t>(std::max(wanted, 0))));
}

// Where a read stops: behind a line end, if what is there holds one.
int32_t StopAtLineEnd(std::string_view left, int32_t there, Random *random)
{
    const size_t lineEnd = left.find_first_of(kLineEnds, random->Below(static_cast<size_t>(there) + 1));
    return lineEnd < static_cast<size_t>(there) ? static_cast<int32_t>(lineEnd + 1) : there;
}

TEST_P(Reader, MayStopAtLineEnds)
{
    const std::string bytes = ReadBytes(GetParam().path);
    RecordingHost whole;
    const std::vector<std::string> expected = Trace(&whole, bytes);
    for (size_t trial = 0; trial < TrialsFor(bytes); ++trial) {
        Random random(static_cast<uint32_t>(trial));
        RecordingHost host;
        host.readCount = [&](std::string_view left, int32_t wanted) {
            const int32_t there = CountThere(left, wanted);
            return host.deliveries.empty() ? there : StopAtLineEnd(left, there, &random);
        };
        ASSERT_TRUE(IsSameTrace(expected, Trace(&host, bytes))) << "trial " << trial;
    }
}

// The wrapper's length, little-endian in its third word, grows with its section.
void LengthenSection(std::string *bytes, uint32_t count)
{
    if (!bytes->starts_with("\xC5\xD0\xD3\xC6"))
        return;
    for (size_t i = 8; i < 12; ++i) {
        count += static_cast<uint8_t>((*bytes)[i]);
        (*bytes)[i] = static_cast<char>(count & 255);
        count >>= 8;
    }
}

// The document as those reads make it: a read that stops short without having brought a line end breaks its line.
std::string BreakLines(const std::string &bytes, const std::vector<RecordingHost::Delivery> &deliveries)
{
    std::string broken = bytes;
    size_t breaks = 0;
    for (const RecordingHost::Delivery &delivery : deliveries) {
        const std::string_view brought =
            std::string_view(bytes).substr(delivery.position, static_cast<size_t>(delivery.count));
        if (delivery.isShort && !brought.empty() &&
            brought.find_first_of(kLineEnds) == std::string_view::npos)
            broken.insert(delivery.position + brought.size() + breaks++, 1, '\r');
    }
    LengthenSection(&broken, static_cast<uint32_t>(breaks));
    return broken;
}

TEST_P(Reader, BreaksLinesWhereItStopsWithinThem)
{
    const std::string bytes = ReadBytes(GetParam().path);
    for (size_t trial = 0; trial < TrialsFor(bytes); ++trial) {
        Random random(static_cast<uint32_t>(trial));
        const size_t from = random.Below(bytes.size() + 1);
        RecordingHost host;
        host.readCount = [&](std::string_view left, int32_t wanted) {
            constexpr int32_t kShort = 100;
            const int32_t there = CountThere(left, wanted);
            if (host.deliveries.empty() || there == 0)
                return there;
            if (bytes.size() - left.size() < from || random.Below(4) != 0)
                return StopAtLineEnd(left, there, &random);
            return static_cast<int32_t>(1 + random.Below(static_cast<size_t>(std::min(there, kShort))));
        };
        const std::vector<std::string> made = Trace(&host, bytes);
        RecordingHost whole;
        ASSERT_TRUE(IsSameTrace(Trace(&whole, BreakLines(bytes, host.deliveries)), made))
            << "trial " << trial;
    }
}

TEST_P(Reader, EndsTheDocumentWhereItEnds)
{
    const std::string bytes = ReadBytes(GetParam().path);
    for (size_t trial = 0; trial < TrialsFor(bytes); ++trial) {
        const size_t end = Random(static_cast<uint32_t>(trial)).Below(bytes.size() + 1);
        for (const int32_t nothing : {0, -1, INT32_MIN}) {
            RecordingHost host;
            host.readCount = [&](std::string_view left, int32_t wanted) {
                const int32_t there =
                    CountThere(left.substr(0, end - std::min(end, bytes.size() - left.size())), wanted);
                return there > 0 ? there : nothing;
            };
            RecordingHost cut;
            ASSERT_TRUE(IsSameTrace(Trace(&cut, bytes.substr(0, end)), Trace(&host, bytes)))
                << nothing << " after " << end << " bytes";
        }
    }
}

TEST_P(Reader, MustDeliverTheFirstBytesAtOnce)
{
    const std::string bytes = ReadBytes(GetParam().path);
    for (const int32_t most : {0, 1, 11}) {
        RecordingHost host;
        host.readCount = [&](std::string_view left, int32_t wanted) {
            return std::min(CountThere(left, wanted), host.deliveries.empty() ? most : INT32_MAX);
        };
        EXPECT_EQ(ParseSoundly(&host, bytes), kVXBadFormat) << most;
        EXPECT_TRUE(host.lines.empty()) << most;
    }
}

TEST_P(Reader, FailsAtOnceWhenItClaimsMore)
{
    const std::string bytes = ReadBytes(GetParam().path);
    RecordingHost whole;
    ParseSoundly(&whole, bytes);
    const size_t reads = whole.deliveries.size();
    const size_t step = reads / TrialsFor(bytes) + 1;
    for (size_t lying = 0; lying < reads; lying += lying < 3 ? 1 : step) {
        for (const int32_t excess : {1, 2, 499, INT32_MAX}) {
            SCOPED_TRACE("read " + std::to_string(lying) + " claims " + std::to_string(excess) + " more");
            RecordingHost host;
            size_t callsBefore = 0;
            host.readCount = [&](std::string_view left, int32_t wanted) {
                if (host.deliveries.size() != lying)
                    return CountThere(left, wanted);
                callsBefore = host.lines.size();
                return static_cast<int32_t>(std::min<int64_t>(int64_t{wanted} + excess, INT32_MAX));
            };
            ASSERT_EQ(ParseSoundly(&host, bytes), kVXBadFormat);
            ASSERT_EQ(host.deliveries.size(), lying + 1);
            ASSERT_EQ(host.lines.size(), callsBefore);
            ASSERT_TRUE(std::equal(host.lines.begin(), host.lines.end(), whole.lines.begin()));
        }
    }
}

} // namespace
} // namespace vxtest
