#include "tests/pictures/Picture.h"

#include <png.h>

#include <algorithm>
#include <cstdlib>

namespace vxtest
{

namespace
{

constexpr int kTile = 16;

const uint8_t *PixelAt(const vxhost::Picture &picture, int x, int y)
{
    const auto pixel =
        static_cast<std::size_t>(y) * static_cast<std::size_t>(picture.width) + static_cast<std::size_t>(x);
    return picture.rgba.data() + pixel * 4;
}

bool IsWhite(const uint8_t *pixel)
{
    return std::all_of(pixel, pixel + 3, [](uint8_t level) { return level == 255; });
}

} // namespace

vxhost::Picture ReadPng(const std::string &path, std::string *error)
{
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    vxhost::Picture picture;
    if (png_image_begin_read_from_file(&image, path.c_str()) != 0) {
        image.format = PNG_FORMAT_RGBA;
        picture.width = static_cast<int>(image.width);
        picture.height = static_cast<int>(image.height);
        picture.rgba.resize(PNG_IMAGE_SIZE(image));
        if (png_image_finish_read(&image, nullptr, picture.rgba.data(), 0, nullptr) != 0)
            return picture;
    }
    *error = image.message;
    return {};
}

PictureDistance Compare(const vxhost::Picture &a, const vxhost::Picture &b)
{
    PictureDistance distance;
    double inkedSum = 0;
    for (int top = 0; top < a.height; top += kTile) {
        for (int left = 0; left < a.width; left += kTile) {
            const int bottom = std::min(top + kTile, a.height);
            const int right = std::min(left + kTile, a.width);
            double tileSum = 0;
            for (int y = top; y < bottom; ++y) {
                for (int x = left; x < right; ++x) {
                    const uint8_t *p = PixelAt(a, x, y);
                    const uint8_t *q = PixelAt(b, x, y);
                    const double difference =
                        (std::abs(p[0] - q[0]) + std::abs(p[1] - q[1]) + std::abs(p[2] - q[2])) / 3.0;
                    tileSum += difference;
                    if (IsWhite(p) && IsWhite(q))
                        continue;
                    inkedSum += difference;
                    ++distance.inkedPixels;
                }
            }
            const double tileMean = tileSum / ((bottom - top) * (right - left));
            if (tileMean <= distance.worstTile)
                continue;
            distance.worstTile = tileMean;
            distance.tileX = left;
            distance.tileY = top;
        }
    }
    if (distance.inkedPixels > 0)
        distance.inked = inkedSum / static_cast<double>(distance.inkedPixels);
    return distance;
}

} // namespace vxtest
