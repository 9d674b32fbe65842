#include "devices/raster/PlateFiles.h"

#include <algorithm>

namespace vxhost
{

PlateFiles::Writer PlateFiles::MakeWriter(const PlateSheet &sheet, const std::string &ink) const
{
    if (format_ == PlateFormat::Tiff) {
        auto header = HeaderOf<raster::TiffHeader>(sheet);
        header.ink = ink;
        return std::make_unique<raster::TiffWriter>(header, findSinks_(ink));
    }
    auto header = HeaderOf<raster::PngHeader>(sheet);
    header.ink = ink;
    header.pixels = raster::PngPixels::Gray;
    return std::make_unique<raster::PngWriter>(header, findSinks_(ink).add);
}

Failure PlateFiles::Begin(const PlateSheet &sheet, std::span<const std::string> inks)
{
    row_.resize(static_cast<size_t>(sheet.width));
    writers_.clear();
    for (const std::string &ink : inks)
        writers_.push_back(MakeWriter(sheet, ink));
    return {};
}

Failure PlateFiles::TakeRow(std::span<const uint8_t *const> plates)
{
    for (size_t i = 0; i < plates.size(); ++i) {
        std::transform(plates[i], plates[i] + row_.size(), row_.begin(),
                       [](uint8_t ink) { return static_cast<uint8_t>(255 - ink); });
        std::visit([this](const auto &writer) { writer->WriteRow(row_.data()); }, writers_[i]);
    }
    return {};
}

Failure PlateFiles::End()
{
    for (const Writer &any : writers_) {
        if (Failure failure = std::visit([](const auto &writer) { return writer->End(); }, any))
            return failure;
    }
    writers_.clear();
    return {};
}

} // namespace vxhost
