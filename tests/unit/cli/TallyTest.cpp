// The words in which a batch tells how far it is, and what became of it.
#include "cli/batch/Tally.h"

#include <gtest/gtest.h>

namespace vxhost
{
namespace
{

using std::chrono::milliseconds;
using std::chrono::seconds;

const Tally::Clock::time_point kBegan;

Summary SummaryOf(Status status, bool warns)
{
    Summary summary;
    summary.status = status;
    if (warns)
        summary.warnings.emplace_back("a warning");
    return summary;
}

Tally TallyOf(std::optional<size_t> documents, int done, int warned, int failed, int before = 0)
{
    Tally tally;
    tally.Begin(documents, kBegan);
    for (int i = 0; i < done + failed; ++i)
        tally.Add(SummaryOf(i < done ? Status::Done : Status::LimitHit, i < warned), i < before);
    return tally;
}

TEST(Tally, SaysHowFarItIs)
{
    EXPECT_EQ(TallyOf(10114, 0, 0, 0).ProgressText(kBegan), "0 of 10,114 done");
    EXPECT_EQ(TallyOf({}, 20, 0, 0).ProgressText(kBegan + seconds(10)), "20 done, 2 a second");
    EXPECT_EQ(TallyOf(1000, 100, 5, 2).ProgressText(kBegan + seconds(10)),
              "102 of 1,000 done, 10 a second, 1 min 29 s left, 2 failed, 5 with warnings");
    EXPECT_EQ(TallyOf(100000, 3, 0, 0).ProgressText(kBegan + seconds(4)),
              "3 of 100,000 done, 0.75 a second, 37 h 2 min left");
    EXPECT_EQ(TallyOf(5, 5, 0, 0).ProgressText(kBegan + milliseconds(500)), "5 of 5 done, 10 a second");
    EXPECT_EQ(TallyOf(200, 110, 0, 0, 100).ProgressText(kBegan + seconds(1)),
              "110 of 200 done, 10 a second, 9 s left"); // what was there before took no time
}

TEST(Tally, SumsUp)
{
    const Tally::Clock::time_point now = kBegan + seconds(200);
    EXPECT_EQ(TallyOf({}, 1, 0, 0).EndText(BatchEnd::Whole, false, now), "1 document in 3 min 20 s: 1 done");
    EXPECT_EQ(TallyOf(1213, 1200, 7, 13, 1000).EndText(BatchEnd::Whole, true, now),
              "1,213 documents in 3 min 20 s: 1,200 done, 7 with warnings, 13 failed, 1,000 before this run; "
              "--resume --retry failed tries these again");
    EXPECT_EQ(TallyOf(10114, 213, 0, 0).EndText(BatchEnd::Interrupted, true, now),
              "interrupted: 213 of 10,114 done; --resume goes on");
    EXPECT_EQ(TallyOf({}, 213, 0, 1).EndText(BatchEnd::Asked, false, now),
              "asked to end: 214 done, 1 failed; with --journal, --resume could go on");
}

TEST(Tally, DoesNotCountWhatIsNoDocument)
{
    Tally tally = TallyOf(3, 1, 0, 0);
    tally.TakeBack();
    EXPECT_EQ(tally.ProgressText(kBegan), "1 of 2 done");
    EXPECT_EQ(tally.EndText(BatchEnd::Whole, false, kBegan),
              "1 document in 0 s: 1 done, 1 file is no drawing");
    tally.AddPassedOver(1199);
    EXPECT_EQ(tally.EndText(BatchEnd::Whole, false, kBegan),
              "1 document in 0 s: 1 done, 1,200 files are no drawing");
}

} // namespace
} // namespace vxhost
