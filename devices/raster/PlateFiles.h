// Writes each plate as a gray picture of its own: black is all of its ink, white none.
#pragma once

#include "devices/raster/Plates.h"
#include "devices/raster/PngWriter.h"
#include "host/ByteSink.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace vxhost
{

class PlateFiles final : public PlateSink
{
  public:
    // Says where the bytes of an ink's plate go.
    using FindSink = std::function<ByteSink(const std::string &ink)>;
    explicit PlateFiles(FindSink findSink) : findSink_(std::move(findSink)) {}

    Failure Begin(const PlateSheet &sheet, std::span<const std::string> inks) override;
    Failure TakeRow(std::span<const uint8_t *const> plates) override;
    Failure End() override;

  private:
    FindSink findSink_;
    std::vector<std::unique_ptr<raster::PngWriter>> writers_;
    std::vector<uint8_t> row_; // of grays
};

} // namespace vxhost
