// Tests when the clock of a pass is looked at.
#include "library/interface/ClockPause.h"

#include <gtest/gtest.h>

namespace vxhost
{
namespace
{

// Returns the number of steps up to the next look.
unsigned StepsToLook(ClockPause *pause)
{
    unsigned steps = 1;
    while (!pause->IsOver())
        ++steps;
    return steps;
}

TEST(ClockPause, GrowsWhileStepsAreQuickAndEndsWithASlowOne)
{
    ClockPause pause;
    for (const unsigned steps : {1, 2, 4, 8, 16, 32, 32}) {
        EXPECT_EQ(StepsToLook(&pause), steps);
        pause.Begin(std::chrono::microseconds(1));
    }
    EXPECT_EQ(StepsToLook(&pause), 32U);
    pause.Begin(std::chrono::milliseconds(1));
    EXPECT_EQ(StepsToLook(&pause), 1U);
    pause.Begin(std::chrono::milliseconds(1));
    EXPECT_EQ(StepsToLook(&pause), 1U);
}

} // namespace
} // namespace vxhost
