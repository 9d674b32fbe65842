// What a worker may take. How it ends is tested with the command.
#include "jobs/Worker.h"

#include <gtest/gtest.h>

namespace vxhost
{
namespace
{

constexpr int64_t kMebibyte = int64_t{1} << 20;

TEST(WorkerLimits, AnOutputMayBe32TimesTheInputAnd256MebibytesAtLeast)
{
    const WorkerLimits limits;
    EXPECT_EQ(limits.For(0).output, 256 * kMebibyte);
    EXPECT_EQ(limits.For(size_t{8} << 20).output, 256 * kMebibyte);
    EXPECT_EQ(limits.For((size_t{8} << 20) + 1).output, 256 * kMebibyte + 32);
    EXPECT_EQ(limits.For(0x7FFFFFFF).output, int64_t{0x7FFFFFFF} * 32);
}

TEST(WorkerLimits, WhatIsSaidStays)
{
    WorkerLimits limits;
    limits.seconds = 5;
    limits.memory = 7;
    for (const int64_t said : {int64_t{0}, int64_t{1024}}) { // no limit, and a small one
        limits.output = said;
        EXPECT_EQ(limits.For(size_t{1} << 30).output, said);
    }
    EXPECT_EQ(limits.For(1).seconds, 5);
    EXPECT_EQ(limits.For(1).memory, 7);
}

} // namespace
} // namespace vxhost
