// The classic PostScript fonts, and the free ones that have the same widths.
#pragma once

#include <array>
#include <span>
#include <string_view>

namespace vxhost
{

// PostScript names of the regular, bold, italic and bold italic. Empty: the family has no such style.
using StyleNames = std::array<std::string_view, 4>;

struct ClassicFamily {
    std::string_view name;
    StyleNames fonts;                           // what documents ask for
    std::array<const StyleNames *, 6> servedBy; // best first, null behind the last
};

std::span<const ClassicFamily> ClassicFamilies();

} // namespace vxhost
