// What a person may choose about a picture, and the size that follows from it.
#pragma once

#include "host/drawing/Device.h"

#include <cstdint>
#include <optional>
#include <string>

namespace vxhost
{

struct Rgb {
    uint8_t r = 0, g = 0, b = 0;
    friend bool operator==(const Rgb &, const Rgb &) = default;
};

enum class Intent : uint8_t { Relative, Perceptual }; // black point compensation with either

struct RasterOptions {
    // The size: fit, if not 0, makes the longer side that many pixels; else width and height, of which one
    // that is 0 follows the aspect of the box; else dpi times zoom.
    double dpi = 150;
    double zoom = 1;
    int width = 0, height = 0;
    int fit = 0;

    std::optional<Rgb> background = Rgb{255, 255, 255}; // none: what is not painted is transparent
    std::string profile = "fogra39"; // or "none", plain arithmetic; or an ICC file of a CMYK press
    Intent intent = Intent::Relative;
    bool overprint = true; // false: every paint replaces all inks
    int samples = 4;       // a side of a pixel: 1, 2, 4 or 8
    uint64_t memoryLimit = uint64_t{1} << 30;
};

struct PictureSize {
    int width = 0, height = 0; // at least 1 when there is no error
    std::string error;         // not empty: there can be no such picture; one line for a person
};

PictureSize FindPictureSize(const Box &box, const RasterOptions &options);

} // namespace vxhost
