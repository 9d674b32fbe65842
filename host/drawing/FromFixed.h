// The boundary's 16.16 numbers as doubles, which hold each exactly.
#pragma once

#include "host/drawing/Path.h"

#include <vx/Types.h>

namespace vxhost
{

constexpr double FromFixed(Fixed value)
{
    return value / 65536.0;
}

constexpr Point FromFixed(const FixedPoint &point)
{
    return {FromFixed(point.x), FromFixed(point.y)};
}

} // namespace vxhost
