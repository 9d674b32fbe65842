#include "devices/preflight/FlatBlends.h"

#include "devices/preflight/Extents.h"
#include "host/drawing/Vectors.h"

#include <algorithm>
#include <cmath>

namespace vxhost
{

namespace
{

constexpr size_t kLeastShapes = 6;             // fewer are shapes of their own
constexpr double kMostStep = 1.0 / 16;         // colours farther apart are meant to be seen
constexpr size_t kMostPoints = 200;            // of a step
constexpr double kTouch = 0.01;                // points
constexpr double kLeastPixels = 2;             // there is room for a step between
constexpr double kRounding = 1e-2;             // of percent and of pixels: documents have 16.16 numbers
constexpr double kPoints = 72, kPercent = 100; // of an inch, of an ink

// Returns how far the next step leaves the one before uncovered, which is at most how far its points are from theirs.
double Distance(const Path &from, const Path &to)
{
    double most = 0;
    for (size_t i = 0; i < from.points.size(); ++i)
        most = std::max(most, Length(to.points[i] - from.points[i]));
    return most;
}

} // namespace

// Returns by how much the inks change most; 0: the shape is no further step.
double FlatBlends::ChangeTo(const Path &path, const Paint &paint)
{
    if (shapes_ == 0 || path.verbs != last_.verbs || paint.overprint != paint_.overprint ||
        paint.colour.space != paint_.colour.space)
        return 0;
    double most = 0;
    double direction[4];
    for (size_t i = 0; i < 4; ++i) {
        const double change = paint.colour.ink[i] - paint_.colour.ink[i];
        if (change * direction_[i] < 0)
            return 0;
        direction[i] = change == 0 ? direction_[i] : change;
        most = std::max(most, std::abs(change));
    }
    const bool touches = !IsEmpty(Intersection(Grown(extent_, kTouch), ExtentOf(path)));
    if (most > kMostStep || !touches)
        return 0;
    std::ranges::copy(direction, direction_);
    return most;
}

std::optional<CoarseBlend> FlatBlends::Add(const Path &path, const Paint &paint, const Box &visible)
{
    if (path.points.size() > kMostPoints)
        return End();
    std::optional<CoarseBlend> ended;
    const double change = ChangeTo(path, paint);
    if (change == 0)
        ended = End();
    const bool isWide =
        change > 0 && Distance(last_, path) * limits_.gradientDpi / kPoints >= kLeastPixels - kRounding;
    if (isWide && change * kPercent > limits_.gradientStep + kRounding)
        blend_.step = std::max(blend_.step, change);
    blend_.box = shapes_++ == 0 ? visible : Union(blend_.box, visible);
    last_ = path;
    paint_ = paint;
    extent_ = ExtentOf(path);
    return ended;
}

std::optional<CoarseBlend> FlatBlends::End()
{
    const bool isCoarse = shapes_ >= kLeastShapes && blend_.step > 0 && !IsEmpty(blend_.box);
    const CoarseBlend ended = blend_;
    shapes_ = 0;
    blend_ = {};
    std::ranges::fill(direction_, 0);
    return isCoarse ? std::optional(ended) : std::nullopt;
}

} // namespace vxhost
