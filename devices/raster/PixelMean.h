// Adds up the colours of the samples of a pixel, and writes the pixel that they make.
#pragma once

#include "devices/colour/ScreenOptions.h"

#include <cstdint>
#include <optional>

namespace vxhost::raster
{

// Without a background a pixel has alpha, four bytes, else three.
inline uint8_t *PutPixel(const std::optional<Rgb> &background, Rgb rgb, unsigned alpha, uint8_t *bytes)
{
    *bytes++ = rgb.r;
    *bytes++ = rgb.g;
    *bytes++ = rgb.b;
    if (!background)
        *bytes++ = static_cast<uint8_t>(alpha);
    return bytes;
}

class PixelMean
{
  public:
    void Add(Rgb rgb, unsigned times)
    {
        count_ += times;
        r_ += rgb.r * times;
        g_ += rgb.g * times;
        b_ += rgb.b * times;
    }

    // samples: of a pixel; those that were not added show the background. Halves go up, or down.
    uint8_t *Put(std::optional<Rgb> background, unsigned samples, bool halvesGoDown, uint8_t *bytes)
    {
        const unsigned alpha = (count_ * 255 + samples / 2) / samples;
        if (background)
            Add(*background, samples - count_);
        const unsigned half = (count_ - (halvesGoDown ? 1 : 0)) / 2;
        const auto mean = [&](unsigned sum) { return static_cast<uint8_t>((sum + half) / count_); };
        return PutPixel(background, {mean(r_), mean(g_), mean(b_)}, alpha, bytes);
    }

  private:
    unsigned count_ = 0, r_ = 0, g_ = 0, b_ = 0;
};

} // namespace vxhost::raster
