#include "library/Decimal.h"

#include <gtest/gtest.h>

namespace vxhost
{

namespace
{

TEST(DecimalTest, HasNoZerosAtTheEnd)
{
    EXPECT_EQ(Decimal(470.25), "470.25");
    EXPECT_EQ(Decimal(576), "576");
    EXPECT_EQ(Decimal(100, 0), "100");
    EXPECT_EQ(Decimal(203.2000001, 2), "203.2");
    EXPECT_EQ(Decimal(-0.000001), "0");
}

} // namespace

} // namespace vxhost
