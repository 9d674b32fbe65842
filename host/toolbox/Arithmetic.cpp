// The Toolbox's fixed-point arithmetic: exact, rounded to nearest, saturated.
#include <vx/Toolbox.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace
{

constexpr double kFixedOne = 65536.0;
constexpr double kMost = 2147483647.0;
constexpr double kLeast = -2147483648.0;

int32_t Saturate(int64_t value)
{
    return static_cast<int32_t>(std::clamp<int64_t>(value, INT32_MIN, INT32_MAX));
}

} // namespace

extern "C" {

Fixed FixMul(Fixed x, Fixed y)
{
    return Saturate((int64_t{x} * y + 0x8000) >> 16);
}

Fract FracMul(Fract x, Fract y)
{
    return Saturate((int64_t{x} * y + (int64_t{1} << 29)) >> 30);
}

// One floating division is several times faster than a 64-bit integer one, and as exact: numerator and divisor
// fit a double, and a quotient q in range that is not itself half way between two integers lies at least
// q / 2^48 away from any half, which is 32 times the error of the division.
Fixed FixDiv(Fixed x, Fixed y)
{
    if (y == 0)
        return x >= 0 ? INT32_MAX : INT32_MIN;
    const double quotient = x * kFixedOne / y;
    return static_cast<Fixed>(std::clamp(quotient + std::copysign(0.5, quotient), kLeast, kMost));
}

double Fix2X(Fixed x)
{
    return x / kFixedOne;
}

Fixed X2Fix(double x)
{
    if (std::isnan(x))
        return 0;
    return static_cast<Fixed>(std::clamp(std::round(x * kFixedOne), kLeast, kMost));
}

} // extern "C"
