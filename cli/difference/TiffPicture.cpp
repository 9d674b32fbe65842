// Reads the kinds of TIFF that this program writes and that others print and scan: 8 bits a sample, the samples of a pixel side by
// side, in strips.
#include "cli/difference/PictureFile.h"

#include "devices/raster/RasterOptions.h"
#include "devices/raster/TiffWriter.h"
#include "host/MemoryWatch.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <tiffio.h>

namespace vxhost
{

namespace
{

constexpr const char *kProcessNames[] = {"Cyan", "Magenta", "Yellow", "Black"};
constexpr size_t kColourChannels = 4;
constexpr uint8_t kOpaque = 255;

class TiffPicture final : public PictureFile
{
  public:
    explicit TiffPicture(std::span<const std::byte> bytes) : bytes_(bytes) {}
    ~TiffPicture() override
    {
        if (tiff_ != nullptr)
            TIFFClose(tiff_);
    }

    Failure Open()
    {
        const MemoryWatch watch;
        const std::unique_ptr<TIFFOpenOptions, void (*)(TIFFOpenOptions *)> options(TIFFOpenOptionsAlloc(),
                                                                                    TIFFOpenOptionsFree);
        if (options != nullptr) {
            TIFFOpenOptionsSetErrorHandlerExtR(options.get(), Keep, this);
            TIFFOpenOptionsSetWarningHandlerExtR(options.get(), Ignore, nullptr);
            tiff_ =
                TIFFClientOpenExt("", "rm", this, Read, Write, Seek, Close, Size, Map, Unmap, options.get());
        }
        watch.Check();
        if (tiff_ == nullptr)
            return Damaged();
        if (Failure failure = ReadFacts())
            return failure;
        row_.resize(static_cast<size_t>(facts_.width) * samples_);
        if (TIFFScanlineSize(tiff_) != static_cast<tmsize_t>(row_.size()))
            return Damaged();
        return {};
    }

    Failure ReadRow(uint8_t *row) override
    {
        const MemoryWatch watch;
        const bool isRead = TIFFReadScanline(tiff_, row_.data(), y_++, 0) >= 0;
        watch.Check();
        if (!isRead)
            return Damaged();
        if (facts_.kind == PictureKind::Inks) {
            std::ranges::copy(row_, row);
            return {};
        }
        for (const uint8_t *from = row_.data(); from < row_.data() + row_.size(); from += samples_) {
            for (size_t i = 0; i < kColourChannels - 1; ++i)
                *row++ = from[samples_ < kColourChannels - 1 ? 0 : i];
            *row++ = facts_.hasAlpha ? from[samples_ - 1] : kOpaque;
        }
        return {};
    }

  private:
    Failure ReadFacts();
    Failure ReadInks();
    Failure ReadColours(uint16_t photometric);
    bool ReadNames();

    uint16_t Number(uint32_t tag) const
    {
        uint16_t number = 0;
        (void)TIFFGetFieldDefaulted(tiff_, tag, &number);
        return number;
    }

    Failure Damaged() const { return {FailureKind::BadInput, "a damaged TIFF: " + why_}; }
    static Failure Unread(const char *what)
    {
        return {FailureKind::BadInput, std::string(what) +
                                           ": make it a TIFF of gray, RGB or CMYK with 8 bits a sample, "
                                           "in strips, or a PNG"};
    }

    static TiffPicture *Of(thandle_t handle) { return static_cast<TiffPicture *>(handle); }
    static tmsize_t Read(thandle_t handle, void *to, tmsize_t count)
    {
        TiffPicture *picture = Of(handle);
        const uint64_t size = picture->bytes_.size();
        const uint64_t left = size - std::min(picture->place_, size);
        const auto taken = static_cast<size_t>(std::min<uint64_t>(left, static_cast<uint64_t>(count)));
        if (taken > 0)
            std::memcpy(to, &picture->bytes_[static_cast<size_t>(picture->place_)], taken);
        picture->place_ += taken;
        return static_cast<tmsize_t>(taken);
    }
    static tmsize_t Write(thandle_t, void *, tmsize_t) { return -1; }
    static toff_t Seek(thandle_t handle, toff_t to, int whence)
    {
        TiffPicture *picture = Of(handle);
        picture->place_ = whence == SEEK_END   ? picture->bytes_.size() + to
                          : whence == SEEK_CUR ? picture->place_ + to
                                               : to;
        return picture->place_;
    }
    static toff_t Size(thandle_t handle) { return Of(handle)->bytes_.size(); }
    static int Close(thandle_t) { return 0; }
    static int Map(thandle_t, void **, toff_t *) { return 0; }
    static void Unmap(thandle_t, void *, toff_t) {}
    static int Ignore(TIFF *, void *, const char *, const char *, va_list) { return 1; }
    static int Keep(TIFF *, void *picture, const char *, const char *format, va_list values)
    {
        char text[200];
        (void)std::vsnprintf(text, sizeof text, format, values);
        static_cast<TiffPicture *>(picture)->why_ = text;
        return 1;
    }

