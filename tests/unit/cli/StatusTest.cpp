// Tests which exit status wins when several inputs end differently.
#include "cli/report/Status.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <iterator>

namespace vxhost
{

namespace
{

TEST(WorstTest, FollowsTheOrderWhicheverComesFirst)
{
    constexpr Status kWorstFirst[] = {Status::Interrupted,  Status::WorkerCrashed, Status::LimitHit,
                                      Status::OutputFailed, Status::InputFailed,   Status::Warned,
                                      Status::Done};
    for (size_t worse = 0; worse < std::size(kWorstFirst); ++worse) {
        for (size_t better = worse; better < std::size(kWorstFirst); ++better) {
            EXPECT_EQ(Worst(kWorstFirst[worse], kWorstFirst[better]), kWorstFirst[worse]);
            EXPECT_EQ(Worst(kWorstFirst[better], kWorstFirst[worse]), kWorstFirst[worse]);
        }
    }
}

} // namespace

} // namespace vxhost
