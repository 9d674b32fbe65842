// The file: read back by libpng, it has the pixels of the picture, and it says what it is.
#include "devices/raster/PngWriter.h"
#include "tests/unit/raster/Canvas.h"

#include <algorithm>
#include <cerrno>
#include <gtest/gtest.h>
#include <new>
#include <png.h>
#include <zlib.h>

namespace vxhost
{
namespace
{

const Path kTriangle = {{Verb::Move, Verb::Line, Verb::Line}, {{0, 0}, {40.3, 0}, {17.7, 30.1}}};

Paint Orange()
{
    Paint paint;
    paint.colour = {ColourSpace::Cmyk, {0, 0.5, 1, 0}};
    return paint;
}

// The rows of a triangle are flat. Those with narrow bars above it are not, at any resolution.
void DrawTriangle(Device *device)
{
    device->BeginPage({{0, 0, 48, 36}, "Caf\xC3\xA9", ""});
    device->FillPath(kTriangle, Orange());
    for (int i = 0; i < 1536; ++i) {
        const double left = i / 32.0, right = (i + 1) / 32.0;
        Paint gray;
        gray.colour.ink[0] = i * 37 % 256 / 255.0;
        device->FillPath({{Verb::Move, Verb::Line, Verb::Line, Verb::Line},
                          {{left, 32}, {right, 32}, {right, 34}, {left, 34}}},
                         gray);
    }
}

std::string WritePng(const RasterOptions &options, std::string *file)
{
    std::string error;
    const auto device = MakePngDevice(
        options,
        [file](std::span<const std::byte> bytes) {
            file->append(reinterpret_cast<const char *>(bytes.data()), bytes.size());
            return Failure{};
        },
        &error);
    DrawTriangle(device.get());
    return device->EndPage().text;
}

struct PngFile {
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    std::string_view rest;

