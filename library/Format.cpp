#include "library/Format.h"

#include "devices/pdf/PdfDevice.h"
#include "devices/raster/RasterDevice.h"
#include "devices/raster/TiffFile.h"
#include "devices/svg/SvgDevice.h"
#include "library/Options.h"

#include <utility>

namespace vxhost
{

namespace
{

DateOrigin HasNoDate(const Settings &, const Page &)
{
    return DateOrigin::None;
}

Failure CheckSize(const Settings &settings, const Page &page)
{
    return FindPictureSize(page.box, settings.png).failure;
}

// The rows stand in the order of kPdf, kSvg, kPng and kTiff.
constexpr Format kFormats[] = {
    {"pdf", "", "application/pdf",
     [](const Settings &settings, ByteSinks sinks, std::string *error) {
         return MakePdfDevice(settings.pdf, std::move(sinks.add), error);
     },
     true, [](const Settings &settings, const Page &page) { return CheckPdfPage(settings.pdf, page); },
     [](const Settings &settings, const Page &page) { return FindDateOrigin(settings.pdf, page); }},
    {"svg", "", "image/svg+xml",
     [](const Settings &settings, ByteSinks sinks, std::string *error) {
         return MakeSvgDevice(settings.svg, std::move(sinks.add), error);
     },
     true, [](const Settings &, const Page &) { return Failure(); }, HasNoDate},
    {"png", "", "image/png",
     [](const Settings &settings, ByteSinks sinks, std::string *error) {
         return MakePngDevice(settings.png, std::move(sinks.add), error);
     },
     true, CheckSize, HasNoDate},
    {"tiff", "tif", "image/tiff",
     [](const Settings &settings, ByteSinks sinks, std::string *error) {
         return MakeTiffDevice(settings.png, std::move(sinks), error);
     },
     false, CheckSize, HasNoDate},
};
static_assert(std::size(kFormats) == kFormatCount);

} // namespace

std::span<const Format> Formats()
{
    return kFormats;
}

const Format *FindFormat(std::string_view name)
{
    for (const Format &format : kFormats) {
        if (format.name == name || (!name.empty() && format.shortName == name))
            return &format;
    }
    return nullptr;
}

unsigned BitOf(const Format &format)
{
    return 1U << static_cast<unsigned>(&format - kFormats);
}

std::string NamesOf(unsigned formats, std::string_view between)
{
    std::string names;
    for (const Format &format : kFormats) {
        if ((formats & BitOf(format)) != 0)
            names.append(names.empty() ? "" : between).append(format.name);
    }
    return names;
}

} // namespace vxhost
