#include "devices/pdf/StrokeSpace.h"

#include <algorithm>
#include <cmath>

namespace vxhost::pdf
{

namespace
{

// Breadths closer than this to each other are the same to any eye.
constexpr double kRound = 1e-6;
// A pen flatter than this has a breadth below any device's, and a path mapped back would lose its digits.
constexpr double kFlat = 1e-5;

} // namespace

// The breadths of the pen are the singular values of the matrix.
StrokeSpace FindStrokeSpace(const Matrix &m)
{
    const double sum = std::hypot(m.a + m.d, m.b - m.c), difference = std::hypot(m.a - m.d, m.b + m.c);
    const double greatest = (sum + difference) / 2, least = std::abs(sum - difference) / 2;
    StrokeSpace space;
    space.scale = greatest;
    if (!(least > greatest * kFlat)) {
        space.isFlat = true;
        return space;
    }
    if (greatest - least <= greatest * kRound)
        return space;
    space.isPage = false;
    space.toPage = {m.a / greatest, m.b / greatest, m.c / greatest, m.d / greatest, 0, 0};
    const Matrix &n = space.toPage;
    const double determinant = n.a * n.d - n.b * n.c;
    space.fromPage = {n.d / determinant, -n.b / determinant, -n.c / determinant, n.a / determinant, 0, 0};
    return space;
}

} // namespace vxhost::pdf
