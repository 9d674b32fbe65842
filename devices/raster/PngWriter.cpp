// A picture is compressed in one piece when its last row is there, by a library that is faster than the one in libpng and knows
// nothing of streams. One that is too large for that is compressed as its rows come.
//
// libpng reports an error by a jump. What may jump stands in functions of its own that hold nothing to
// destroy, right below their setjmp.
#include "devices/raster/PngWriter.h"

#include "devices/raster/WriterSteps.h"

#include <algorithm>
#include <cmath>
#include <csetjmp>
#include <libdeflate.h>
#include <new>
#include <optional>
#include <png.h>
#include <utility>

namespace vxhost::raster
{

namespace
{

// Drawings are flat, and rows repeat, so that a quick search finds most.
constexpr int kStreamLevel = 4;
constexpr int kPieceLevel = 5;
constexpr size_t kMostInOnePiece = size_t{8}
                                   << 20; // bytes of rows: the file is the same whatever memory there is

constexpr size_t kMaxText = 1000; // bytes

// Counts pixels of one byte that are unlike the one before them. So many at a time as a byte can count: many go into one register.
size_t CountGrayDifferences(const uint8_t *row, size_t bytes)
{
    constexpr size_t kMostCounted = 255;
    size_t differences = 0;
    for (size_t i = 1; i < bytes;) {
        const size_t end = std::min(bytes, i + kMostCounted);
        uint8_t some = 0;
        for (; i < end; ++i)
            some = static_cast<uint8_t>(some + (row[i] != row[i - 1] ? 1 : 0));
        differences += some;
    }
    return differences;
}

size_t CountDifferences(const uint8_t *row, size_t bytes, size_t pixelBytes)
{
    if (pixelBytes == 1)
        return CountGrayDifferences(row, bytes);
    size_t differences = 0;
    for (size_t i = pixelBytes; i < bytes; i += pixelBytes) {
        uint8_t difference = 0;
        for (size_t k = i; k < i + pixelBytes; ++k)
            difference |= row[k] ^ row[k - pixelBytes];
        differences += difference != 0 ? 1 : 0;
    }
    return differences;
}

// Filters hide what repeats, so flat rows have none. But differences are what repeats in a row of a gradient, of whose pixels
// many are unlike the one before them.
int ChooseFilter(const uint8_t *row, size_t bytes, size_t pixelBytes)
{
    constexpr size_t kPixelsADifference = 5;
    return CountDifferences(row, bytes, pixelBytes) * pixelBytes * kPixelsADifference > bytes
               ? PNG_FILTER_VALUE_SUB
               : PNG_FILTER_VALUE_NONE;
}

int ColourType(PngPixels pixels)
{
    switch (pixels) {
    case PngPixels::Gray:
        return PNG_COLOR_TYPE_GRAY;
    case PngPixels::Rgba:
        return PNG_COLOR_TYPE_RGB_ALPHA;
    default:
        return PNG_COLOR_TYPE_RGB;
    }
}

// The start of the text: whole characters, at most that many bytes of UTF-8.
std::string CutText(const std::string &text, size_t most)
{
    if (text.size() <= most)
        return text;
    while (most > 0 && (static_cast<uint8_t>(text[most]) & 0xC0) == 0x80)
        --most;
    return text.substr(0, most);
}

} // namespace

// Bytes that are not cleared first.
struct Room {
    std::unique_ptr<uint8_t[]> bytes;
    size_t used = 0;

    explicit Room(size_t size) : bytes(std::make_unique_for_overwrite<uint8_t[]>(size)) {}
};

struct PngWriter::State : WriterSteps {
    png_structp png = nullptr;
    png_infop info = nullptr;
    PngHeader header;
    size_t rowBytes = 0;
    std::optional<Room> rows, compressed; // of a picture that is compressed in one piece
    ByteSink sink;

    ~State() { png_destroy_write_struct(&png, &info); }

    bool Start();
    bool Row(const uint8_t *row);
    void Compress();
    bool Finish();