    explicit PngFile(const std::string &file) : rest(file)
    {
        png_set_read_fn(png, this, [](png_structp reader, png_bytep to, size_t count) {
            auto *self = static_cast<PngFile *>(png_get_io_ptr(reader));
            if (count > self->rest.size())
                png_error(reader, "short file");
            self->rest.copy(reinterpret_cast<char *>(to), count);
            self->rest.remove_prefix(count);
        });
        png_read_png(png, info, PNG_TRANSFORM_IDENTITY, nullptr);
    }
    ~PngFile() { png_destroy_read_struct(&png, &info, nullptr); }
    PngFile(const PngFile &) = delete;
    PngFile &operator=(const PngFile &) = delete;
};

struct PngCase {
    const char *name;
    bool alpha;
    uint64_t memory;
};

// A picture is compressed row by row where memory is short, else in one piece.
const PngCase kPngCases[] = {
    {"WithoutAlpha", false, 1 << 30},
    {"WithAlpha", true, 1 << 30},
    {"RowByRowWithoutAlpha", false, 64 << 10},
    {"RowByRowWithAlpha", true, 64 << 10},
};

class Png : public testing::TestWithParam<PngCase>
{
};

TEST_P(Png, HasThePixelsOfThePicture)
{
    const PngCase &c = GetParam();
    RasterOptions options = PlainOptions();
    options.memoryLimit = c.memory;
    if (c.alpha)
        options.background.reset();
    std::string bytes;
    ASSERT_EQ(WritePng(options, &bytes), "");
    const PngFile file(bytes);

    Picture picture;
    std::string error;
    const auto device = MakePictureDevice(options, &picture, &error);
    DrawTriangle(device.get());
    ASSERT_FALSE(device->EndPage());

    const size_t width = 48, height = 36;
    ASSERT_EQ(png_get_image_width(file.png, file.info), width);
    ASSERT_EQ(png_get_image_height(file.png, file.info), height);
    ASSERT_EQ(png_get_color_type(file.png, file.info),
              c.alpha ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB);
    const size_t channels = c.alpha ? 4 : 3;
    for (size_t row = 0; row < height; ++row) {
        const png_bytep pixels = png_get_rows(file.png, file.info)[row];
        for (size_t column = 0; column < width; ++column) {
            ASSERT_TRUE(std::equal(pixels + column * channels, pixels + (column + 1) * channels,
                                   picture.rgba.data() + (row * width + column) * 4))
                << "row " << row << ", column " << column;
        }
    }
}
INSTANTIATE_TEST_SUITE_P(Raster, Png, testing::ValuesIn(kPngCases),
                         [](const auto &test) { return test.param.name; });

// Flat rows repeat each other, and lose that by a filter; rows in which the colours run on win by one.
TEST(PngFiles, FilterRowsThatAreNotFlat)
{
    std::string file;
    ASSERT_EQ(WritePng(PlainOptions(), &file), "");
    const size_t data = file.find("IDAT") + 4;
    std::string rows((48 * 3 + 1) * 36, 0);
    uLongf size = rows.size();
    ASSERT_EQ(uncompress(reinterpret_cast<Bytef *>(rows.data()), &size,
                         reinterpret_cast<const Bytef *>(file.data()) + data, file.size() - data),
              Z_OK);
    ASSERT_EQ(size, rows.size());
    std::string filtered;
    for (size_t row = 0; row < 36; ++row) {
        if (rows[row * (48 * 3 + 1)] != PNG_FILTER_VALUE_NONE)
            filtered += std::to_string(row) + ' ';
    }
    EXPECT_EQ(filtered, "2 3 ");
}

// A row of gray is filtered if more than a fifth of its pixels differ from the one before, however long it is.
TEST(PngFiles, FilterGrayRowsByTheirDifferences)
{
    for (const size_t width : {5U, 256U, 257U, 1000U, 5000U}) {
        const size_t most = width / 5; // so many differences are not too many
        std::string file;
        raster::PngHeader header;
        header.width = static_cast<int>(width);
        header.height = 3;
        header.pixels = raster::PngPixels::Gray;
        raster::PngWriter writer(header, [&file](std::span<const std::byte> bytes) {
            file.append(reinterpret_cast<const char *>(bytes.data()), bytes.size());
            return Failure{};
        });
        for (const size_t differences : {size_t{0}, most, most + 1}) {
            std::vector<uint8_t> row(width);
            for (size_t i = 1; i < width; ++i)
                row[i] = static_cast<uint8_t>(row[i - 1] + (i > width - 1 - differences ? 1 : 0));
            writer.WriteRow(row.data());
        }
        ASSERT_FALSE(writer.End());
        const size_t data = file.find("IDAT") + 4;
        std::string rows((width + 1) * 3, 0);
        uLongf size = rows.size();
        ASSERT_EQ(uncompress(reinterpret_cast<Bytef *>(rows.data()), &size,
                             reinterpret_cast<const Bytef *>(file.data()) + data, file.size() - data),
                  Z_OK);
        EXPECT_EQ(rows[0], PNG_FILTER_VALUE_NONE) << width;
        EXPECT_EQ(rows[width + 1], PNG_FILTER_VALUE_NONE) << width;
        EXPECT_EQ(rows[2 * (width + 1)], PNG_FILTER_VALUE_SUB) << width;
    }
}

TEST(PngFiles, SayWhatTheyAre)
{
    RasterOptions options = PlainOptions();
    options.dpi = 144;
    std::string bytes;
    ASSERT_EQ(WritePng(options, &bytes), "");
    const PngFile file(bytes);
    EXPECT_EQ(png_get_x_pixels_per_meter(file.png, file.info), 5669U); // 144 / 0.0254
    EXPECT_NE(png_get_valid(file.png, file.info, PNG_INFO_sRGB), 0U);
    png_textp texts = nullptr;
    int count = 0;
    png_get_text(file.png, file.info, &texts, &count);
    ASSERT_EQ(count, 2);
    EXPECT_STREQ(texts[0].text, "none, plain arithmetic");
    EXPECT_STREQ(texts[1].key, "Title");
    EXPECT_STREQ(texts[1].text, "Caf\xC3\xA9");
}

TEST(PngFiles, AreTheSameEveryTime)
{
    RasterOptions options;
    std::string first, second;
    ASSERT_EQ(WritePng(options, &first), "");
    ASSERT_EQ(WritePng(options, &second), "");
    EXPECT_EQ(first, second);
}

// Wherever the disk fills up, the device says so in the words of the sink.
TEST(PngFiles, ThatCannotBeWrittenAreReported)
{
    std::string whole;
    ASSERT_EQ(WritePng(PlainOptions(), &whole), "");
    for (size_t room = 0; room < whole.size(); room += 7) {
        size_t left = room;
        std::string error;
        const auto device = MakePngDevice(
            PlainOptions(),
            [&](std::span<const std::byte> bytes) -> Failure {
                if (bytes.size() > left)
                    return {FailureKind::CannotWrite, "no space", ENOSPC};
                left -= bytes.size();
                return {};
            },
            &error);
        DrawTriangle(device.get());
        const Failure failure = device->EndPage();
        EXPECT_EQ(failure.kind, FailureKind::CannotWrite) << room;
        EXPECT_EQ(failure.text, "no space") << room;
        EXPECT_EQ(failure.error, ENOSPC) << room;
    }
}

// libpng calls the sink from C, where nothing may be thrown.
TEST(PngFiles, PassOnWhatTheSinkThrows)
{
    std::string error;
    const auto device = MakePngDevice(
        PlainOptions(), [](std::span<const std::byte>) -> Failure { throw std::bad_alloc(); }, &error);
    DrawTriangle(device.get());
    EXPECT_THROW((void)device->EndPage(), std::bad_alloc);
}

TEST(PngFiles, GoToAStream)
{
    std::FILE *file = std::tmpfile();
    ASSERT_NE(file, nullptr);
    std::string error, whole;
    const auto device = MakePngDevice(PlainOptions(), WriteTo(file), &error);
    DrawTriangle(device.get());
    EXPECT_FALSE(device->EndPage());
    ASSERT_EQ(WritePng(PlainOptions(), &whole), "");
    std::rewind(file);
    std::string bytes(whole.size() + 1, 0);
    bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file));
    std::fclose(file);
    EXPECT_EQ(bytes, whole);
}

} // namespace
} // namespace vxhost
