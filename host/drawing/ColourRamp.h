// Colour ramps: whether shapes that follow each other step one blend, and the spans of its shading.
//
// A blend is told by its arithmetic. It has one step for each percent by which the ink that changes most changes, at
// equal distances, and no ink turns back. A chart of gray fields, say, changes more from field to field, stays as it
// is, and so does everything else whose steps are meant to be seen.
#pragma once

#include "host/drawing/Paint.h"
#include "host/drawing/Shading.h"

#include <cstddef>
#include <span>
#include <vector>

namespace vxhost
{

// No blend has more steps: an ink changes by 100 percent at most.
constexpr size_t kMaxRampSteps = 100;

// Whether the two can be parts of one shading.
bool AreAlike(const Paint &a, const Paint &b);

// How many of the steps, from the first on, are one blend; 0: they are none. starts, ascending, are where each step
// begins. All paints must be alike.
size_t CountRampSteps(std::span<const Paint> paints, std::span<const double> starts);

// The spans of a blend from 0 to 1. starts are as above; end, in the same unit, is where the last step ends.
std::vector<ColourSpan> MakeSpans(std::span<const Paint> paints, std::span<const double> starts, double end);

} // namespace vxhost
