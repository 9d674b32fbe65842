// A line of text as editors want it: one place, the font's own widths, and letter spacing where the drawing departs from them.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace vxhost::svg
{

struct LineCharacter {
    double x = 0;       // along the line
    double advance = 0; // of the font, in the same unit
    char32_t character = 0;
};

// Characters that have one letter spacing, behind each of them.
struct SpacedPiece {
    size_t end = 0; // behind its last character; it begins where the one before ends
    double spacing = 0;
};

struct SpacedLine {
    double spacing = 0; // of most characters
    std::vector<SpacedPiece> pieces;
};

// Returns as few pieces as put each character, other than spaces, within slack of its place. No line may be empty.
SpacedLine FindSpacing(std::span<const LineCharacter> line, double slack);

} // namespace vxhost::svg
