#include "devices/raster/InkChannels.h"

#include "devices/colour/InkShares.h"
#include "host/drawing/CropMarks.h"

#include <algorithm>

namespace vxhost::raster
{

namespace
{

InkWord MaskOf(size_t channel)
{
    return InkWord{0xFF} << (8 * channel);
}

// Calls use(name, amount) for each ink that is painted with, if only with none of it.
template <class Use>
void ForInks(const Colour &colour, Use &&use)
{
    if (colour.space == ColourSpace::Gray) {
        use(kProcessInks[kInkCount - 1].name, 1 - colour.ink[0]);
        return;
    }
    const InkShares shares = FindShares(colour);
    for (size_t i = 0; i < shares.count; ++i)
        use(shares.inks[i]->name, shares.amounts[i]);
}

} // namespace

size_t InkChannels::ChannelOf(const std::string &ink) const
{
    const auto found = std::ranges::find(names_, ink);
    return found == names_.end() ? kCount : static_cast<size_t>(found - names_.begin());
}

InkLevels InkChannels::Levels(const Colour &colour) const
{
    if (names_.empty())
        return LevelsOf(colour);
    const SpotShare &first = colour.spots.front();
    InkLevels levels;
    levels.fill(LevelOf(first.ink == &kRegistrationInk ? first.amount : 0));
    ForInks(colour, [&](const std::string &ink, double amount) {
        if (const size_t channel = ChannelOf(ink); channel < kCount)
            levels[channel] = LevelOf(amount);
    });
    return levels;
}

Ink InkChannels::FindOnScreen(const Paint &paint) const
{
    constexpr InkWord kAllButBlack = 0x00FFFFFF;
    Ink ink;
    ink.value = InksOf(paint.colour);
    if (!paint.overprint || !simulatesOverprint_)
        return ink;
    if (paint.colour.space == ColourSpace::Gray)
        ink.keep = kAllButBlack;
    for (size_t i = 0; i < kCount && paint.colour.space == ColourSpace::Cmyk; ++i) {
        if (paint.colour.ink[i] == 0)
            ink.keep |= MaskOf(i);
    }
    return ink;
}

Ink InkChannels::Find(const Paint &paint) const
{
    if (names_.empty())
        return FindOnScreen(paint);
    Ink ink;
    ink.value = WordOf(Levels(paint.colour));
    if (!paint.overprint || !simulatesOverprint_)
        return ink;
    ink.keep = ~InkWord{0};
    ForInks(paint.colour, [&](const std::string &name, double) {
        if (const size_t channel = ChannelOf(name); channel < kCount)
            ink.keep &= ~MaskOf(channel);
    });
    return ink;
}

} // namespace vxhost::raster
