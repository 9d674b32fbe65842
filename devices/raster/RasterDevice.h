// Pictures: draws a page into pixels, for a PNG file or for a program that wants the pixels themselves.
//
// The page is kept in inks until it ends, so overprint is exact; every sample belongs to exactly one shape,
// so shapes that abut show no seam.
#pragma once

#include "devices/raster/RasterOptions.h"
#include "host/ByteSink.h"
#include "host/drawing/Device.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace vxhost
{

// Writes to the file, which stays the caller's to flush and to close.
ByteSink WriteTo(std::FILE *file);

// A picture in memory: rows from the top, four bytes a pixel, red, green, blue and alpha, colours not
// multiplied by it.
struct Picture {
    int width = 0, height = 0;
    std::vector<uint8_t> rgba;
};

// Room for such rows, of the caller's, for as many pixels as the options make of the page.
struct PixelRows {
    uint8_t *top = nullptr;
    ptrdiff_t stride = 0; // bytes from a row to the one below it; may be negative
};

// Null when the options cannot be met (the profile cannot be read, say); error is then one line for a
// person. The output is complete when EndPage has returned no failure.
std::unique_ptr<Device> MakePngDevice(const RasterOptions &options, ByteSink sink, std::string *error);
std::unique_ptr<Device> MakePictureDevice(const RasterOptions &options, Picture *picture, std::string *error);
std::unique_ptr<Device> MakePixelsDevice(const RasterOptions &options, const PixelRows &rows,
                                         std::string *error);

} // namespace vxhost
