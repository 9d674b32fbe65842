// The file: read back by libpng, it has the pixels of the picture, and it says what it is.
#include "tests/unit/raster/Canvas.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <new>
#include <png.h>

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

void DrawTriangle(Device *device)
{
    device->BeginPage({{0, 0, 48, 36}, "Caf\xC3\xA9", ""});
    device->FillPath(kTriangle, Orange());
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

class Png : public testing::TestWithParam<bool>
{
};

TEST_P(Png, HasThePixelsOfThePicture)
{
    RasterOptions options = PlainOptions();
    const bool alpha = GetParam();
    if (alpha)
        options.background.reset();
    std::string bytes;
    ASSERT_EQ(WritePng(options, &bytes), "");
    const PngFile file(bytes);

    Picture picture;
    std::string error;
    const auto device = MakePictureDevice(options, &picture, &error);
    DrawTriangle(device.get());
    ASSERT_FALSE(device->EndPage());

    ASSERT_EQ(png_get_image_width(file.png, file.info), 48U);
    ASSERT_EQ(png_get_image_height(file.png, file.info), 36U);
    ASSERT_EQ(png_get_color_type(file.png, file.info), alpha ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB);
    const size_t channels = alpha ? 4 : 3;
    for (size_t row = 0; row < 36; ++row) {
        const png_bytep pixels = png_get_rows(file.png, file.info)[row];
        for (size_t column = 0; column < 48; ++column) {
            for (size_t i = 0; i < channels; ++i)
                ASSERT_EQ(pixels[column * channels + i], picture.rgba[(row * 48 + column) * 4 + i]);
        }
    }
}
INSTANTIATE_TEST_SUITE_P(Raster, Png, testing::Bool(),
                         [](const auto &test) { return test.param ? "WithAlpha" : "WithoutAlpha"; });

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
