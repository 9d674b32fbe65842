// The four inks of a point in one word, as screens and picture files count them: 8 bits each.
#pragma once

#include "host/drawing/Device.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace vxhost
{

// Cyan in the lowest byte, black in the highest. 0 is paper.
using InkWord = uint32_t;

// The four inks of a colour before they are cut to whole numbers: 0 to 255, plus a half, so that cutting rounds. Gray
// is black ink alone. Amounts below 0 and above 1.0 are clamped.
using InkLevels = std::array<double, 4>;

inline double LevelOf(double amount)
{
    constexpr double kHalf = 0.5;
    return std::clamp(amount, 0.0, 1.0) * 255 + kHalf;
}

inline InkLevels LevelsOf(const Colour &colour)
{
    const auto &ink = colour.ink;
    if (colour.space == ColourSpace::Gray)
        return {LevelOf(0), LevelOf(0), LevelOf(0), LevelOf(1 - ink[0])};
    return {LevelOf(ink[0]), LevelOf(ink[1]), LevelOf(ink[2]), LevelOf(ink[3])};
}

inline InkWord WordOf(const InkLevels &levels)
{
    const auto level = [&levels](size_t i) { return static_cast<InkWord>(static_cast<int32_t>(levels[i])); };
    return level(0) | level(1) << 8 | level(2) << 16 | level(3) << 24;
}

inline InkWord InksOf(const Colour &colour)
{
    return WordOf(LevelsOf(colour));
}

} // namespace vxhost
