// What a library that is built without a system says where a program asks for one.
#include "tests/library/Support.h"

#include <cstdint>

namespace vxtest
{
namespace
{

TEST(Bare, NoFileCanBeOpened)
{
    vx_document *document = nullptr;
    vx_error error = kNoError;
    EXPECT_EQ(vx_document_open_file(SharedLibrary(), VX_SOURCE_DIR "/samples/gift.vx", &document, &error),
              VX_CANNOT_READ);
    EXPECT_EQ(std::string_view(error.text),
              VX_SOURCE_DIR "/samples/gift.vx: this library is built without files: open its bytes");
    EXPECT_EQ(document, nullptr);
}

TEST(Bare, ThereIsNoOtherProcess)
{
    vx_library *library = nullptr;
    ASSERT_EQ(vx_library_create(VX_INTERFACE, &library, nullptr), VX_OK);
    vx_isolated request = {};
    request.size = sizeof request;
    request.bytes = "";
    request.format = "png";
    vx_error error = {sizeof error, VX_OK, ""};
    const auto write = [](void *, const void *, size_t) { return 0; };
    EXPECT_EQ(vx_render_isolated(library, &request, write, nullptr, &error), VX_NOT_ISOLATED);
    EXPECT_STREQ(error.text, "this library is built without processes: call vx_document_render");
    vx_library_free(library);
}

TEST(Bare, NothingIsChosenAboutAMachine)
{
    EXPECT_EQ(vx_library_option_count(), 0U);
    vx_error error = kNoError;
    EXPECT_EQ(vx_library_set(SharedLibrary(), "font-dir", "/", &error), VX_WRONG_OPTION);
    EXPECT_STREQ(error.text,
                 "font-dir: no option of a library: this one is built without files and has none");
}

TEST(Bare, ThereAreNoFontsButThoseGiven)
{
    const OwnedLibrary library = MakeLibrary();
    size_t count = 0;
    EXPECT_EQ(vx_library_font_count(library.get(), &count, nullptr), VX_OK);
    EXPECT_EQ(count, 1U); // which stands for boxes
    vx_font_entry entry = {};
    entry.size = sizeof entry;
    EXPECT_EQ(vx_library_font_at(library.get(), 0, &entry, nullptr), VX_OK);
    EXPECT_STREQ(entry.postscript, "VXBoxes");
}

TEST(Bare, AProfileInAFileIsNotThere)
{
    const OwnedDocument document = OpenBytes(LeftHalf());
    Set(document.get(), "profile", VX_SOURCE_DIR "/devices/colour/profiles/fogra39.icc");
    std::string bytes;
    vx_error error = kNoError;
    EXPECT_EQ(vx_document_render(document.get(), "png", AppendBytes, &bytes, &error), VX_WRONG_OPTION);
    EXPECT_TRUE(std::string_view(error.text).ends_with("cannot be read as an ICC profile")) << error.text;
}

} // namespace
} // namespace vxtest
