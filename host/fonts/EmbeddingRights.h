// What a font's maker allows, as the font itself says it.
#pragma once

namespace vxhost
{

// Whether a document may carry a subset of the font. bits is OS/2's fsType, 0 in a font that says nothing. Where it
// names several ways of embedding the least restrictive counts, so the one that forbids embedding has to stand alone.
// The font may not forbid subsets either, or all but its bitmaps.
constexpr bool AllowsEmbedding(unsigned bits)
{
    constexpr unsigned kWays = 0x000F, kForbidden = 0x0002, kUncut = 0x0100, kBitmapsAlone = 0x0200;
    return (bits & kWays) != kForbidden && (bits & (kUncut | kBitmapsAlone)) == 0;
}

} // namespace vxhost
