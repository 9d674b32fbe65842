// Thin lines hold together: at one sample a pixel every line is a chain of touching pixels from end to end.
#include "tests/unit/raster/Canvas.h"

#include <cmath>
#include <gtest/gtest.h>

namespace vxhost
{
namespace
{

constexpr int kSize = 60;

// Whether two painted pixels are linked by painted ones, sideways or cornerwise, and how many pixels are painted.
struct Chain {
    std::vector<bool> painted;
    int count = 0, linked = 0;

    explicit Chain(const Picture &picture)
    {
        for (int i = 0; i < kSize * kSize; ++i) {
            painted.push_back(picture.rgba[static_cast<size_t>(i) * 4] !=
                              255); // everything here is black or white
            count += painted.back() ? 1 : 0;
        }
        for (int i = 0; i < kSize * kSize && linked == 0; ++i) {
            if (painted[static_cast<size_t>(i)])
                Follow(i);
        }
    }
    void Follow(int start)
    {
        std::vector<int> next = {start};
        while (!next.empty()) {
            const int at = next.back();
            next.pop_back();
            if (!painted[static_cast<size_t>(at)])
                continue;
            painted[static_cast<size_t>(at)] = false;
            ++linked;
            for (int row = std::max(at / kSize - 1, 0); row <= std::min(at / kSize + 1, kSize - 1); ++row) {
                for (int column = std::max(at % kSize - 1, 0); column <= std::min(at % kSize + 1, kSize - 1);
                     ++column)
                    next.push_back(row * kSize + column);
            }
        }
    }
};

RasterOptions OneSample()
{
    RasterOptions options = PlainOptions();
    options.samples = 1;
    return options;
}

std::string Number(double v)
{
    return std::to_string(v) + ' ';
}

class Hairlines : public testing::TestWithParam<const char *>
{
};

TEST_P(Hairlines, HoldTogetherAtEveryAngle)
{
    for (int degrees = 0; degrees < 360; ++degrees) {
        const double x = std::cos(degrees * M_PI / 180), y = std::sin(degrees * M_PI / 180);
        const double offset = degrees * 0.0137;
        const Picture picture = Draw(GetParam() + std::string(" 30.1 ") + Number(30.2 + offset) + "m " +
                                         Number(30.1 + 22 * x) + Number(30.2 + offset + 22 * y) + "l s",
                                     kSize, kSize, OneSample());
        const Chain chain(picture);
        const double columns = 22 * std::max(std::abs(x), std::abs(y));
        EXPECT_GE(chain.count, columns - 1) << degrees;
        EXPECT_EQ(chain.linked, chain.count) << degrees;
    }
}

TEST_P(Hairlines, HoldTogetherRoundCurves)
{
    for (int step = 0; step < 60; ++step) {
        const double shift = step * 0.0791;
        const Picture picture =
            Draw(GetParam() + std::string(" 5 ") + Number(5 + shift) + "m " + Number(90 - shift) +
                     "70 -40 60 50 " + Number(10 + shift) + "c 20 30 l 21 20 l s",
                 kSize, kSize, OneSample());
        const Chain chain(picture);
        EXPECT_GT(chain.count, 60) << step;
        EXPECT_EQ(chain.linked, chain.count) << step;
    }
}

TEST_P(Hairlines, NeverVanish)
{
    for (int step = 0; step < 200; ++step) {
        const double x = 10 + step * 0.0613, y = 10 + step * 0.0377, turn = step * 0.21;
        for (const double length : {0.0001, 0.02, 0.4, 0.9, 1.3}) {
            const Picture picture =
                Draw(GetParam() + std::string(" ") + Number(x) + Number(y) + "m " +
                         Number(x + length * std::cos(turn)) + Number(y + length * std::sin(turn)) + "l s",
                     kSize, kSize, OneSample());
            EXPECT_GE(Chain(picture).count, 1) << x << ' ' << y << ' ' << length;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Raster, Hairlines,
                         testing::Values("0 w", "0.001 w", "0.001 w 1 J 1 j", "0.5 w 2 j",
                                         "0.001 w 0.1 0.05 0 d"),
                         [](const auto &test) { return "Style" + std::to_string(test.index); });

} // namespace
} // namespace vxhost
