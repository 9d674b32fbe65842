// What may be had, what was lent of it, and who gives back first.
#include "devices/raster/MemoryCap.h"

#include <gtest/gtest.h>

namespace vxhost::raster
{
namespace
{

struct Keeper final : Borrower {
    explicit Keeper(MemoryCap *lender) : cap(lender) {}

    MemoryCap *const cap;
    uint64_t held = 0;
    int asked = 0;

    bool Hold(uint64_t bytes)
    {
        const bool lent = cap->Borrow(bytes, this);
        held += lent ? bytes : 0;
        return lent;
    }
    void GiveBack() override
    {
        ++asked;
        cap->Return(held);
        held = 0;
    }
};

class MemoryCaps : public testing::Test
{
  protected:
    MemoryCap cap{100};
    Keeper keeper{&cap};
};

TEST_F(MemoryCaps, LendWhatIsLeft)
{
    EXPECT_TRUE(cap.Take(40));
    EXPECT_TRUE(keeper.Hold(50));
    EXPECT_FALSE(keeper.Hold(11));
    EXPECT_TRUE(keeper.Hold(10));
    EXPECT_FALSE(keeper.Hold(1));
    EXPECT_FALSE(cap.IsExhausted());
    EXPECT_EQ(cap.Left(), 60U); // whoever takes may have all of it
}

TEST_F(MemoryCaps, AskForWhatIsTaken)
{
    EXPECT_TRUE(keeper.Hold(60));
    EXPECT_TRUE(cap.Take(40));
    EXPECT_EQ(keeper.asked, 0);
    EXPECT_TRUE(cap.Take(1));
    EXPECT_EQ(keeper.asked, 1);
    EXPECT_EQ(keeper.held, 0U);
    EXPECT_TRUE(keeper.Hold(59));
    EXPECT_FALSE(keeper.Hold(1));
}

TEST_F(MemoryCaps, AreExhaustedByWhatIsTakenAlone)
{
    EXPECT_TRUE(keeper.Hold(100));
    EXPECT_TRUE(cap.Take(100));
    EXPECT_FALSE(cap.IsExhausted());
    EXPECT_FALSE(cap.Take(1));
    EXPECT_TRUE(cap.IsExhausted());
}

} // namespace
} // namespace vxhost::raster
