#include "devices/colour/InkShares.h"

#include "host/drawing/CropMarks.h"

#include <algorithm>

namespace vxhost
{

const SpotInk kProcessInks[kInkCount] = {
    {"Cyan", {1, 0, 0, 0}}, {"Magenta", {0, 1, 0, 0}}, {"Yellow", {0, 0, 1, 0}}, {"Black", {0, 0, 0, 1}}};

namespace
{

// Less is what roundings leave: it stands for nothing.
constexpr double kLeastShare = 1.0 / 4096;

InkShares TakeApart(const Colour &colour, bool keepsSpots)
{
    InkShares shares;
    const auto add = [&](const SpotInk *ink, double amount) {
        shares.inks[shares.count] = ink;
        shares.amounts[shares.count++] = amount;
    };
    double rest[kInkCount];
    std::ranges::copy(colour.ink, rest);
    for (const SpotShare &share : colour.spots) {
        if (!keepsSpots || share.ink == nullptr)
            continue;
        if (!CanHavePlate(share.ink->name) && share.ink != &kRegistrationInk)
            continue;
        add(share.ink, share.amount);
        for (size_t i = 0; i < kInkCount; ++i)
            rest[i] -= share.amount * share.ink->alternate[i];
    }
    shares.spotCount = shares.count;
    const double least = shares.spotCount > 0 ? kLeastShare : 0;
    for (size_t i = 0; i < kInkCount; ++i) {
        if (rest[i] > least)
            add(&kProcessInks[i], rest[i]);
    }
    return shares;
}

} // namespace

bool HaveOwnNames(std::span<const SpotInk *const> inks)
{
    for (size_t i = 0; i < inks.size(); ++i) {
        const auto isLike = [&](const SpotInk *other) { return other->name == inks[i]->name; };
        if (std::ranges::any_of(inks.first(i), isLike))
            return false;
    }
    return true;
}

InkShares FindShares(const Colour &colour)
{
    const InkShares shares = TakeApart(colour, true);
    return HaveOwnNames(std::span(shares.inks).first(shares.count)) ? shares : TakeApart(colour, false);
}

} // namespace vxhost
