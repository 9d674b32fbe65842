// A layer of the drawing, as its document says it.
#pragma once

#include <cstdint>
#include <string>

namespace vxhost
{

struct Layer {
    std::string name; // UTF-8; may be empty
    int parent = -1;  // the layer around it, as its place among all of them; -1: none
    bool isVisible = true, isPreviewed = true;
    bool isEnabled = true;  // false: it is locked
    bool isPrinting = true; // what is painted follows this
    bool isDimmed = false;
    int32_t colour = 0;         // the number of the colour of its outlines in an editor
    uint8_t rgb[3] = {0, 0, 0}; // that colour
    bool isPainted = true;      // it is among those that were chosen
    bool operator==(const Layer &) const = default;
};

} // namespace vxhost
