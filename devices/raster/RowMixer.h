// Mixes the samples of a row of pixels into the bytes of a picture.
#pragma once

#include "devices/colour/ScreenColours.h"
#include "devices/raster/InkBuffer.h"
#include "devices/raster/RasterOptions.h"

#include <optional>

namespace vxhost::raster
{

class RowMixer
{
  public:
    // Without a background the rows have alpha, four bytes a pixel, else three.
    RowMixer(ScreenColours *colours, const std::optional<Rgb> &background, int samples);

    // Whether paper and unpainted are the same here, so that nobody needs to know what was painted.
    static bool NeedsPainted(const std::optional<Rgb> &background)
    {
        return background != Rgb{255, 255, 255};
    }

    void Mix(const InkBuffer &buffer, int y, uint8_t *bytes);

  private:
    uint8_t *MixSamples(const InkBuffer::Row &row, int x, uint8_t *bytes);

    ScreenColours *colours_;
    std::optional<Rgb> background_;
    unsigned samplesPerPixel_;
};

} // namespace vxhost::raster
