// Memory that is counted and has an end.
#include "host/CappedHeap.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace vxhost
{
namespace
{

class CappedHeapTest : public testing::Test
{
  protected:
    void *Allocate(int32_t size) { return heap_.Procs()->allocate(size, heap_.Procs()->refcon); }
    void Release(void *block) { heap_.Procs()->release(block, heap_.Procs()->refcon); }

    CappedHeap heap_{1000};
};

TEST_F(CappedHeapTest, CountsWhatIsHeldAndItsPeak)
{
    void *first = Allocate(600);
    void *second = Allocate(400);
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    Release(first);
    EXPECT_EQ(heap_.HeldBytes(), 400);
    EXPECT_EQ(heap_.PeakBytes(), 1000);
    Release(second);
    EXPECT_EQ(heap_.HeldBytes(), 0);
    EXPECT_FALSE(heap_.WasLimitHit());
}

TEST_F(CappedHeapTest, RefusesWhatGoesOverTheLimit)
{
    void *first = Allocate(600);
    EXPECT_EQ(Allocate(401), nullptr);
    EXPECT_TRUE(heap_.WasLimitHit());
    EXPECT_TRUE(heap_.HasRefused());
    void *fits = Allocate(400);
    EXPECT_NE(fits, nullptr) << "a refusal takes nothing";
    EXPECT_EQ(Allocate(INT32_MAX), nullptr);
    Release(fits);
    Release(first);
}

TEST_F(CappedHeapTest, AlignsForAnything)
{
    void *odd = Allocate(1);
    void *block = Allocate(24);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % alignof(std::max_align_t), 0u);
    std::memset(block, 0xFF, 24);
    Release(odd);
    Release(block);
    EXPECT_EQ(heap_.HeldBytes(), 0);
}

TEST_F(CappedHeapTest, TakesNonsenseCalmly)
{
    EXPECT_EQ(Allocate(-1), nullptr);
    EXPECT_FALSE(heap_.WasLimitHit());
    EXPECT_FALSE(heap_.HasRefused());
    Release(nullptr);
    EXPECT_EQ(heap_.HeldBytes(), 0);
}

} // namespace
} // namespace vxhost
