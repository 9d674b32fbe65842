// The options of vx render: read, checked against each other, and turned into what devices understand.
#pragma once

#include "cli/CommonOptions.h"
#include "devices/raster/RasterOptions.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vxhost
{

struct RenderOptions {
    CommonOptions common;
    std::vector<std::string> outputs; // one for each input
    RasterOptions raster;
    std::optional<Box> box; // as it is to be shown; without it the header's
};

class RenderOptionReader
{
  public:
    explicit RenderOptionReader(CLI::App *command);
    RenderOptions Read() const; // throws UsageError

  private:
    void CheckFormat() const;
    void RefuseWhatIsToCome() const;
    void ReadPictureSize(RasterOptions *raster) const;
    RasterOptions ReadRaster() const;

    CommonOptionReader common_;
    std::string output_;
    std::string format_;
    std::string dpi_, zoom_, width_, height_, fit_;
    std::string background_ = "white", box_ = "bbox";
    std::string profile_ = "fogra39", intent_ = "relative", overprint_ = "simulate", samples_ = "4";
    // Known, so that asking for them is told apart from a slip; not in this version.
    std::string text_ = "text";
    std::string pdfX_ = "none";
};

} // namespace vxhost
