// Colours of process inks and of two spot inks, for tests of plates.
#pragma once

#include "host/drawing/Paint.h"

namespace vxhost
{

inline const SpotInk kRed = {"Red", {0, 1, 1, 0}}, kBlue = {"Blue", {1, 0.5, 0, 0}};

inline Colour Gray(double level)
{
    return {ColourSpace::Gray, {level}};
}
inline Colour Process(double c, double m, double y, double k)
{
    return {ColourSpace::Cmyk, {c, m, y, k}};
}
inline Colour Spot(const SpotInk &ink, double amount)
{
    Colour colour = {ColourSpace::Cmyk, {}, {{{&ink, amount}}}};
    for (size_t i = 0; i < 4; ++i)
        colour.ink[i] = amount * ink.alternate[i];
    return colour;
}

} // namespace vxhost
