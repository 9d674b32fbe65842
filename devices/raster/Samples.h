// Sample space, which all of the raster device counts in: N samples a pixel each way, x to the right, y
// down, the centre of sample i at i + 0.5. What these few records mean is the contract between scanner, clip
// and ink.
#pragma once

#include "host/drawing/Vectors.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace vxhost::raster
{

// Samples begin ≤ i < end of one row.
struct Span {
    int32_t begin;
    int32_t end;
    friend bool operator==(const Span &, const Span &) = default;
};

// Samples left ≤ x < right, top ≤ y < bottom.
struct Bounds {
    int32_t left = 0, top = 0, right = 0, bottom = 0;
    bool IsEmpty() const { return left >= right || top >= bottom; }
    friend bool operator==(const Bounds &, const Bounds &) = default;
};

// No coordinate leaves this range, so that neither differences nor their squares overflow. It is far beyond
// any page: what is clamped cannot be seen, but its direction can, which is why the range is not tight.
constexpr double kFar = 1e12;

inline double ClampFar(double v)
{
    return v > -kFar ? std::min(v, kFar) : -kFar; // what is not a number goes to -kFar
}

// The smallest box around points, grown by what is drawn around them.
struct Extent {
    double left = kFar, top = kFar, right = -kFar, bottom = -kFar;

    void Add(Point p)
    {
        left = std::min(left, p.x);
        right = std::max(right, p.x);
        top = std::min(top, p.y);
        bottom = std::max(bottom, p.y);
    }
    bool Misses(const Bounds &b, double reach) const
    {
        return right + reach < b.left || left - reach > b.right || bottom + reach < b.top ||
               top - reach > b.bottom;
    }
    Bounds Within(const Bounds &b) const
    {
        const auto at = [](double v, int32_t low, int32_t high) {
            return static_cast<int32_t>(std::clamp<double>(v, low, high));
        };
        return {at(std::floor(left), b.left, b.right), at(std::floor(top), b.top, b.bottom),
                at(std::ceil(right), b.left, b.right), at(std::ceil(bottom), b.top, b.bottom)};
    }
    double Size() const { return std::max(right - left, bottom - top); }
};

} // namespace vxhost::raster
