// How far two pictures are apart, and pictures from PNG files to compare with.
#pragma once

#include "devices/raster/RasterDevice.h"

#include <cstddef>
#include <string>

namespace vxtest
{

// A picture without pixels on failure, with error one line for a person.
vxhost::Picture ReadPng(const std::string &path, std::string *error);

struct PictureDistance {
    double inked = 0; // mean difference of the pixels that are not white in both, 0 to 255
    std::size_t inkedPixels = 0;
    double worstTile = 0; // largest mean difference of a tile of 16 by 16 pixels, 0 to 255
    int tileX = 0;        // where that tile begins
    int tileY = 0;
};

// Both pictures must have the same size and nothing transparent.
PictureDistance Compare(const vxhost::Picture &a, const vxhost::Picture &b);

} // namespace vxtest
