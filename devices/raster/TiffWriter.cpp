// libtiff compresses a strip when it is whole, and writes at the end where all strips are: only the first bytes of the file, which
// name that place, are written twice.
#include "devices/raster/TiffWriter.h"

#include "devices/raster/WriterSteps.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <tiffio.h>
#include <utility>

namespace vxhost::raster
{

namespace
{

constexpr int kLevel = 5; // of deflate
constexpr size_t kStripBytes = size_t{1} << 18;
constexpr size_t kProcessInks = 4;

using TiffOptions = std::unique_ptr<TIFFOpenOptions, void (*)(TIFFOpenOptions *)>;

// Returns more than the file can have, however badly its strips compress.
uint64_t BoundOf(const TiffHeader &header, uint64_t bytes, uint64_t strips)
{
    constexpr uint64_t kOfStrip = 64, kOfDirectory = 1 << 16, kGrowth = 256;
    return bytes + bytes / kGrowth + strips * kOfStrip + header.profile.size() + kOfDirectory;
}

} // namespace

struct TiffWriter::State : WriterSteps {
    TiffHeader header;
    ByteSinks sinks;
    size_t samples = 1; // of a pixel
    size_t rowBytes = 0;
    uint32_t rowsOfStrip = 1, strips = 0;
    uint32_t row = 0; // that comes next
    std::vector<uint8_t> strip;
    uint64_t place = 0, size = 0; // in the file
    TIFF *tiff = nullptr;

    ~State()
    {
        sinks =
            {}; // libtiff writes what is left when it closes, and nobody wants that of a file which failed
        if (tiff != nullptr)
            TIFFClose(tiff);
    }

    bool Start();
    bool SetInks();
    bool Row(std::span<const uint8_t *const> inks);

    bool Send(std::span<const std::byte> bytes) noexcept
    {
        if (failure || thrown != nullptr || sinks.add == nullptr)
            return false;
        try {
            Put(bytes);
        } catch (...) {
            thrown = std::current_exception();
        }
        return !failure && thrown == nullptr;
    }
    // The place is anywhere in the file, or a byte behind it, since some things begin at even places.
    void Put(std::span<const std::byte> bytes)
    {
        constexpr std::byte kNothing[1] = {};
        for (; place > size && !failure; ++size)
            failure = sinks.add(kNothing);
        const auto inside =
            static_cast<size_t>(std::min<uint64_t>(bytes.size(), size - std::min(place, size)));
        if (inside > 0 && !failure)
            failure = sinks.replace(place, bytes.first(inside));
        if (inside < bytes.size() && !failure)
            failure = sinks.add(bytes.subspan(inside));
        place += bytes.size();
        size = std::max(size, place);
    }
    static tmsize_t Write(thandle_t handle, void *bytes, tmsize_t count)
    {
        const std::span<const std::byte> span(static_cast<const std::byte *>(bytes),
                                              static_cast<size_t>(count));
        return static_cast<State *>(handle)->Send(span) ? count : -1;
    }
    static toff_t Seek(thandle_t handle, toff_t to, int whence)
    {
        auto *state = static_cast<State *>(handle);
        state->place = whence == SEEK_END ? state->size + to : whence == SEEK_CUR ? state->place + to : to;
        return state->place;
    }
    static toff_t Size(thandle_t handle) { return static_cast<State *>(handle)->size; }
    static tmsize_t Read(thandle_t, void *, tmsize_t) { return 0; }
    static int Close(thandle_t) { return 0; }
    static int Map(thandle_t, void **, toff_t *) { return 0; }
    static void Unmap(thandle_t, void *, toff_t) {}
    // Nothing is told on standard error: Take tells what was not done.
    static int Ignore(TIFF *, void *, const char *, const char *, va_list) { return 1; }
};

bool TiffWriter::State::Start()
{
    const TiffOptions options(TIFFOpenOptionsAlloc(), TIFFOpenOptionsFree);
    if (options == nullptr)
        return false;
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), Ignore, nullptr);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), Ignore, nullptr);
    const uint64_t bytes = uint64_t{rowBytes} * static_cast<uint64_t>(header.height);
    const bool isBig = BoundOf(header, bytes, strips) > header.mostOfPlain;
    // Little-endian on every machine, so that the same drawing gives the same bytes.
    tiff = TIFFClientOpenExt("", isBig ? "w8l" : "wl", this, Read, Write, Seek, Close, Size, Map, Unmap,
                             options.get());
    return tiff != nullptr && TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, static_cast<uint32_t>(header.width)) &&
           TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, static_cast<uint32_t>(header.height)) &&
           TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8) &&
           TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, static_cast<int>(samples)) &&
           TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) &&
           TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT) &&
           TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, rowsOfStrip) &&
           TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE) &&
           TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL) &&
           TIFFSetField(tiff, TIFFTAG_ZIPQUALITY, kLevel) &&
           TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH) &&
           TIFFSetField(tiff, TIFFTAG_XRESOLUTION, header.pixelsPerInchX) &&
           TIFFSetField(tiff, TIFFTAG_YRESOLUTION, header.pixelsPerInchY) &&
           (header.title.empty() || TIFFSetField(tiff, TIFFTAG_IMAGEDESCRIPTION, header.title.c_str())) &&
           (header.ink.empty() || TIFFSetField(tiff, TIFFTAG_PAGENAME, header.ink.c_str())) && SetInks();
}

