// Fixed-point numbers and matrices, on the host's own arithmetic.
//
// Every product is one FixedMul, which asks the host where the answer is not plain; sums wrap, they do not saturate.
#pragma once

#include <vx/Toolbox.h>
#include <vx/Types.h>

#include <cstdint>

namespace vx
{

constexpr Fixed kFixedOne = 0x10000;

// Text is multiplied by the same few matrices again and again, mostly by zeros and ones: those products are known.
inline Fixed FixedMul(Fixed x, Fixed y)
{
    if (x == 0 || y == 0)
        return 0;
    return y == kFixedOne ? x : FixMul(x, y);
}
// x / y as a Fixed: two Fixed or two integers give their quotient in 16.16.
inline Fixed FixedDiv(Fixed x, Fixed y)
{
    return FixDiv(x, y);
}
inline double Fixed2Double(Fixed x)
{
    return Fix2X(x);
}
inline Fixed Double2Fixed(double x)
{
    return X2Fix(x);
}
// A product with zero is common, and saves the call. Nothing calls this.
inline Fract FractMul(Fract x, Fract y)
{
    return x == 0 || y == 0 ? 0 : FracMul(x, y);
}

constexpr Fixed AddFixed(Fixed x, Fixed y)
{
    return static_cast<Fixed>(static_cast<uint32_t>(x) + static_cast<uint32_t>(y));
}
constexpr Fixed SubtractFixed(Fixed x, Fixed y)
{
    return static_cast<Fixed>(static_cast<uint32_t>(x) - static_cast<uint32_t>(y));
}
constexpr Fixed NegateFixed(Fixed x)
{
    return SubtractFixed(0, x);
}
// Integers beyond ±32767 wrap.
constexpr Fixed IntegerToFixed(int32_t x)
{
    return static_cast<Fixed>(static_cast<uint32_t>(x) << 16);
}

// result = n followed by m, the PostScript concat of n onto m. result may be m or n. Nothing calls it.
void ConcatZRKMats(const FixedMatrix *m, const FixedMatrix *n, FixedMatrix *result);
// (x·a + y·c + tx, x·b + y·d + ty). result may be point. Nothing calls it.
void TransformZRKPoint(const FixedMatrix *m, const FixedPoint *point, FixedPoint *result);
// The same without the translation.
void DTransformZRKPoint(const FixedMatrix *m, const FixedPoint *vector, FixedPoint *result);
// Both act before the matrix, as the PostScript operators do.
void TranslateZRKMatrix(FixedMatrix *m, Fixed dx, Fixed dy);
void ScaleZRKMatrix(FixedMatrix *m, Fixed sx, Fixed sy);

} // namespace vx
