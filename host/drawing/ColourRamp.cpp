#include "host/drawing/ColourRamp.h"

#include <algorithm>
#include <cmath>

namespace vxhost
{

namespace
{

// With fewer steps there is nothing between the two ends to tell a blend by.
constexpr size_t kMinSteps = 3;

constexpr double kStepsPerUnit = 100;
// The number of steps is rounded, and the last step falls short of the last colour by the rounding of the parameter.
constexpr double kStepCountError = 0.6;

// How far from its place a step may begin, in steps. Widths are rounded to 16.16, and 99 times half a unit of that is
// 8 hundredths of a step.
constexpr double kPlaceError = 0.1;

// Neighbours that differ by more are an edge. An even ramp steps by 1 to 1.5 percent; one with the most uneven midpoint
// that drawing programs offer, 13 percent, by 5.
constexpr double kLargestStep = 1.0 / 16;

double LargestChange(const Colour &a, const Colour &b)
{
    double change = 0;
    for (int i = 0; i < 4; ++i)
        change = std::max(change, std::abs(b.ink[i] - a.ink[i]));
    return change;
}

// How many of the paints, from the first on, turn back in no ink.
size_t CountMonotonic(std::span<const Paint> paints)
{
    double direction[4] = {};
    for (size_t n = 1; n < paints.size(); ++n) {
        for (int i = 0; i < 4; ++i) {
            const double change = paints[n].colour.ink[i] - paints[n - 1].colour.ink[i];
            if (change * direction[i] < 0)
                return n;
            if (change != 0)
                direction[i] = change;
        }
    }
    return paints.size();
}

bool IsStepCount(size_t steps, double change)
{
    return std::abs(kStepsPerUnit * change - static_cast<double>(steps)) <= kStepCountError;
}

bool AreEven(std::span<const double> starts)
{
    const double step = (starts.back() - starts.front()) / static_cast<double>(starts.size() - 1);
    for (size_t i = 0; i < starts.size(); ++i) {
        const double place = starts.front() + step * static_cast<double>(i);
        if (!(std::abs(starts[i] - place) <= step * kPlaceError))
            return false;
    }
    return step > 0;
}

// Whether the colours are not to run into each other. With overprint, no ink and very little ink are two things: no
// ink leaves what is below.
bool IsEdge(const Paint &a, const Paint &b)
{
    if (LargestChange(a.colour, b.colour) > kLargestStep)
        return true;
    if (!a.overprint || a.colour.space == ColourSpace::Gray)
        return false;
    return !std::ranges::equal(a.colour.ink, b.colour.ink,
                               [](double inkA, double inkB) { return (inkA == 0) == (inkB == 0); });
}

} // namespace

bool AreAlike(const Paint &a, const Paint &b)
{
    return a.colour.space == b.colour.space && a.overprint == b.overprint;
}

size_t CountRampSteps(std::span<const Paint> paints, std::span<const double> starts)
{
    // The longest run that fits is taken: the first half of a blend also passes for a blend, of half the colours.
    for (size_t n = CountMonotonic(paints.first(std::min(paints.size(), kMaxRampSteps))); n >= kMinSteps;
         --n) {
        if (IsStepCount(n, LargestChange(paints[0].colour, paints[n - 1].colour)) && AreEven(starts.first(n)))
            return n;
    }
    return 0;
}

std::vector<ColourSpan> MakeSpans(std::span<const Paint> paints, std::span<const double> starts, double end)
{
    const double length = end - starts.front();
    const auto at = [&](size_t i) { return i < paints.size() ? (starts[i] - starts.front()) / length : 1.0; };
    std::vector<ColourSpan> spans;
    for (size_t first = 0, next = 1; next <= paints.size(); ++next) {
        if (next < paints.size() && !IsEdge(paints[next - 1], paints[next]))
            continue;
        ColourSpan span = {at(first), at(next), {}};
        span.colours.reserve(next - first);
        for (size_t i = first; i < next; ++i)
            span.colours.push_back(paints[i].colour);
        if (span.colours.front() == span.colours.back()) // no ink turns back, so all between are the same
            span.colours.resize(1);
        spans.push_back(std::move(span));
        first = next;
    }
    return spans;
}

} // namespace vxhost
