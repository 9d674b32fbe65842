// libpng reports an error by a jump. What may jump stands in functions of its own that hold nothing to destroy, right below their
// setjmp.
#include "cli/difference/PictureFile.h"

#include "devices/raster/RasterOptions.h"
#include "host/MemoryWatch.h"

#include <algorithm>
#include <csetjmp>
#include <cstring>
#include <new>
#include <png.h>

namespace vxhost
{

namespace
{

constexpr size_t kSignatureBytes = 8;
constexpr size_t kChannels = 4;
constexpr size_t kMostText = 1000;                                 // bytes of an ink's name
constexpr png_alloc_size_t kMostChunk = png_alloc_size_t{8} << 20; // bytes of a profile or a text
constexpr png_uint_32 kMostChunks = 1000;                          // that are kept

class PngPicture final : public PictureFile
{
  public:
    explicit PngPicture(std::span<const std::byte> bytes) : rest_(bytes) {}
    ~PngPicture() override { png_destroy_read_struct(&png_, &info_, nullptr); }

    Failure Open()
    {
        png_ = png_create_read_struct(PNG_LIBPNG_VER_STRING, this, Fail, Warn);
        if (png_ != nullptr)
            info_ = png_create_info_struct(png_);
        if (info_ == nullptr)
            throw std::bad_alloc();
        if (Failure failure = Take([this] { return Start(); }))
            return failure;
        facts_.channels = {"red", "green", "blue", "alpha"};
        facts_.plate = plate_;
        if (isDeep_)
            facts_.remarks.emplace_back("it has 16 bits a channel, of which the upper 8 are compared");
        if (hasProfile_)
            facts_.remarks.emplace_back("its colour profile is not applied: its numbers are compared");
        if (passes_ == 1)
            return {};
        // Rows of an interlaced picture come in no order, so all of them are kept.
        whole_.resize(facts_.RowBytes() * static_cast<size_t>(facts_.height));
        return Take([this] { return ReadWhole(); });
    }

    Failure ReadRow(uint8_t *row) override
    {
        if (passes_ == 1)
            return Take([&] { return ReadNext(row); });
        std::copy_n(&whole_[static_cast<size_t>(row_++) * facts_.RowBytes()], facts_.RowBytes(), row);
        return {};
    }

  private:
    template <typename Step>
    Failure Take(const Step &step)
    {
        const MemoryWatch watch;
        const bool isDone = step();
        watch.Check();
        return isDone ? Failure() : Failure{FailureKind::BadInput, std::string("a damaged PNG: ") + why_};
    }

    bool Start();
    bool ReadWhole();
    bool ReadNext(uint8_t *row);

    static void Read(png_structp png, png_bytep to, size_t count)
    {
        auto *picture = static_cast<PngPicture *>(png_get_io_ptr(png));
        if (count > picture->rest_.size())
            png_error(png, "it ends too early");
        std::memcpy(to, picture->rest_.data(), count);
        picture->rest_ = picture->rest_.subspan(count);
    }
    static void Fail(png_structp png, png_const_charp why)
    {
        auto *picture = static_cast<PngPicture *>(png_get_error_ptr(png));
        std::strncpy(picture->why_, why, sizeof picture->why_ - 1);
        png_longjmp(png, 1);
    }
    static void Warn(png_structp, png_const_charp) {}

    std::span<const std::byte> rest_;
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
    char why_[120] = {};
    char plate_[kMostText] = {};
    bool isDeep_ = false, hasProfile_ = false;
    int passes_ = 1;
    std::vector<uint8_t> whole_; // of an interlaced picture
    int row_ = 0;                // of it, that comes next
};

bool PngPicture::Start()
{
    if (setjmp(png_jmpbuf(png_)) != 0) // NOLINT(cert-err52-cpp): the only way that libpng has
        return false;
    png_set_read_fn(png_, this, Read);
    png_set_user_limits(png_, static_cast<png_uint_32>(kMaxSide), static_cast<png_uint_32>(kMaxSide));
    png_set_chunk_cache_max(png_, kMostChunks);
    png_set_chunk_malloc_max(png_, kMostChunk);
    png_read_info(png_, info_);
    facts_.width = static_cast<int>(png_get_image_width(png_, info_));
    facts_.height = static_cast<int>(png_get_image_height(png_, info_));
    isDeep_ = png_get_bit_depth(png_, info_) > 8;
    hasProfile_ = png_get_valid(png_, info_, PNG_INFO_iCCP) != 0;
    facts_.hasAlpha = (png_get_color_type(png_, info_) & PNG_COLOR_MASK_ALPHA) != 0 ||
                      png_get_valid(png_, info_, PNG_INFO_tRNS) != 0;
    png_textp texts = nullptr;
    for (int i = png_get_text(png_, info_, &texts, nullptr) - 1; i >= 0; --i) {
        if (std::strcmp(texts[i].key, "Ink") == 0)
            std::strncpy(plate_, texts[i].text, sizeof plate_ - 1);
    }
    png_set_expand(png_);
    png_set_scale_16(png_);
    png_set_gray_to_rgb(png_);
    png_set_add_alpha(png_, 0xFF, PNG_FILLER_AFTER);
    passes_ = png_set_interlace_handling(png_);
    png_read_update_info(png_, info_);
    if (png_get_rowbytes(png_, info_) != static_cast<size_t>(facts_.width) * kChannels)
        png_error(png_, "its rows have another length than its header says");
    return true;
}

bool PngPicture::ReadWhole()
{
    if (setjmp(png_jmpbuf(png_)) != 0) // NOLINT(cert-err52-cpp): the only way that libpng has
        return false;
    for (int pass = 0; pass < passes_; ++pass) {
        for (int y = 0; y < facts_.height; ++y)
            png_read_row(png_, &whole_[static_cast<size_t>(y) * facts_.RowBytes()], nullptr);
    }
    return true;
}

bool PngPicture::ReadNext(uint8_t *row)
{
    if (setjmp(png_jmpbuf(png_)) != 0) // NOLINT(cert-err52-cpp): the only way that libpng has
        return false;
    png_read_row(png_, row, nullptr);
    return true;
}

} // namespace

bool IsPng(std::span<const std::byte> bytes)
{
    return bytes.size() >= kSignatureBytes &&
           png_sig_cmp(reinterpret_cast<png_const_bytep>(bytes.data()), 0, kSignatureBytes) == 0;
}

std::unique_ptr<PictureFile> OpenPng(std::span<const std::byte> bytes, Failure *failure)
{
    auto picture = std::make_unique<PngPicture>(bytes);
    *failure = picture->Open();
    if (*failure)
        return nullptr;
    return picture;
}

} // namespace vxhost
