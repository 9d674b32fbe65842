// The inks that a press prints a colour with.
#pragma once

#include "host/drawing/Paint.h"

#include <array>
#include <cstddef>
#include <span>
#include <tuple>

namespace vxhost
{

inline constexpr size_t kInkCount = 4;
extern const SpotInk kProcessInks[kInkCount];

// A colour taken apart: the spot inks that PDF can have, then what process inks stand for the rest, each as far as it is there.
struct InkShares {
    static constexpr size_t kMost = std::tuple_size_v<decltype(Colour::spots)> + kInkCount;

    std::array<const SpotInk *, kMost> inks = {};
    std::array<double, kMost> amounts = {};
    size_t count = 0;
    size_t spotCount = 0; // of those

    friend bool operator==(const InkShares &, const InkShares &) = default;
};

// A mixture in which a name would stand twice, as that of one ink mixed in two ways, has no spot inks.
InkShares FindShares(const Colour &colour);

// Returns whether no two have one name: a space cannot have an ink twice.
bool HaveOwnNames(std::span<const SpotInk *const> inks);

} // namespace vxhost
