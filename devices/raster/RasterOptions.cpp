// The size is found in floating point and rounded once; the box then fills the whole pixels exactly, so its
// two scales may differ a little.
#include "devices/raster/RasterOptions.h"

#include <algorithm>
#include <cmath>

namespace vxhost
{

namespace
{

constexpr double kMaxArea = 268435456; // pixels: 2^28

std::string WholeNumber(double number)
{
    std::string text = std::to_string(std::round(number));
    return text.substr(0, text.find('.'));
}

} // namespace

PictureSize FindPictureSize(const Box &box, const RasterOptions &options)
{
    const double boxWidth = box.Width(), boxHeight = box.Height();
    if (!(boxWidth > 0) || !(boxHeight > 0) || !std::isfinite(boxWidth) || !std::isfinite(boxHeight))
        return {0, 0, {FailureKind::BadInput, "the box to draw is empty: choose one with an area"}};

    double width = options.width, height = options.height;
    if (options.fit > 0) {
        const double scale = options.fit / std::max(boxWidth, boxHeight);
        width = boxWidth * scale;
        height = boxHeight * scale;
    } else if (width > 0 && !(height > 0)) {
        height = boxHeight * (width / boxWidth);
    } else if (height > 0 && !(width > 0)) {
        width = boxWidth * (height / boxHeight);
    } else if (!(width > 0)) {
        const double scale = options.dpi / 72;
        if (!(scale > 0) || !std::isfinite(scale))
            return {0, 0, {FailureKind::BadInput, "the resolution must be a number above 0"}};
        width = boxWidth * scale;
        height = boxHeight * scale;
    }
    width = std::max(std::round(width), 1.0);
    height = std::max(std::round(height), 1.0);
    if (!(width <= kMaxSide) || !(height <= kMaxSide) || !(width * height <= kMaxArea))
        return {0,
                0,
                {FailureKind::TooLarge, "a picture of " + WholeNumber(width) + " by " + WholeNumber(height) +
                                            " pixels is too large: choose a smaller size or resolution"}};
    return {static_cast<int>(width), static_cast<int>(height), {}};
}

} // namespace vxhost
