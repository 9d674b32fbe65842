// The calls of vx.h that draw a document.
#include "library/interface/CallerDevice.h"
#include "library/interface/DocumentCall.h"
#include "library/interface/DocumentOptions.h"
#include "library/interface/Pass.h"
#include "library/interface/Telling.h"

#include "devices/raster/Plates.h"
#include "devices/raster/RasterDevice.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <cstring>

using namespace vxhost;

namespace
{

// null: error says why there is none.
Device &CheckMade(const std::unique_ptr<Device> &device, const std::string &error)
{
    if (device == nullptr)
        throw OptionError(error);
    return *device;
}

void Render(vx_document *document, const Format &format, WrittenBytes *written)
{
    const Page page = LayOutPage(document);
    CheckFailure(format.checkPage(document->settings, page));
    std::string error;
    const std::unique_ptr<Device> device =
        format.make(document->settings, written->Sinks(format.isWrittenInOrder), &error);
    DrawPass(document, page, &CheckMade(device, error), written);
    written->HandOver();
}

// Each of the following is for a record of pixels, of whatever kind.
template <class Pixels>
Page PageOf(vx_document *document, const Pixels &pixels)
{
    Page page;
    const Box &box = page.box = Box{pixels.left, pixels.bottom, pixels.right, pixels.top}.Upright();
    if (box.left == 0 && box.bottom == 0 && box.right == 0 && box.top == 0)
        return LayOutPage(document);
    if (!std::isfinite(box.Width()) || !std::isfinite(box.Height()) || box.Width() <= 0 || box.Height() <= 0)
        throw CallError(VX_WRONG_ARGUMENT,
                        "the box of the pixels is empty: give left, bottom, right and top");
    return page;
}

template <class Pixels>
void CheckSides(const Pixels &pixels)
{
    if (pixels.width < 1 || pixels.height < 1 || pixels.width > kMaxSide || pixels.height > kMaxSide)
        throw CallError(VX_WRONG_ARGUMENT, "the pixels are " + std::to_string(pixels.width) + " by " +
                                               std::to_string(pixels.height) + ": give 1 to 131072 of each");
}

template <class Pixels>
RasterOptions OptionsOf(vx_document *document, const Pixels &pixels, const Page &page)
{
    RasterOptions options = document->settings.png;
    options.fit = 0;
    options.width = pixels.width;
    options.height = pixels.height;
    CheckFailure(FindPictureSize(page.box, options).failure);
    return options;
}

void DrawPixels(vx_document *document, const vx_pixels &pixels)
{
    CheckSides(pixels);
    CheckThere(pixels.top_row, "top_row");
    const ptrdiff_t rowBytes = ptrdiff_t{4} * pixels.width;
    if (pixels.stride < rowBytes && pixels.stride > -rowBytes)
        throw CallError(VX_WRONG_ARGUMENT, "the stride is " + std::to_string(pixels.stride) +
                                               ", a row takes " + std::to_string(rowBytes) +
                                               " bytes: leave room for it");
    const Page page = PageOf(document, pixels);
    std::string error;
    const auto device =
        MakePixelsDevice(OptionsOf(document, pixels, page), {pixels.top_row, pixels.stride}, &error);
    DrawPass(document, page, &CheckMade(device, error), nullptr);
}

void DrawInks(vx_document *document, vx_inks *inks)
{
    CheckSides(*inks);
    const Page page = PageOf(document, *inks);
    const RasterOptions options = OptionsOf(document, *inks, page);
    const auto pixels = std::make_shared<InkPixels>(options.memoryLimit);
    std::string error;
    const auto device = MakePlatesDevice(options, std::nullopt, pixels, &error);
    DrawPass(document, page, &CheckMade(device, error), nullptr);
    document->inks = pixels;
    document->inkNames.clear();
    for (const std::string &name : pixels->Inks())
        document->inkNames.push_back(name.c_str());
    inks->names = document->inkNames.data();
    inks->ink_count = document->inkNames.size();
    inks->amounts = pixels->Bytes().data();
}

// Returns the record as this version has it: procedures beyond the caller's size are null.
vx_device WholeDevice(const vx_device &given)
{
    constexpr size_t kLeast = offsetof(vx_device, begin);
    if (given.size < kLeast || given.size > sizeof given || (given.size - kLeast) % sizeof(void *) != 0)
        CheckSize(given.size, sizeof given, "vx_device");
    vx_device whole = {};
    std::memcpy(&whole, &given, given.size);
    return whole;
}

} // namespace

extern "C" {

vx_status vx_document_render(vx_document *document, const char *format, vx_write write, void *context,
                             vx_error *error)
{
    return DocumentCall(document, error, [&] {
        const Format &row = CheckFormat(format);
        CheckThere(reinterpret_cast<const void *>(write), "write");
        WrittenBytes written(write, context,
                             MostOutput(document->settings.output, document->bytes->Bytes().size()));
        Render(document, row, &written);
    });
}

vx_status vx_document_pixels(vx_document *document, const vx_pixels *pixels, vx_error *error)
{
    return DocumentCall(document, error, [&] {
        CheckThere(pixels, "pixels");
        CheckSize(pixels->size, sizeof *pixels, "vx_pixels");
        DrawPixels(document, *pixels);
    });
}

vx_status vx_document_inks(vx_document *document, vx_inks *inks, vx_error *error)
{
    return DocumentCall(document, error, [&] {
        CheckThere(inks, "inks");
        CheckSize(inks->size, sizeof *inks, "vx_inks");
        DrawInks(document, inks);
    });
}

vx_status vx_document_draw(vx_document *document, const vx_device *device, vx_error *error)
{
    return DocumentCall(document, error, [&] {
        CheckThere(device, "device");
        CallerDevice drawn(WholeDevice(*device));
        DrawPass(document, LayOutPage(document), &drawn, nullptr);
    });
}
}
