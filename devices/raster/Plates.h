// Plates of a press: how much of each ink is printed where, pixel by pixel.
#pragma once

#include "devices/raster/RasterOptions.h"
#include "host/drawing/Device.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace vxhost
{

// What all plates of a page have in common.
struct PlateSheet {
    int width = 0, height = 0; // pixels
    double pixelsPerInchX = 72, pixelsPerInchY = 72;
    Box box; // what they show, in points
    std::string title;
    std::vector<std::string> inks; // of all plates, in their order
};

// Begins the header of a picture file of them, whatever its kind.
template <class Header>
Header HeaderOf(const PlateSheet &sheet)
{
    Header header;
    header.width = sheet.width;
    header.height = sheet.height;
    header.pixelsPerInchX = sheet.pixelsPerInchX;
    header.pixelsPerInchY = sheet.pixelsPerInchY;
    header.title = sheet.title;
    return header;
}

// Takes plates as they are made: up to four at a time, from the first row of theirs to the last, then the next four.
class PlateSink
{
  public:
    PlateSink() = default;
    PlateSink(const PlateSink &) = delete;
    PlateSink &operator=(const PlateSink &) = delete;
    virtual ~PlateSink() = default;

    // inks: those of the plates that come next.
    virtual Failure Begin(const PlateSheet &sheet, std::span<const std::string> inks) = 0;
    // A row of each of these plates, a byte a pixel: 0 is none of the ink, 255 all of it.
    virtual Failure TakeRow(std::span<const uint8_t *const> plates) = 0;
    virtual Failure End() = 0;
};

// Draws the plates of the process inks, then those of the spot inks: of these, or, if they are not known yet, of all that the page
// paints with. An ink by the name of a process ink is on its plate. A page with spot inks is drawn several times, each time in
// the same memory. Null when the options cannot be met, as MakePngDevice says.
std::unique_ptr<Device> MakePlatesDevice(const RasterOptions &options,
                                         std::optional<std::vector<std::string>> spotInks,
                                         std::shared_ptr<PlateSink> sink, std::string *error);

// Returns whether plates show the ink on one of its own.
bool HasOwnPlate(const std::string &spotInk);

} // namespace vxhost
