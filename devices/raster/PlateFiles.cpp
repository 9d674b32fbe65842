#include "devices/raster/PlateFiles.h"

#include <algorithm>

namespace vxhost
{

Failure PlateFiles::Begin(const PlateSheet &sheet, std::span<const std::string> inks)
{
    raster::PngHeader header;
    header.width = sheet.width;
    header.height = sheet.height;
    header.pixels = raster::PngPixels::Gray;
    header.pixelsPerInchX = sheet.pixelsPerInchX;
    header.pixelsPerInchY = sheet.pixelsPerInchY;
    header.title = sheet.title;
    row_.resize(static_cast<size_t>(sheet.width));
    writers_.clear();
    for (const std::string &ink : inks) {
        header.ink = ink;
        writers_.push_back(std::make_unique<raster::PngWriter>(header, findSink_(ink)));
    }
    return {};
}

Failure PlateFiles::TakeRow(std::span<const uint8_t *const> plates)
{
    for (size_t i = 0; i < plates.size(); ++i) {
        std::transform(plates[i], plates[i] + row_.size(), row_.begin(),
                       [](uint8_t ink) { return static_cast<uint8_t>(255 - ink); });
        writers_[i]->WriteRow(row_.data());
    }
    return {};
}

Failure PlateFiles::End()
{
    for (const auto &writer : writers_) {
        if (Failure failure = writer->End())
            return failure;
    }
    writers_.clear();
    return {};
}

} // namespace vxhost
