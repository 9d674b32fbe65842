// What a drawing keeps: shared between saves, given back by restores, and never more than it may have.
#include "host/drawing/Drawing.h"

#include "tests/unit/host/RecordingDevice.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>

namespace vxhost
{
namespace
{

using vxtest::RecordingDevice;

void Line(Drawing &d)
{
    d.MoveTo({0, 0});
    d.LineTo({9, 0});
}

// Copying the path at each save would take 10^10 steps here and 400 GB.
TEST(DrawingMemory, SavesOfALongPathShareIt)
{
    constexpr int kMany = 100000;
    RecordingDevice device;
    Drawing drawing(&device, int64_t{64} << 20);
    drawing.MoveTo({0, 0});
    for (int i = 0; i < kMany; ++i)
        drawing.LineTo({1, 1});
    for (int i = 0; i < kMany; ++i)
        drawing.Save();
    for (int i = 0; i < kMany; ++i)
        drawing.LineTo({2, 2});
    drawing.EndAll();
    drawing.NewPath();
    Line(drawing);
    drawing.Fill();
    EXPECT_EQ(device.calls, "fill M0 0 L9 0");
}

// Each of many levels has a path, which is given back on the way out: so this can be done again and again.
TEST(DrawingMemory, IsGivenBackByRestores)
{
    RecordingDevice device;
    Drawing drawing(&device, int64_t{4} << 20);
    for (int round = 0; round < 20; ++round) {
        for (int level = 0; level < 2000; ++level) {
            Line(drawing);
            drawing.SetDash(0, std::array{1.0, 2.0, 3.0});
            drawing.Save();
            drawing.NewPath();
        }
        drawing.EndAll();
        drawing.NewPath();
    }
    EXPECT_EQ(device.calls, "");
}

TEST(DrawingMemory, AnEndlessPathSpendsItsBudget)
{
    RecordingDevice device;
    Drawing drawing(&device, 1 << 20);
    drawing.MoveTo({0, 0});
    const auto draw = [&] {
        for (int i = 0; i < 1000000; ++i)
            drawing.LineTo({1, 1});
    };
    EXPECT_THROW(draw(), BudgetSpent);
}

TEST(DrawingMemory, EndlessSavesSpendTheirBudgetAndCanStillBeRestored)
{
    RecordingDevice device;
    Drawing drawing(&device, 1 << 20);
    Line(drawing);
    const auto save = [&] {
        for (int i = 0; i < 1000000; ++i) {
            drawing.Save();
            drawing.Clip();
            device.calls.clear();
        }
    };
    EXPECT_THROW(save(), BudgetSpent);
    device.calls.clear();
    drawing.EndAll();
    const size_t restores = (device.calls.size() + 2) / std::string("restore; ").size();
    EXPECT_GT(restores, 1000u);
    EXPECT_LT(restores, size_t{1} << 20);
}

} // namespace
} // namespace vxhost
