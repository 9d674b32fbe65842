// Makes a page one TIFF file in its inks: those of the process, which a press profile describes, and the spot inks beside them.
#pragma once

#include "devices/raster/RasterOptions.h"
#include "host/ByteSink.h"
#include "host/drawing/Device.h"

#include <memory>
#include <string>

namespace vxhost
{

// Null when the options cannot be met, as MakePngDevice says. Paper has no ink: the background of the options means nothing.
std::unique_ptr<Device> MakeTiffDevice(const RasterOptions &options, ByteSinks sinks, std::string *error);

} // namespace vxhost
