// Whole parses against traces that were derived by hand, and what must not change them: where the line buffer
// happens to end, and line ends of other systems.
#include "tests/golden/Documents.h"
#include "tests/golden/Parses.h"
#include "tests/support/RecordingHost.h"

#include <vx/HostCall.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

namespace vxtest
{
namespace
{

using Golden = testing::TestWithParam<TestDocument>;
INSTANTIATE_TEST_SUITE_P(Documents, Golden, testing::ValuesIn(GoldenDocuments()), DocumentName());

TEST_P(Golden, MakesTheseCalls)
{
    RecordingHost host;
    EXPECT_TRUE(IsSameTrace(ReadTrace(GetParam()), Trace(&host, ReadBytes(GetParam().path))));
}

std::vector<TestDocument> DocumentsThat(bool (*accept)(const TestDocument &))
{
    std::vector<TestDocument> documents = GoldenDocuments();
    std::erase_if(documents, [accept](const TestDocument &document) { return !accept(document); });
    return documents;
}

bool HasHeaderLine(const TestDocument &document)
{
    const std::string bytes = ReadBytes(document.path);
    return bytes.starts_with("%!PS-Tavro-") && bytes.find_first_of("\r\n") != std::string::npos;
}

using Headed = testing::TestWithParam<TestDocument>;
INSTANTIATE_TEST_SUITE_P(Documents, Headed, testing::ValuesIn(DocumentsThat(HasHeaderLine)), DocumentName());

// A comment in the header moves all that follows, so that lines, strings and names fall across the end of the
// line buffer at ever other places.
TEST_P(Headed, IsTheSameWhereverTheBufferEnds)
{
    const std::string bytes = ReadBytes(GetParam().path);
    const size_t lineEnd = bytes.find_first_of("\r\n");
    const std::vector<std::string> expected = ReadTrace(GetParam());
    constexpr size_t kLongestLine = 498;
    constexpr size_t kStep = 7;
    for (size_t length = 1; length <= kLongestLine; length += kStep) {
        RecordingHost host;
        const std::string comment = bytes[lineEnd] + ('%' + std::string(length - 1, 'x'));
        ASSERT_TRUE(IsSameTrace(expected, Trace(&host, std::string(bytes).insert(lineEnd, comment))))
            << "after a comment of " << length << " bytes";
    }
}

bool IsReport(const std::string &line)
{
    return line.starts_with("report ");
}

bool HasReport(const TestDocument &document)
{
    const std::vector<std::string> trace = ReadTrace(document);
    return std::any_of(trace.begin(), trace.end(), IsReport);
}

using Reporting = testing::TestWithParam<TestDocument>;
INSTANTIATE_TEST_SUITE_P(Documents, Reporting, testing::ValuesIn(DocumentsThat(HasReport)), DocumentName());

TEST_P(Reporting, IsTheSameWithoutWarnings)
{
    std::vector<std::string> expected = ReadTrace(GetParam());
    std::erase_if(expected, IsReport);
    RecordingHost host;
    host.record.warningsOff = 1;
    EXPECT_TRUE(IsSameTrace(expected, Trace(&host, ReadBytes(GetParam().path))));
}

// A "stop" is heeded after the token that it answers. Where nothing is interpreted after that, the document ends as if
// nothing had been said.
TEST_P(Reporting, EndsSoonAfterAStop)
{
    const std::vector<std::string> whole = ReadTrace(GetParam());
    const auto report = std::find_if(whole.begin(), whole.end(), IsReport);
    RecordingHost host;
    host.stopAtReport = true;
    const int16_t result = host.Parse(ReadBytes(GetParam().path));
    const bool isLast = *report == "report 4" && report + 2 == whole.end();
    EXPECT_EQ(result, isLast ? kVXOk : kVXStoppedByUser);
    EXPECT_EQ(std::count_if(host.lines.begin(), host.lines.end(), IsReport), 1);
    ASSERT_LE(host.lines.size(), whole.size());
    EXPECT_TRUE(std::equal(host.lines.begin(), host.lines.end(), whole.begin()));
}

TEST(GoldenDocuments, AllHaveTracesAndTheTracesDocuments)
{
    EXPECT_FALSE(GoldenDocuments().empty());
    size_t traces = 0;
    for (const auto &entry : std::filesystem::directory_iterator(VX_SOURCE_DIR "/tests/golden"))
        traces += entry.path().extension() == ".trace";
    EXPECT_EQ(traces, GoldenDocuments().size());
    for (const TestDocument &document : GoldenDocuments()) {
        const std::vector<std::string> trace = ReadTrace(document);
        ASSERT_FALSE(trace.empty()) << document.path;
        EXPECT_TRUE(trace.back().starts_with("result ")) << document.path;
    }
}

// One drawing, written with the line ends of three systems.
TEST(SampleDocuments, LineEndsMakeNoDifference)
{
    const std::string folder = VX_SOURCE_DIR "/samples/";
    RecordingHost first;
    const std::vector<std::string> expected = Trace(&first, ReadBytes(folder + "line-ends-lf.vx"));
    EXPECT_GT(expected.size(), 100u);
    for (const char *name : {"line-ends-cr.vx", "line-ends-crlf.vx"}) {
        RecordingHost host;
        EXPECT_TRUE(IsSameTrace(expected, Trace(&host, ReadBytes(folder + name)))) << name;
    }
}

} // namespace
} // namespace vxtest
