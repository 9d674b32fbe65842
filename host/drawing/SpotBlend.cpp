#include "host/drawing/SpotBlend.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace vxhost
{

namespace
{

// The numbers that are sent are multiples of this, and each comes of a product that is rounded.
constexpr double kUnit = 1.0 / 65536;
constexpr double kRounding = 2 * kUnit;

double ChangeOf(const SpotBlend::Part &part, int ink)
{
    return part.to.process[ink] - part.from.process[ink];
}

int FindLargestChange(const SpotBlend::Part &part)
{
    int largest = 0;
    for (int ink = 1; ink < 4; ++ink) {
        if (std::abs(ChangeOf(part, ink)) > std::abs(ChangeOf(part, largest)))
            largest = ink;
    }
    return largest;
}

// By how much a place may be wrong that was found by an ink's amount.
double PlaceError(const SpotBlend::Part &part)
{
    return kRounding / std::max(std::abs(ChangeOf(part, FindLargestChange(part))), kUnit);
}

// Returns where in the part the colour is, from 0 to 1.
std::optional<double> FindPlace(const SpotBlend::Part &part, const Colour &colour)
{
    const int largest = FindLargestChange(part);
    const double change = ChangeOf(part, largest);
    const double place = change == 0 ? 0 : (colour.ink[largest] - part.from.process[largest]) / change;
    if (place < -PlaceError(part) || place > 1 + PlaceError(part))
        return std::nullopt;
    for (int ink = 0; ink < 4; ++ink) {
        const double there = part.from.process[ink] + ChangeOf(part, ink) * place;
        if (std::abs(colour.ink[ink] - there) > kRounding)
            return std::nullopt;
    }
    return std::clamp(place, 0.0, 1.0);
}

} // namespace

void SpotBlendSteps::Begin(const SpotBlend *blend)
{
    blend_ = blend;
    part_ = 0;
    place_ = 0;
}

bool SpotBlendSteps::IsAtEnd() const
{
    return place_ >= 1 - PlaceError(blend_->parts[part_]) && part_ + 1 < blend_->parts.size();
}

bool SpotBlendSteps::AddSpots(Colour *colour)
{
    if (blend_ == nullptr || colour->space != ColourSpace::Cmyk)
        return false;
    // The first step of a part has the colour of the last step of the part before it.
    for (size_t i = part_ + (!blend_->parts.empty() && IsAtEnd() ? 1 : 0); i < blend_->parts.size(); ++i) {
        const SpotBlend::Part &part = blend_->parts[i];
        const std::optional<double> place = FindPlace(part, *colour);
        if (!place || (i == part_ && *place < place_ - PlaceError(part)))
            continue;
        part_ = i;
        place_ = *place;
        const SpotShare from = {part.from.share.ink, part.from.share.amount * (1 - place_)};
        const SpotShare to = {part.to.share.ink, part.to.share.amount * place_};
        if (from.ink == to.ink)
            colour->spots[0] = {from.ink, from.amount + to.amount};
        else if (from.ink == nullptr)
            colour->spots[0] = to;
        else {
            colour->spots[0] = from;
            colour->spots[1] = to;
        }
        return true;
    }
    return false;
}

} // namespace vxhost
