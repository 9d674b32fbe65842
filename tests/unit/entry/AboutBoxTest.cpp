// The about box on a host's screen, and problems told one at a time.
#include "plugin/entry/AboutBox.h"

#include "host/toolbox/HostContext.h"
#include "plugin/body/ParseContext.h"
#include "tests/support/CaseName.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace
{

using namespace vx;
using namespace vxtest;
using vxhost::HostContext;
using vxhost::HostScope;

TEST(DoAboutTest, ShowsAndDisposesOneDialog)
{
    HostContext host;
    const HostScope scope(&host);
    EXPECT_EQ(DoAbout(nullptr), kOk);
    EXPECT_EQ(host.dialog.made, 1);
    EXPECT_EQ(host.dialog.shown, 1);
    EXPECT_EQ(host.dialog.disposed, 1);
    EXPECT_EQ(host.purgeHolds, 0) << "the resource may be purged again";
}

TEST(DoAboutTest, AMissingResourceIsTheHostsError)
{
    HostContext host;
    host.aboutBox.reset();
    const HostScope scope(&host);
    EXPECT_EQ(DoAbout(nullptr), static_cast<Result>(vxhost::kResNotFoundError));
    EXPECT_EQ(host.dialog.made, 0);
    EXPECT_EQ(host.dialog.shown, 0);
    EXPECT_EQ(host.purgeHolds, 0);
}

TEST(DoAboutTest, ADialogThatCannotBeMadeIsTheHostsMemoryError)
{
    HostContext host;
    host.dialogsFail = true;
    const HostScope scope(&host);
    EXPECT_EQ(DoAbout(nullptr), static_cast<Result>(vxhost::kMemFullError));
    EXPECT_EQ(host.dialog.shown, 0);
    EXPECT_EQ(host.dialog.disposed, 0);
    EXPECT_EQ(host.purgeHolds, 0) << "released on this path too";
}

struct PlaceCase {
    const char *name;
    Rect screen, dialog, placed; // top, left, bottom, right
};

class Places : public testing::TestWithParam<PlaceCase>
{
};

TEST_P(Places, AreCentredAThirdOfTheWayDown)
{
    HostContext host;
    host.screen = GetParam().screen;
    const HostScope scope(&host);
    Rect bounds = GetParam().dialog;
    auto *bytes = reinterpret_cast<char *>(&bounds);
    CenterDialog(&bytes);
    EXPECT_EQ(bounds.top, GetParam().placed.top);
    EXPECT_EQ(bounds.left, GetParam().placed.left);
    EXPECT_EQ(bounds.bottom, GetParam().placed.bottom);
    EXPECT_EQ(bounds.right, GetParam().placed.right);
}

const PlaceCase kPlaces[] = {
    // (1024 - 300) / 2 = 362; (768 - 200 - 20) / 3 + 20 = 182 + 20
    {"AnOrdinaryScreen", {0, 0, 768, 1024}, {0, 0, 200, 300}, {202, 362, 402, 662}},
    {"WhereTheDialogWasDoesNotMatter", {0, 0, 768, 1024}, {50, -70, 250, 230}, {202, 362, 402, 662}},
    {"WhereTheScreenBeginsDoesNotMatter", {100, 2000, 868, 3024}, {0, 0, 200, 300}, {202, 362, 402, 662}},
    // (1024 - 301) / 2 = 361.5; (768 - 199 - 20) / 3 = 183
    {"OddSpacesAreCut", {0, 0, 768, 1024}, {0, 0, 199, 301}, {203, 361, 402, 662}},
    // (100 - 301) / 2 = -100.5, towards zero; (50 - 201 - 20) / 3 + 20 = -57 + 20
    {"ADialogLargerThanItsScreenIsCutTowardsZero", {0, 0, 50, 100}, {0, 0, 201, 301}, {-37, -100, 164, 201}},
    // (50 - 200 - 20) / 3 = -56.67, towards zero
    {"DownwardSpacesAreCutTowardsZeroToo", {0, 0, 50, 100}, {0, 0, 200, 300}, {-36, -100, 164, 200}},
    {"AnEmptyDialog", {0, 0, 320, 200}, {0, 0, 0, 0}, {120, 100, 120, 100}},
};
INSTANTIATE_TEST_SUITE_P(AboutBox, Places, testing::ValuesIn(kPlaces), CaseName());

TEST(DoAboutTest, TheDialogIsShownWhereItWasPlaced)
{
    HostContext host;
    const HostScope scope(&host);
    ASSERT_EQ(DoAbout(nullptr), kOk);
    EXPECT_EQ(host.dialog.bounds.left, 362);
    EXPECT_EQ(host.dialog.bounds.top, 202);
}

// ReportProc has no reference value, so that its calls are noted in one place.
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
