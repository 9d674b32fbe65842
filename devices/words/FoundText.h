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

// Says where a character stands on the page: the left end of its baseline, or the middle of its upper edge in a column.
struct TextPlace {
    Point at;
    Point along; // to the next character, of length 1
};

struct TextLine {
    std::vector<TextRun> runs; // from left to right, or down the column
    TextPlace start;
    double length = 0; // from there to the end of the last character, points
    double height = 0; // of its largest characters, an em
    bool isColumn = false;
    std::vector<TextPlace>
        places; // of each character, on a path, which bends; blanks that are put in have that of what is behind them
};

struct FoundText {
    TextKind kind = TextKind::Point;
    std::vector<TextLine> lines; // from top to bottom, or columns from right to left
    Box box;                     // on the page, around the ems of its characters
    const Layer *layer = nullptr;
    uint64_t unknownCharacters =
        0; // bytes that mean none in their font's character set: U+FFFD stands for each
};

} // namespace vxhost
