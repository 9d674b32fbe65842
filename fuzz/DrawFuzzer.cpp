// Documents drawn as a user draws them: the plug-in, the drawing state, fonts, and every device that makes a file.
#include "fuzz/HostileHost.h"

#include "devices/pdf/PdfDevice.h"
#include "devices/raster/RasterDevice.h"
#include "devices/svg/SvgDevice.h"
#include "host/Document.h"
#include "host/Plugin.h"
#include "host/fonts/DocumentFonts.h"
#include "host/fonts/DocumentGlyphs.h"
#include "host/fonts/FontconfigFonts.h"
#include "plugin/entry/VXParser.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

namespace
{

using namespace vxhost;

// The packages of the tests, so that every machine draws the same.
const FontList &Fonts()
{
    static const std::unique_ptr<FontList> fonts = MakeFontconfigFonts(
        {false, {"/usr/share/fonts/opentype/urw-base35", "/usr/share/fonts/opentype/ipafont-gothic"}});
    return *fonts;
}

std::string Drop(std::span<const std::byte>)
{
    return "";
}

std::unique_ptr<Device> MakeDevice(uint8_t which, Picture *picture)
{
    std::string error;
    if (which % 4 == 0)
        return MakePdfDevice({}, Drop, &error);
    if (which % 4 == 1)
        return MakeSvgDevice({}, Drop, &error);
    RasterOptions options;
    options.fit = 48;
    options.samples = which % 4 == 2 ? 4 : 1;
    options.profile = "none";
    options.memoryLimit = uint64_t{64} << 20;
    return MakePictureDevice(options, picture, &error);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const std::unique_ptr<Plugin> plugin = Plugin::FromEntry(VXParserMain);
    const vxfuzz::Input input(data, size);
    const auto bytes = std::as_bytes(input.document);
    std::string error;
    const std::unique_ptr<Document> document = Document::FromMemory(bytes, &error);
    DocumentFontOptions fontOptions;
    fontOptions.asked = ScanFontNames(*document);
    fontOptions.isCodePage1252 = input.behaviour.fonts % 2 == 1;
    const DocumentFonts fonts(Fonts(), fontOptions);
    DocumentGlyphs glyphs(&fonts);
    ParseOptions parse;
    parse.fonts = &fonts;
    parse.glyphs = &glyphs;
    parse.maxHeap = parse.maxDrawing = int64_t{16} << 20;
    Picture picture;
    const std::unique_ptr<Device> device = MakeDevice(input.behaviour.seed, &picture);
    if (device == nullptr)
        std::abort();
    Page page;
    page.box = {0, 0, 400, 400};
    const Outcome outcome = plugin->Draw(*document, parse, page, *device);
    if (!outcome.deviceError.empty())
        std::fprintf(stderr, "draw: %s\n", outcome.deviceError.c_str());
    return 0;
}
