// What a picture is to be like, as devices understand it; and the one place that makes a device of a format.
#pragma once

#include "cli/Format.h"
#include "cli/RenderWords.h"
#include "devices/pdf/PdfDevice.h"
#include "devices/raster/RasterOptions.h"
#include "devices/svg/SvgDevice.h"
#include "host/ByteSink.h"
#include "host/drawing/Device.h"

#include <memory>
#include <optional>
#include <span>
#include <string>

namespace vxhost
{

struct RenderSettings {
    std::optional<Box> box; // as it is to be shown; without it the header's
    PdfOptions pdf;
    SvgOptions svg;
    RasterOptions png;
};

// memory is the limit of the worker, in bytes; 0: none. Throws UsageError.
RenderSettings ReadSettings(const RenderWords &words, int64_t memory);

// Null when the settings cannot be met; error is then one line for a person.
std::unique_ptr<Device> MakeDevice(Format format, const RenderSettings &settings, ByteSink sink,
                                   std::string *error);

// Found wanting here, a profile is one mistake on the command line rather than one a document. Throws UsageError.
void CheckDevices(std::span<const Format> formats, const RenderSettings &settings);

} // namespace vxhost
