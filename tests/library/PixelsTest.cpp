// Tests that the pixels in the caller's buffer are those of the device for pictures, whatever the order of rows.
#include "devices/raster/RasterDevice.h"
#include "host/fonts/FontconfigFonts.h"
#include "host/reading/Reading.h"
#include "library/LinkedPlugin.h"
#include "tests/library/Support.h"

#include <vector>

namespace vxtest
{
namespace
{

constexpr int kWidth = 90, kHeight = 70;
constexpr ptrdiff_t kRowBytes = ptrdiff_t{4} * kWidth;

vx_status Draw(vx_document *document, uint8_t *topRow, ptrdiff_t stride, vx_error *error)
{
    const vx_pixels pixels = {sizeof pixels, 0, 0, 0, 0, kWidth, kHeight, topRow, stride};
    return vx_document_pixels(document, &pixels, error);
}

std::vector<uint8_t> PixelsOf(vx_document *document)
{
    std::vector<uint8_t> rgba(kRowBytes * kHeight, 1);
    vx_error error = kNoError;
    EXPECT_EQ(Draw(document, rgba.data(), kRowBytes, &error), VX_OK) << error.text;
    return rgba;
}

// Returns the pixels that the device itself draws.
std::vector<uint8_t> Expected(const std::string &sample, bool hasBackground)
{
    using namespace vxhost;
    static const Installation installation = {MakeLinkedPlugin(), MakeFontconfigFonts()};
    std::string error;
    const auto document = Document::Open(VX_SOURCE_DIR "/samples/" + sample + ".vx", &error);
    RasterOptions options;
    options.width = kWidth;
    options.height = kHeight;
    if (!hasBackground)
        options.background.reset();
    Picture picture;
    const auto device = MakePictureDevice(options, &picture, &error);
    Reading reading(installation, *document, {});
    EXPECT_EQ(reading.Draw(reading.PageFor(), *device).result, kVXOk);
    return picture.rgba;
}

TEST(Pixels, AreThoseOfTheDeviceForPictures)
{
    for (const char *sample : {"overprint", "gradients", "text-point", "text-vertical"}) {
        const OwnedDocument document = OpenSample(sample);
        EXPECT_EQ(PixelsOf(document.get()), Expected(sample, true)) << sample;
        Set(document.get(), "background", "none");
        EXPECT_EQ(PixelsOf(document.get()), Expected(sample, false)) << sample;
    }
}

TEST(Pixels, MayStandOnTheirHeadAndApart)
{
    const OwnedDocument document = OpenSample("overprint");
    const std::vector<uint8_t> expected = PixelsOf(document.get());
    constexpr ptrdiff_t kStride = kRowBytes + 7;
    constexpr uint8_t kUntouched = 77;
    std::vector<uint8_t> rows(kStride * kHeight, kUntouched);
    vx_error error = kNoError;
    ASSERT_EQ(Draw(document.get(), rows.data() + kStride * (kHeight - 1), -kStride, &error), VX_OK)
        << error.text;
    for (int y = 0; y < kHeight; ++y) {
        const uint8_t *row = rows.data() + kStride * (kHeight - 1 - y);
        EXPECT_TRUE(std::equal(row, row + kRowBytes, expected.begin() + y * kRowBytes)) << y;
        EXPECT_TRUE(std::all_of(row + kRowBytes, row + kStride, [](uint8_t byte) {
            return byte == kUntouched;
        })) << y;
    }
}

// The left half of the page is black. Of any box, also of an inverted one, the part that lies there has to be.
TEST(Pixels, ShowTheBoxThatIsAskedFor)
{
    const OwnedDocument document = OpenBytes(LeftHalf());
    Set(document.get(), "profile", "none");
    Set(document.get(), "width", "9"); // not looked at
    uint8_t rgba[4 * 2] = {};
    const vx_pixels pixels = {sizeof pixels, 54, 0, 18, 36, 2, 1, rgba, 8};
    vx_error error = kNoError;
    ASSERT_EQ(vx_document_pixels(document.get(), &pixels, &error), VX_OK) << error.text;
    EXPECT_EQ(std::vector<uint8_t>(rgba, rgba + 8), (std::vector<uint8_t>{0, 0, 0, 255, 255, 255, 255, 255}));
}

TEST(Pixels, ThatAreTooManyAreALimit)
{
    const OwnedDocument document = OpenBytes(LeftHalf());
    uint8_t none[4] = {};
    const vx_pixels pixels = {sizeof pixels, 0, 0, 0, 0, 131072, 131072, none, 131072 * 4};
    vx_error error = kNoError;
    EXPECT_EQ(vx_document_pixels(document.get(), &pixels, &error), VX_LIMIT);
}

} // namespace
} // namespace vxtest
