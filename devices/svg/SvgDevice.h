// Editable SVG: sRGB for the screen with the document's inks beside it, text as text in embedded fonts.
#pragma once

#include "devices/OutputOptions.h"
#include "devices/colour/ScreenOptions.h"
#include "host/ByteSink.h"
#include "host/drawing/Device.h"

#include <memory>
#include <optional>
#include <string>

namespace vxhost
{

struct SvgOptions : ScreenOptions {
    std::optional<Rgb> background; // none: transparent
    TextOutput text = TextOutput::Text;
    bool overprint = true; // show overprint as well as a screen can; it is noted in any case
};

// Null when the options cannot be met; error is then one line for a person. The output is complete when EndPage has
// returned no failure.
std::unique_ptr<Device> MakeSvgDevice(const SvgOptions &options, ByteSink sink, std::string *error);

} // namespace vxhost
