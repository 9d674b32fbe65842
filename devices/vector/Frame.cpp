#include "devices/vector/Frame.h"

#include <algorithm>
#include <cmath>

namespace vxhost
{

namespace
{

constexpr double kLeastRatio = 1e-3;
// An ellipse so near to a circle is taken for one: nobody sees the difference.
constexpr double kRoundRatio = 1 - 1e-6;

// The ellipse that the unit circle becomes.
struct Ellipse {
    double angle = 0; // of its long axis
    double longRadius = 0, ratio = 1;
};

Ellipse FindEllipse(const Matrix &m)
{
    const double p = m.a * m.a + m.c * m.c, q = m.a * m.b + m.c * m.d, r = m.b * m.b + m.d * m.d;
    Ellipse ellipse;
    ellipse.angle = 0.5 * std::atan2(2 * q, p - r);
    const double square = (p + r) / 2 + std::hypot((p - r) / 2, q);
    ellipse.longRadius = std::sqrt(square);
    if (square > 0)
        ellipse.ratio = std::min(std::abs(Determinant(m)) / square, 1.0);
    return ellipse;
}

} // namespace

Frame FindFrame(const Matrix &matrix)
{
    const Ellipse ellipse = FindEllipse(matrix);
    Frame frame;
    frame.scale = ellipse.longRadius;
    frame.isFlat = ellipse.longRadius == 0 || ellipse.ratio < kLeastRatio;
    if (ellipse.longRadius == 0 || ellipse.ratio > kRoundRatio)
        return frame;
    frame.isPlain = false;
    const double ratio = std::max(ellipse.ratio, kLeastRatio);
    const double cos = std::cos(ellipse.angle), sin = std::sin(ellipse.angle);
    // The matrix is symmetric: it turns the long axis onto x, squeezes across it, and turns back. So what only
    // stretches along the axes stays a stretch along the axes.
    const auto stretch = [&](double across) {
        const double mixed = cos * sin * (1 - across);
        return Matrix{cos * cos + sin * sin * across, mixed, mixed, sin * sin + cos * cos * across, 0, 0};
    };
    frame.toPicture = stretch(ratio);
    frame.fromPicture = stretch(1 / ratio);
    return frame;
}

} // namespace vxhost
