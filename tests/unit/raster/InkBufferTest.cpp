// Pixels of one ink, of two and of many are the same as a plain list of samples, each painted by itself.
#include "devices/raster/InkBuffer.h"

#include <array>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <tuple>

namespace vxhost::raster
{
namespace
{

constexpr int kHeight = 66; // two bands

struct Sample {
    InkWord ink = 0;
    bool painted = false;
    friend bool operator==(const Sample &, const Sample &) = default;
};

uint64_t FullMask(int samples)
{
    return ~uint64_t{0} >> (64 - samples * samples);
}

// This keeps every sample by itself: the plain twin of the buffer.
class PlainInks
{
  public:
    PlainInks(int width, int samples)
        : width_(static_cast<size_t>(width)), each_(static_cast<size_t>(samples * samples)),
          samples_(width_ * kHeight * each_)
    {
    }

    void Paint(int y, int left, int right, uint64_t mask, const Ink &ink)
    {
        for (int x = left; x < right; ++x) {
            for (size_t i = 0; i < each_; ++i) {
                Sample &sample = At(x, y, i);
                if ((mask >> i & 1) != 0)
                    sample = {ink.Over(sample.ink), true};
            }
        }
    }

    // Returns the first place where the buffer differs; empty: there is none.
    std::string Compare(const InkBuffer &buffer, bool tracked, int y)
    {
        const InkBuffer::Row row = buffer.ReadRow(y);
        for (int x = 0; x < static_cast<int>(width_); ++x) {
            std::array<Sample, 64> found = {};
            if (!row.IsBlank() && row.IsSplit(x)) {
                row.ForInks(x, [&](InkWord ink, uint64_t mask) {
                    for (; mask != 0; mask &= mask - 1)
                        found[static_cast<size_t>(std::countr_zero(mask))] = {ink, true};
                });
            } else if (!row.IsBlank() && row.IsPainted(x)) {
                found.fill({row.Pixel(x), true});
            }
            for (size_t i = 0; i < each_; ++i) {
                const Sample &wanted = At(x, y, i);
                if (tracked ? found[i] != wanted : found[i].ink != wanted.ink)
                    return "sample " + std::to_string(i) + " of pixel " + std::to_string(x) + " in row " +
                           std::to_string(y);
            }
        }
        return "";
    }

  private:
    Sample &At(int x, int y, size_t i)
    {
        return samples_[(static_cast<size_t>(y) * width_ + static_cast<size_t>(x)) * each_ + i];
    }

    size_t width_, each_;
    std::vector<Sample> samples_;
};

// Paints as drawings do, few inks over and over, and as they do not.
class RandomPaints
{
  public:
    RandomPaints(int samples, bool overprints, bool mixes)
        : samples_(samples), overprints_(overprints), mixes_(mixes)
    {
    }

    int Below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }

    Ink NextInk()
    {
        constexpr InkWord kInks[] = {0, 0, 0xFF000000, 0x00FF0000, 0x80402010, 0xFFFFFFFF};
        Ink ink;
        ink.value = Below(8) == 0 ? static_cast<InkWord>(random_()) : kInks[Below(6)];
        for (int shift = 0; overprints_ && shift < 32; shift += 8) {
            if (Below(3) == 0)
                ink.keep |= InkWord{0xFF} << shift;
        }
        ink.value &= ~ink.keep;
        if (mixes_ && Below(2) == 0)
            ink.strength = Below(Ink::kFullStrength + 1);
        return ink;
    }

    uint64_t NextMask()
    {
        const uint64_t full = FullMask(samples_);
        switch (Below(5)) {
        case 0:
            return full;
        case 1:
            return random_() & full;
        case 2: // all but a sample
            return full & ~(uint64_t{1} << Below(samples_ * samples_));
        default: // the rows from one on, or those before it
            const uint64_t rows = full & (~uint64_t{0} << (Below(samples_) * samples_));
            return Below(2) == 0 ? rows : full & ~rows;
        }
    }

