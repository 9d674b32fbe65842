// What a person may choose about a picture, and the size that follows from it.
#pragma once

#include "devices/colour/ScreenOptions.h"
#include "host/drawing/Device.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vxhost
{

class Crew;

inline constexpr double kMaxSide = 131072; // pixels

// Inks of which alone a picture is made, whatever overprints what: each in its own colour, or as gray, in which black is a full ink.
struct ChosenPlates {
    std::vector<std::string> inks; // names; those that nothing is painted with are blank
    bool isGray = false;
};

struct RasterOptions : ScreenOptions {
    // The size: fit, if not 0, makes the longer side that many pixels; else width and height, of which one
    // that is 0 follows the aspect of the box; else dpi pixels an inch.
    double dpi = 150;
    int width = 0, height = 0;
    int fit = 0;

    std::optional<ChosenPlates> plates; // none: all inks, spot inks by what stands in for them
    std::optional<Rgb> background = Rgb{255, 255, 255}; // none: what is not painted is transparent
    bool overprint = true;                              // false: every paint replaces all inks
    int samples = 4;                                    // a side of a pixel: 1, 2, 4 or 8
    uint64_t memoryLimit = uint64_t{1} << 30;
    uint64_t glyphMemory = uint64_t{8}
                           << 20; // of that, the part that glyphs may be kept in; 0 gives the same picture
    Crew *crew = nullptr; // paints pictures of so many pixels or more, which are the same; null: nobody does
    uint64_t leastCrewPixels = 0;
};

struct PictureSize {
    int width = 0, height = 0; // at least 1 when there is no error
    Failure failure;           // why there can be no such picture
};

PictureSize FindPictureSize(const Box &box, const RasterOptions &options);

} // namespace vxhost
