// Press-ready PDF: the document's own gray and CMYK numbers, overprint, text in embedded fonts.
#pragma once

#include "devices/OutputOptions.h"
#include "devices/colour/ScreenOptions.h"
#include "host/ByteSink.h"
#include "host/drawing/Device.h"

#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>

namespace vxhost
{

enum class PdfX : uint8_t { None, X1a, X3 };

struct PdfOptions {
    std::optional<Rgb> background; // none: the paper shows
    TextOutput text = TextOutput::Text;
    PdfX standard = PdfX::None;
    std::string profile = "fogra39"; // output intent of PDF/X: that name, or an ICC file of a CMYK press
    ProfileBytes profileBytes;       // what the profile of that name is; null: it is built in, or a file
    std::optional<int64_t> date;     // seconds since 1970: of creation, instead of the document's own
    bool compress = true;
    // An open file of the caller's, to be read and written, for what is too long to keep in memory; -1: a temporary
    // one is made, by MakePdfDevice, which is the last time that the device opens anything but fonts.
    int spool = -1;
    std::string spoolFolder; // of the temporary file; empty: the one that TMPDIR names
    // Bytes that may be held where there are no files at all.
    uint64_t memoryLimit = std::numeric_limits<uint64_t>::max();
};

// Null when the options cannot be met; error is then one line for a person. The output is complete when EndPage has
// returned no failure.
std::unique_ptr<Device> MakePdfDevice(const PdfOptions &options, ByteSink sink, std::string *error);

// Why such a file cannot be made of that page, if it cannot. A device that is given the page all the same fails with
// this at its end.
Failure WhyNoPdf(const PdfOptions &options, const Page &page);

} // namespace vxhost
