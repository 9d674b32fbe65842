// The way back through a matrix.
#pragma once

#include "host/drawing/Path.h"

#include <cmath>

namespace vxhost::pdf
{

// False for a matrix that flattens what it maps, or makes it too small for its digits.
inline bool IsInvertible(const Matrix &m)
{
    const double determinant = std::abs(m.a * m.d - m.b * m.c);
    return determinant > 1e-9 * std::hypot(m.a, m.b) * std::hypot(m.c, m.d) && determinant > 1e-9;
}

// The vector that an invertible matrix makes this one of, without its translation.
inline Point MapBack(const Matrix &m, Point to)
{
    const double determinant = m.a * m.d - m.b * m.c;
    return {(m.d * to.x - m.c * to.y) / determinant, (m.a * to.y - m.b * to.x) / determinant};
}

} // namespace vxhost::pdf