  private:
    int samples_;
    bool overprints_, mixes_;
    std::mt19937_64 random_;
};

using Kind = std::tuple<int, bool, bool, bool>; // samples a side, tracked, overprints, mixes

std::string NameOfKind(const testing::TestParamInfo<Kind> &info)
{
    const auto &[samples, tracked, overprints, mixes] = info.param;
    std::string name = "Samples";
    name.append(std::to_string(samples)).append(tracked ? "Tracked" : "");
    return name.append(overprints ? "Overprinting" : "").append(mixes ? "Mixing" : "");
}

class InkBuffers : public testing::TestWithParam<Kind>
{
};

TEST_P(InkBuffers, HoldWhatPlainSamplesHold)
{
    const auto [samples, tracked, overprints, mixes] = GetParam();
    RandomPaints paints(samples, overprints, mixes);
    for (const int width : {1, 63, 64, 65, 130}) {
        MemoryCap budget(uint64_t{1} << 30);
        InkBuffer buffer(width, kHeight, samples, tracked, &budget);
        PlainInks plain(width, samples);
        for (int i = 0; i < 500; ++i) {
            constexpr int kRows[] = {0, 1, 63, 64, 65};
            const int y = kRows[paints.Below(5)];
            const int left = paints.Below(width);
            const int most = paints.Below(20) == 0 ? width : std::min(width, left + 4);
            const int right = left + 1 + paints.Below(most - left);
            const uint64_t mask = paints.NextMask();
            const Ink ink = paints.NextInk();
            ASSERT_TRUE(buffer.SelectRow(y));
            buffer.Prefetch(left);
            buffer.PrefetchBlocks(static_cast<size_t>(left / 64), uint64_t{1} << (left % 64));
            const auto count = static_cast<uint16_t>(right - left);
            const MaskedRun runs[] = {{2, count, static_cast<uint16_t>(mask)}};
            buffer.PrefetchRow(y, left, right - 1);
            buffer.PrefetchMasks(y, left - 2, runs);
            if (mask != 0 && samples <= 4 && paints.Below(2) == 0)
                buffer.PaintMasks(left - 2, runs, ink);
            else if (mask != 0)
                buffer.Paint(left, right, mask, ink);
            plain.Paint(y, left, right, mask, ink);
            ASSERT_EQ(plain.Compare(buffer, tracked, y), "") << "after paint " << i << ", width " << width;
        }
        EXPECT_FALSE(budget.IsExhausted());
    }
}

INSTANTIATE_TEST_SUITE_P(Raster, InkBuffers,
                         testing::Combine(testing::Values(1, 2, 4, 8), testing::Bool(), testing::Bool(),
                                          testing::Bool()),
                         NameOfKind);

// Two inks take eight bytes a pixel, for some thousand pixels at a time. A block is for the third, until one of them is covered.
TEST(InksOfAPixel, TakeBlocksForThreeInksAlone)
{
    MemoryCap budget(uint64_t{1} << 20);
    InkBuffer buffer(128, 64, 4, false, &budget);
    ASSERT_TRUE(buffer.SelectRow(5));
    const auto taken = [&](uint64_t mask, InkWord ink) {
        const uint64_t before = budget.Left();
        buffer.Paint(3, 64, mask, {ink, 0, Ink::kFullStrength});
        return before - budget.Left();
    };
    EXPECT_EQ(taken(0x00FF, 0x11), 1024 * 8U);
    EXPECT_EQ(taken(0xFFF0, 0x22), 0U); // nothing is left of paper
    EXPECT_EQ(taken(0x000F, 0x33), 0U); // nor of the first ink
    EXPECT_EQ(taken(0x0003, 0x22), 0U); // this one is there
    EXPECT_GT(taken(0x0300, 0x44), 60 * 16U * 4U);
}

} // namespace
} // namespace vxhost::raster
