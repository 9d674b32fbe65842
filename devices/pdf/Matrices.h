// Whether there is a way back through a matrix.
#pragma once

#include "host/drawing/Path.h"

#include <cmath>

namespace vxhost::pdf
{

// False for a matrix that flattens what it maps, or makes it too small for its digits.
inline bool IsInvertible(const Matrix &m)
{
    const double determinant = std::abs(Determinant(m));
    return determinant > 1e-9 * std::hypot(m.a, m.b) * std::hypot(m.c, m.d) && determinant > 1e-9;
}

} // namespace vxhost::pdf