    std::span<const std::byte> bytes_;
    uint64_t place_ = 0; // in them
    TIFF *tiff_ = nullptr;
    std::string why_ = "its fields do not fit each other";
    size_t samples_ = 0; // of a pixel
    std::vector<uint8_t> row_;
    uint32_t y_ = 0; // of the row that comes next
};

Failure TiffPicture::ReadFacts()
{
    uint32_t width = 0, height = 0;
    if (TIFFGetField(tiff_, TIFFTAG_IMAGEWIDTH, &width) == 0 ||
        TIFFGetField(tiff_, TIFFTAG_IMAGELENGTH, &height) == 0 || width == 0 || height == 0)
        return Damaged();
    if (width > kMaxSide || height > kMaxSide)
        return {FailureKind::TooLarge, "its picture is larger than any that is compared: make it smaller"};
    facts_.width = static_cast<int>(width);
    facts_.height = static_cast<int>(height);
    samples_ = Number(TIFFTAG_SAMPLESPERPIXEL);
    if (TIFFIsTiled(tiff_) != 0)
        return Unread("a TIFF of tiles");
    if (Number(TIFFTAG_BITSPERSAMPLE) != 8 || Number(TIFFTAG_SAMPLEFORMAT) != SAMPLEFORMAT_UINT)
        return Unread("a TIFF of other numbers than 8 bits");
    if (samples_ == 0 || samples_ > raster::kMostTiffInks)
        return Unread("a TIFF of too many samples");
    if (samples_ > 1 && Number(TIFFTAG_PLANARCONFIG) != PLANARCONFIG_CONTIG)
        return Unread("a TIFF of planes");
    if (Number(TIFFTAG_ORIENTATION) != ORIENTATION_TOPLEFT)
        return Unread("a TIFF that is turned");
    uint16_t photometric = 0;
    if (TIFFGetField(tiff_, TIFFTAG_PHOTOMETRIC, &photometric) == 0)
        return Damaged();
    return photometric == PHOTOMETRIC_SEPARATED ? ReadInks() : ReadColours(photometric);
}

Failure TiffPicture::ReadInks()
{
    facts_.kind = PictureKind::Inks;
    if (ReadNames())
        return {};
    if (samples_ < std::size(kProcessNames) || Number(TIFFTAG_INKSET) != INKSET_CMYK)
        return Unread("a TIFF of inks that it does not name");
    facts_.channels.assign(std::begin(kProcessNames), std::end(kProcessNames));
    for (size_t i = facts_.channels.size(); i < samples_; ++i)
        facts_.channels.push_back("ink " + std::to_string(i + 1));
    return {};
}

// Names end in NUL each. libtiff keeps none that do not, and counts them as the inks.
bool TiffPicture::ReadNames()
{
    const char *names = nullptr;
    if (TIFFGetField(tiff_, TIFFTAG_INKNAMES, &names) == 0 || Number(TIFFTAG_NUMBEROFINKS) != samples_)
        return false;
    for (size_t i = 0; i < samples_; ++i) {
        facts_.channels.emplace_back(names);
        names += facts_.channels.back().size() + 1;
    }
    return true;
}

Failure TiffPicture::ReadColours(uint16_t photometric)
{
    const bool isGray = photometric == PHOTOMETRIC_MINISBLACK;
    const size_t colours = isGray ? 1 : kColourChannels - 1;
    if (!isGray && photometric != PHOTOMETRIC_RGB)
        return Unread("a TIFF of other colours");
    facts_.hasAlpha = samples_ == colours + 1;
    uint16_t count = 0;
    const uint16_t *extra = nullptr;
    if (samples_ != colours &&
        (!facts_.hasAlpha || TIFFGetField(tiff_, TIFFTAG_EXTRASAMPLES, &count, &extra) == 0 || count != 1 ||
         extra[0] != EXTRASAMPLE_UNASSALPHA))
        return Unread("a TIFF with more than its colours");
    facts_.channels = {"red", "green", "blue", "alpha"};
    const char *plate = nullptr;
    if (isGray && TIFFGetField(tiff_, TIFFTAG_PAGENAME, &plate) != 0)
        facts_.plate = plate;
    uint32_t bytes = 0;
    const void *profile = nullptr;
    if (TIFFGetField(tiff_, TIFFTAG_ICCPROFILE, &bytes, &profile) != 0)
        facts_.remarks.emplace_back("its colour profile is not applied: its numbers are compared");
    return {};
}

} // namespace

bool IsTiff(std::span<const std::byte> bytes)
{
    constexpr std::string_view kMarks[] = {{"II*\0", 4}, {"MM\0*", 4}, {"II+\0", 4}, {"MM\0+", 4}};
    const std::string_view text(reinterpret_cast<const char *>(bytes.data()), bytes.size());
    return std::ranges::any_of(kMarks, [text](std::string_view mark) { return text.starts_with(mark); });
}

std::unique_ptr<PictureFile> OpenTiff(std::span<const std::byte> bytes, Failure *failure)
{
    auto picture = std::make_unique<TiffPicture>(bytes);
    *failure = picture->Open();
    if (*failure)
        return nullptr;
    return picture;
}

std::unique_ptr<PictureFile> OpenPicture(std::span<const std::byte> bytes, Failure *failure)
{
    return IsPng(bytes) ? OpenPng(bytes, failure) : OpenTiff(bytes, failure);
}

} // namespace vxhost
