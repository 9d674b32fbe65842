// Draws short scripts into pictures, so that a test of the raster device is one line.
//
// A script is numbers and operators, operands first: x y m, x y l, x1 y1 x2 y2 x3 y3 c, h, left bottom right
// top re; f fill, s stroke, W clip (each ends the path), n forget the path, q save, Q restore; g gray, k
// four inks, o overprint; w width, J cap, j join, M limit, d dashes and then the phase, cm six numbers: the
// matrix of strokes.
#pragma once

#include "devices/raster/RasterDevice.h"

#include <string>

namespace vxhost
{

// 72 dots an inch: a pixel a point. No profile, so colours can be worked out by hand.
RasterOptions PlainOptions();

// Paints the script on a device whose page has begun.
void DrawScript(const std::string &script, Device *device);

// Draws the script on a page of width × height points. A failure is a failure of the test.
Picture Draw(const std::string &script, double width = 8, double height = 8,
             const RasterOptions &options = PlainOptions());

// The same without expecting success. Returns what EndPage said.
std::string TryDraw(const std::string &script, const Box &box, const RasterOptions &options,
                    Picture *picture);

// The pixel in that column from the left and row from the top, as "0 128 255", then alpha where that is not 255.
std::string PixelAt(const Picture &picture, int column, int row);

// A line for each row, a character a pixel: "#" black, "." white, "+" anything else.
std::string Sketch(const Picture &picture);

} // namespace vxhost
