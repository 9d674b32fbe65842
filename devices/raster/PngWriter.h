// Writes a PNG file row by row: 8 bits, RGB or RGBA, sRGB, or gray, with its resolution.
#pragma once

#include "devices/raster/RasterDevice.h"

#include <memory>
#include <string>

namespace vxhost::raster
{

enum class PngPixels : uint8_t { Gray = 1, Rgb = 3, Rgba = 4 }; // by their bytes

struct PngHeader {
    int width = 1, height = 1;
    PngPixels pixels = PngPixels::Rgb;
    double pixelsPerInchX = 72, pixelsPerInchY = 72;
    std::string title;   // UTF-8, may be empty
    std::string profile; // what the colours were made with; empty: they are none of a screen
    std::string ink;     // of a plate; empty: it is none
};

// Rows come from the top, then End. After a failure the rest is ignored; End says what failed. But lack of memory is
// thrown, as std::bad_alloc, and what the sink throws goes on.
class PngWriter
{
  public:
    PngWriter(const PngHeader &header, ByteSink sink);
    ~PngWriter();
    PngWriter(const PngWriter &) = delete;
    PngWriter &operator=(const PngWriter &) = delete;

    void WriteRow(const uint8_t *row);
    Failure End();

  private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace vxhost::raster
