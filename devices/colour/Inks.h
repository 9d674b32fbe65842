// The four inks of a point in one word, as screens and picture files count them: 8 bits each.
#pragma once

#include "host/drawing/Device.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace vxhost
{

// Cyan in the lowest byte, black in the highest. 0 is paper.
using InkWord = uint32_t;

// 0 to 1.0, rounded; what lies outside is clamped.
inline InkWord InkByte(double amount)
{
    constexpr double kHalf = 0.5; // cheaper than a call that also rounds what is below 0
    return static_cast<InkWord>(static_cast<int32_t>(std::clamp(amount, 0.0, 1.0) * 255 + kHalf));
}

// Gray is black ink alone.
inline InkWord InksOf(const Colour &colour)
{
    if (colour.space == ColourSpace::Gray)
        return InkByte(1 - colour.ink[0]) << 24;
    InkWord inks = 0;
    for (int i = 0; i < 4; ++i)
        inks |= InkByte(colour.ink[i]) << (8 * i);
    return inks;
}

} // namespace vxhost
