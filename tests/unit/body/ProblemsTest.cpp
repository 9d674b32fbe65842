// Problems told one at a time.
#include "plugin/body/Problems.h"

#include "host/toolbox/HostContext.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using namespace vx;
using vxhost::HostContext;
using vxhost::HostScope;

// A ReportProc is handed nothing of the host's, so its calls are noted here.
struct NotedReport {
    std::string title, message;
    int32_t titleEmpty;
};
std::vector<NotedReport> reports;
uint8_t answer;

std::string Contents(const uint8_t *string)
{
    return {reinterpret_cast<const char *>(string + 1), string[0]};
}

uint8_t NoteReport(const uint8_t *title, const uint8_t *message, int32_t titleEmpty)
{
    reports.push_back({Contents(title), Contents(message), titleEmpty});
    return answer;
}

class Reporting : public testing::Test
{
  protected:
    Reporting() : scope(&host)
    {
        reports.clear();
        answer = 0;
        host.stringLists[16000] = {"t1", "m1", "t2", "m2", "", "m3", "t4", ""};
        context.problemProc = NoteReport;
    }

    HostContext host;
    const HostScope scope;
    ParseContext context = {};
};

TEST_F(Reporting, TakesTitleAndMessageOfItsNumber)
{
    EXPECT_EQ(ReportParsingError(&context, kProblemPostScript), 0);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].title, "t2");
    EXPECT_EQ(reports[0].message, "m2");
    EXPECT_EQ(reports[0].titleEmpty, 0);
}

TEST_F(Reporting, TellsAnEmptyTitle)
{
    (void)ReportParsingError(&context, kProblemOperator);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].title, "");
    EXPECT_EQ(reports[0].message, "m3");
    EXPECT_EQ(reports[0].titleEmpty, 1);
}

TEST_F(Reporting, TellsStringsThatAreNotThereAsEmpty)
{
    (void)ReportParsingError(&context, kProblemFontSubstitution);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].title, "");
    EXPECT_EQ(reports[0].message, "");
    EXPECT_EQ(reports[0].titleEmpty, 1);
}

TEST_F(Reporting, HandsBackTheAnswer)
{
    answer = 1;
    EXPECT_EQ(ReportParsingError(&context, kProblemPattern), 1);
    answer = 0x80;
    EXPECT_EQ(ReportParsingError(&context, kProblemPattern), 0x80);
    EXPECT_EQ(reports.size(), 2u) << "it counts nothing itself";
    EXPECT_EQ(context.aborted, 0) << "what follows from the answer is the caller's";
}

TEST_F(Reporting, IsSilentWithoutAProcedure)
{
    context.problemProc = nullptr;
    EXPECT_EQ(ReportParsingError(&context, kProblemPattern), 0);
    EXPECT_TRUE(reports.empty());
}

TEST_F(Reporting, IsSilentOnceTheParseIsStopping)
{
    answer = 1;
    context.aborted = 1;
    EXPECT_EQ(ReportParsingError(&context, kProblemPattern), 0);
    EXPECT_TRUE(reports.empty());
}

TEST_F(Reporting, OnceMeansOnce)
{
    uint8_t warned = 0;
    ReportProblemOnce(&context, kProblemPattern, &warned);
    ReportProblemOnce(&context, kProblemPattern, &warned);
    EXPECT_EQ(reports.size(), 1u);
    EXPECT_EQ(warned, 1);
    EXPECT_EQ(context.aborted, 0);
}

TEST_F(Reporting, OnceKeepsTheWishToStop)
{
    answer = 1;
    uint8_t warned = 0;
    uint8_t other = 0;
    ReportProblemOnce(&context, kProblemPattern, &warned);
    EXPECT_NE(context.aborted, 0);
    ReportProblemOnce(&context, kProblemOperator, &other);
    EXPECT_EQ(reports.size(), 1u) << "nothing is reported to a user who has asked to stop";
    EXPECT_NE(context.aborted, 0);
}

} // namespace