bool TiffWriter::State::SetInks()
{
    if (header.inks.empty())
        return TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK) != 0;
    if (!TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_SEPARATED) ||
        !TIFFSetField(tiff, TIFFTAG_INKSET, INKSET_CMYK) ||
        (!header.profile.empty() &&
         !TIFFSetField(tiff, TIFFTAG_ICCPROFILE, static_cast<uint32_t>(header.profile.size()),
                       header.profile.data())))
        return false;
    if (samples <= kProcessInks)
        return TIFFSetField(tiff, TIFFTAG_NUMBEROFINKS, static_cast<int>(samples)) != 0;
    const std::vector<uint16_t> extra(samples - kProcessInks, EXTRASAMPLE_UNSPECIFIED);
    std::string names; // each ends in NUL
    for (const std::string &ink : header.inks)
        names.append(ink).push_back('\0');
    return names.size() <= std::numeric_limits<uint16_t>::max() &&
           TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, static_cast<int>(extra.size()), extra.data()) &&
           TIFFSetField(tiff, TIFFTAG_INKNAMES, static_cast<int>(names.size()), names.data());
}

bool TiffWriter::State::Row(std::span<const uint8_t *const> inks)
{
    uint8_t *to = &strip[row % rowsOfStrip * rowBytes];
    for (size_t i = 0; i < samples; ++i) {
        for (size_t x = 0; x < static_cast<size_t>(header.width); ++x)
            to[x * samples + i] = inks[i][x];
    }
    if (++row % rowsOfStrip != 0 && row != static_cast<uint32_t>(header.height))
        return true;
    const uint32_t number = (row - 1) / rowsOfStrip;
    const size_t bytes = (row - number * rowsOfStrip) * rowBytes;
    return TIFFWriteEncodedStrip(tiff, number, strip.data(), static_cast<tmsize_t>(bytes)) >= 0;
}

TiffWriter::TiffWriter(const TiffHeader &header, ByteSinks sinks) : state_(std::make_unique<State>())
{
    State &state = *state_;
    state.header = header;
    state.sinks = std::move(sinks);
    state.samples = std::max<size_t>(header.inks.size(), 1);
    state.rowBytes = static_cast<size_t>(header.width) * state.samples;
    const auto height = static_cast<uint32_t>(header.height);
    state.rowsOfStrip = std::clamp(static_cast<uint32_t>(kStripBytes / state.rowBytes), 1U, height);
    state.strips = (height + state.rowsOfStrip - 1) / state.rowsOfStrip;
    state.strip.resize(state.rowBytes * state.rowsOfStrip);
    state.Take("the TIFF file cannot be begun", [&] { return state.Start(); });
}

TiffWriter::~TiffWriter() = default;

void TiffWriter::WriteRow(std::span<const uint8_t *const> inks)
{
    state_->Take("the TIFF file cannot be continued", [&] { return state_->Row(inks); });
}

Failure TiffWriter::End()
{
    state_->Take("the TIFF file cannot be completed", [&] { return TIFFWriteDirectory(state_->tiff) != 0; });
    return state_->failure;
}

} // namespace vxhost::raster
