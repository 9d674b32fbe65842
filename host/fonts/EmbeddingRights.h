// What a font's maker allows, as the font itself says it.
#pragma once

namespace vxhost
{

// bits: OS/2's fsType, which is 0 in a font that says nothing. Whether a document may carry a subset of the font: of
// several ways of embedding the least restrictive counts, so what forbids it does so alone; nor may the font forbid
// cutting, or all but its bitmaps.
constexpr bool AllowsEmbedding(unsigned bits)
{
    constexpr unsigned kWays = 0x000F, kForbidden = 0x0002, kUncut = 0x0100, kBitmapsAlone = 0x0200;
    return (bits & kWays) != kForbidden && (bits & (kUncut | kBitmapsAlone)) == 0;
}

} // namespace vxhost
