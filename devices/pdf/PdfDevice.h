// Press-ready PDF: the document's own gray and CMYK numbers, overprint, text in embedded fonts.
#pragma once

#include "devices/OutputOptions.h"
#include "devices/colour/ScreenOptions.h"
#include "host/ByteSink.h"
#include "host/drawing/Device.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace vxhost
{

// Levels of the standards for the press and for the archive.
enum class PdfX : uint8_t { None, X1a, X3, X4 };
enum class PdfA : uint8_t { None, A2b, A2u };

// The date of creation is taken from the drawing if it has one, from the file, or from the clock.
enum class PdfDateFrom : uint8_t { Drawing, File, Clock };

// Time against room; None leaves the page's program to be read as it is.
enum class Compression : uint8_t { None, Fast, Default, Small };

struct PdfOptions {
    std::optional<Rgb> background; // none: the paper shows
    TextOutput text = TextOutput::Text;
    PdfX standard = PdfX::None;
    PdfA archive = PdfA::None;
    std::string
        profile; // output intent: "fogra39", or an ICC file of a CMYK press; empty: where a level asks for one
    ProfileBytes profileBytes;   // what the profile of that name is; null: it is built in, or a file
    std::optional<int64_t> date; // seconds since 1970: of creation
    PdfDateFrom dateFrom = PdfDateFrom::Drawing; // where there is no such date
    Compression compression = Compression::Default;
    bool isToBeJoined = false; // by JoinedPdf: the file refers to fonts that are on this machine
};

// Null when the options cannot be met; error is then one line for a person. The output is complete when EndPage has
// returned no failure.
std::unique_ptr<Device> MakePdfDevice(const PdfOptions &options, ByteSink sink, std::string *error);

// Says why there can be no such file of that page.
Failure CheckPdfPage(const PdfOptions &options, const Page &page);

// Says whose the date of creation is: that of the options, else the drawing's own, if it can be read in one way only. A standard asks
// for one: else it is that of the file, and for a drawing without a file it is now.
DateOrigin FindDateOrigin(const PdfOptions &options, const Page &page);

} // namespace vxhost
