// Writes each plate as a gray picture of its own: black is all of its ink, white none.
#pragma once

#include "devices/raster/Plates.h"
#include "devices/raster/PngWriter.h"
#include "devices/raster/TiffWriter.h"
#include "host/ByteSink.h"

#include <functional>
#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace vxhost
{

enum class PlateFormat : uint8_t { Png, Tiff };

class PlateFiles final : public PlateSink
{
  public:
    // Says where the bytes of an ink's plate go.
    using FindSinks = std::function<ByteSinks(const std::string &ink)>;
    PlateFiles(PlateFormat format, FindSinks findSinks) : format_(format), findSinks_(std::move(findSinks)) {}

    Failure Begin(const PlateSheet &sheet, std::span<const std::string> inks) override;
    Failure TakeRow(std::span<const uint8_t *const> plates) override;
    Failure End() override;

  private:
    using Writer = std::variant<std::unique_ptr<raster::PngWriter>, std::unique_ptr<raster::TiffWriter>>;
    Writer MakeWriter(const PlateSheet &sheet, const std::string &ink) const;

    PlateFormat format_;
    FindSinks findSinks_;
    std::vector<Writer> writers_;
    std::vector<uint8_t> row_; // of grays
};

} // namespace vxhost
