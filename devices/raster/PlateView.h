// Shows chosen plates of a page in the colours of a screen, or in gray, as the rows of a picture.
#pragma once

#include "devices/colour/ScreenColours.h"
#include "devices/raster/RasterOptions.h"
#include "devices/raster/Surface.h"

#include <array>
#include <cstddef>
#include <memory>
#include <span>
#include <vector>

namespace vxhost::raster
{

class PlateView
{
  public:
    // Says which process inks stand in for all of an ink.
    using Alternate = std::array<double, 4>;

    // Each page has four of the inks, the last one the rest. They and the colours must outlive this object.
    PlateView(std::span<const std::unique_ptr<Surface>> pages, std::vector<Alternate> inks,
              const RasterOptions &options, ScreenColours *colours);

    // Mixes row y. The bytes of a pixel are three with a background, else four.
    void Mix(int y, uint8_t *bytes);

  private:
    static constexpr size_t kMostSamples = 64;

    Rgb FindColour();
    uint8_t *MixSamples(int x, uint8_t *bytes);

    std::span<const std::unique_ptr<Surface>> pages_;
    std::vector<Alternate> inks_;
    bool isGray_;
    std::optional<Rgb> background_;
    size_t samples_; // of a pixel
    ScreenColours *colours_;

    std::vector<InkBuffer::Row> rows_; // one of each page
    std::vector<InkWord> words_;       // of the sample at hand, one a page
    std::vector<InkWord> known_;       // of the one before it, whose colour is
    Rgb colour_;
    std::vector<std::array<InkWord, kMostSamples>> pixel_; // the samples of the pixel at hand
};

} // namespace vxhost::raster
