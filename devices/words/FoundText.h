// Holds a text of a drawing as somebody reads it.
#pragma once

#include "host/drawing/Device.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vxhost
{

// Characters of a line that look the same.
struct TextRun {
    std::string text; // UTF-8
    const TextFont *font = nullptr;
    double size = 0; // points
    Colour colour;   // of what is filled; where nothing is, of what is stroked
};

using TextLine = std::vector<TextRun>; // from left to right, or down the column

struct FoundText {
    TextKind kind = TextKind::Point;
    std::vector<TextLine> lines; // from top to bottom, or columns from right to left
    Box box;                     // on the page, around the ems of its characters
    const Layer *layer = nullptr;
    uint64_t unknownCharacters =
        0; // bytes that mean none in their font's character set: U+FFFD stands for each
};

} // namespace vxhost