    bool Send(std::span<const std::byte> bytes) noexcept
    {
        try {
            failure = sink(bytes);
        } catch (...) {
            thrown = std::current_exception();
        }
        return !failure && thrown == nullptr;
    }
    static void WriteBytes(png_structp png, png_bytep bytes, size_t count)
    {
        auto *state = static_cast<State *>(png_get_io_ptr(png));
        if (!state->Send(std::as_bytes(std::span(bytes, count))))
            png_error(png, "");
    }
    static void Flush(png_structp) {}
    // libpng fails for its caller's mistakes and for lack of memory alone, and Take looks at the memory.
    static void Fail(png_structp png, png_const_charp) { png_longjmp(png, 1); }
    static void Warn(png_structp, png_const_charp) {}
};

bool PngWriter::State::Start()
{
    if (setjmp(png_jmpbuf(png)) != 0) // NOLINT(cert-err52-cpp): the only way that libpng has
        return false;
    png_set_write_fn(png, this, WriteBytes, Flush);
    png_set_compression_level(png, kStreamLevel);
    png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_SUB);
    png_set_IHDR(png, info, static_cast<png_uint_32>(header.width), static_cast<png_uint_32>(header.height),
                 8, ColourType(header.pixels), PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    if (header.pixels != PngPixels::Gray)
        png_set_sRGB(png, info, PNG_sRGB_INTENT_RELATIVE);
    const auto perMetre = [](double perInch) {
        return static_cast<png_uint_32>(std::min(std::round(perInch / 0.0254), double{PNG_UINT_31_MAX}));
    };
    png_set_pHYs(png, info, perMetre(header.pixelsPerInchX), perMetre(header.pixelsPerInchY),
                 PNG_RESOLUTION_METER);

    char titleKey[] = "Title", profileKey[] = "Press profile", inkKey[] = "Ink";
    png_text texts[3] = {};
    int count = 0;
    const auto addText = [&](char *key, std::string &text) {
        if (text.empty())
            return;
        texts[count].compression = PNG_ITXT_COMPRESSION_NONE; // UTF-8
        texts[count].key = key;
        texts[count++].text = text.data();
    };
    addText(profileKey, header.profile);
    addText(titleKey, header.title);
    addText(inkKey, header.ink);
    png_set_text(png, info, texts, count);
    png_write_info(png, info);
    return true;
}

bool PngWriter::State::Row(const uint8_t *row)
{
    if (rows) {
        const auto pixelBytes = static_cast<size_t>(header.pixels);
        const int filter = ChooseFilter(row, rowBytes, pixelBytes);
        uint8_t *to = &rows->bytes[rows->used];
        *to++ = static_cast<uint8_t>(filter);
        std::copy_n(row, rowBytes, to);
        for (size_t i = pixelBytes; filter == PNG_FILTER_VALUE_SUB && i < rowBytes; ++i)
            to[i] = static_cast<uint8_t>(row[i] - row[i - pixelBytes]);
        rows->used += 1 + rowBytes;
        return true;
    }
    if (setjmp(png_jmpbuf(png)) != 0) // NOLINT(cert-err52-cpp): the only way that libpng has
        return false;
    png_write_row(png, row);
    return true;
}

void PngWriter::State::Compress()
{
    const std::unique_ptr<libdeflate_compressor, void (*)(libdeflate_compressor *)> compressor(
        libdeflate_alloc_compressor(kPieceLevel), libdeflate_free_compressor);
    if (compressor == nullptr)
        throw std::bad_alloc();
    const size_t bound = libdeflate_zlib_compress_bound(compressor.get(), rows->used);
    compressed.emplace(bound);
    compressed->used = libdeflate_zlib_compress(compressor.get(), rows->bytes.get(), rows->used,
                                                compressed->bytes.get(), bound);
}

bool PngWriter::State::Finish()
{
    if (setjmp(png_jmpbuf(png)) != 0) // NOLINT(cert-err52-cpp): the only way that libpng has
        return false;
    if (compressed) {
        png_write_chunk(png, reinterpret_cast<png_const_bytep>("IDAT"), compressed->bytes.get(),
                        compressed->used);
        png_write_chunk(png, reinterpret_cast<png_const_bytep>("IEND"), nullptr, 0);
    } else {
        png_write_end(png, nullptr);
    }
    return true;
}

PngWriter::PngWriter(const PngHeader &header, ByteSink sink) : state_(std::make_unique<State>())
{
    state_->header = header;
    state_->header.title = CutText(header.title, kMaxText);
    state_->header.ink = CutText(header.ink, kMaxText);
    state_->sink = std::move(sink);
    state_->png = png_create_write_struct(PNG_LIBPNG_VER_STRING, state_.get(), State::Fail, State::Warn);
    if (state_->png != nullptr)
        state_->info = png_create_info_struct(state_->png);
    if (state_->info == nullptr)
        throw std::bad_alloc();
    state_->rowBytes = static_cast<size_t>(header.width) * static_cast<size_t>(header.pixels);
    const size_t bytes = (state_->rowBytes + 1) * static_cast<size_t>(header.height);
    if (bytes <= kMostInOnePiece)
        state_->rows.emplace(bytes);
    state_->Take("the PNG file cannot be begun", [this] { return state_->Start(); });
}

PngWriter::~PngWriter() = default;

void PngWriter::WriteRow(const uint8_t *row)
{
    state_->Take("the PNG file cannot be continued", [&] { return state_->Row(row); });
}

Failure PngWriter::End()
{
    state_->Take("the PNG file cannot be completed", [this] {
        if (state_->rows)
            state_->Compress();
        return state_->Finish();
    });
    return state_->failure;
}

} // namespace vxhost::raster
