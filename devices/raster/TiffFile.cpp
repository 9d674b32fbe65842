#include "devices/raster/TiffFile.h"

#include "devices/colour/Fogra39.h"
#include "devices/colour/ProfileFile.h"
#include "devices/colour/ScreenColours.h"
#include "devices/raster/PlateStore.h"
#include "devices/raster/Plates.h"
#include "devices/raster/TiffWriter.h"
#include "host/MemoryWatch.h"

#include <optional>
#include <utility>

namespace vxhost
{

namespace
{

using namespace raster;

// Takes all plates of a page into one file, in which the inks of a pixel are beside each other: few programs read another.
class TiffFile final : public PlateSink
{
  public:
    TiffFile(std::vector<std::byte> profile, ByteSinks sinks)
        : profile_(std::move(profile)), sinks_(std::move(sinks))
    {
    }

    Failure Begin(const PlateSheet &sheet, std::span<const std::string> inks) override
    {
        inksLeft_ = (inksLeft_ == 0 ? sheet.inks.size() : inksLeft_) - inks.size();
        if (sheet.inks.size() > kMostTiffInks)
            return {FailureKind::BadInput, "it has " + std::to_string(sheet.inks.size()) +
                                               " inks, and a TIFF takes " + std::to_string(kMostTiffInks) +
                                               ": paint spot inks by those of the process, --spots process"};
        if (!store_ && inksLeft_ > 0)
            store_.emplace(sheet.width, sheet.height, sinks_.scratch);
        if (inksLeft_ > 0)
            return {};
        auto header = HeaderOf<TiffHeader>(sheet);
        header.inks = sheet.inks;
        header.profile = profile_;
        writer_.emplace(header, sinks_);
        return {};
    }
    Failure TakeRow(std::span<const uint8_t *const> plates) override
    {
        if (inksLeft_ > 0)
            return store_->AddRow(plates);
        row_.clear();
        Failure failure = store_ ? store_->ReadRow(y_++, &row_) : Failure();
        row_.insert(row_.end(), plates.begin(), plates.end());
        if (!failure)
            writer_->WriteRow(row_);
        return failure;
    }
    Failure End() override { return inksLeft_ == 0 ? writer_->End() : Failure(); }

  private:
    std::vector<std::byte> profile_;
    ByteSinks sinks_;
    std::optional<PlateStore> store_;  // of all plates but those that are drawn last
    std::optional<TiffWriter> writer_; // as soon as those are drawn
    std::vector<const uint8_t *> row_; // of all inks
    int y_ = 0;                        // its number
    size_t inksLeft_ = 0;              // that are drawn later
};

// Returns the profile of the press; empty: the options name none.
std::vector<std::byte> ReadPress(const ScreenOptions &options)
{
    HeldBytes file;
    std::span<const std::byte> bytes;
    if (options.profileBytes != nullptr)
        bytes = *options.profileBytes;
    else if (options.profile == "fogra39")
        bytes = Fogra39Profile();
    else if (options.profile != "none" && Watched([&] { return ReadProfileFile(options.profile, &file); }))
        bytes = file.Get();
    return {bytes.begin(), bytes.end()};
}

} // namespace

std::unique_ptr<Device> MakeTiffDevice(const RasterOptions &options, ByteSinks sinks, std::string *error)
{
    // A profile that could not be shown on a screen is none of a press.
    if (ScreenColours::Make(options, error) == nullptr)
        return nullptr;
    return MakePlatesDevice(options, std::nullopt,
                            std::make_shared<TiffFile>(ReadPress(options), std::move(sinks)), error);
}

} // namespace vxhost
