// Tests that a call with a wrong argument is told, and changes nothing.
#include "tests/library/Support.h"
#include "tests/support/CaseName.h"

#include <cmath>
#include <cstring>

namespace vxtest
{
namespace
{

struct WrongCase {
    const char *name;
    vx_status (*call)(vx_error *error);
    const char *told; // a part of the text
};

void PrintTo(const WrongCase &wrong, std::ostream *to)
{
    *to << wrong.name;
}

class WrongCall : public testing::TestWithParam<WrongCase>
{
};

TEST_P(WrongCall, IsTold)
{
    vx_error error = kNoError;
    EXPECT_EQ(GetParam().call(&error), VX_WRONG_ARGUMENT);
    EXPECT_EQ(error.status, VX_WRONG_ARGUMENT);
    EXPECT_NE(std::strstr(error.text, GetParam().told), nullptr) << error.text;
    EXPECT_EQ(GetParam().call(nullptr), VX_WRONG_ARGUMENT); // nobody needs to be told
}

vx_document *Open()
{
    static const OwnedDocument document = OpenBytes(LeftHalf());
    return document.get();
}

constexpr const char *kNotUtf8 = "\xC3(";

// Makes a record that says that it is so much longer than it is.
template <typename Record>
Record Longer(int by = 0)
{
    Record record = {};
    record.size = sizeof record + static_cast<size_t>(by);
    return record;
}

vx_status DrawPixels(vx_pixels pixels, vx_error *error)
{
    static uint8_t rows[4 * 4 * 4];
    pixels.size = sizeof pixels;
    pixels.top_row = rows;
    return vx_document_pixels(Open(), &pixels, error);
}

const WrongCase kWrong[] = {
    {"CreateNowhere", [](vx_error *error) { return vx_library_create(VX_INTERFACE, nullptr, error); },
     "library is null"},
    {"CreateForAnotherInterface",
     [](vx_error *error) {
         auto *library = reinterpret_cast<vx_library *>(1);
         const vx_status status = vx_library_create(VX_INTERFACE + 1, &library, error);
         EXPECT_EQ(library, nullptr);
         return status;
     },
     "vx.h"},
    {"SetNoLibrary", [](vx_error *error) { return vx_library_set(nullptr, "font-dir", "/", error); },
     "library is null"},
    {"SetLibraryTooLate",
     [](vx_error *error) {
         size_t count = 0;
         (void)vx_library_font_count(SharedLibrary(), &count, nullptr);
         return vx_library_set(SharedLibrary(), "system-fonts", "no", error);
     },
     "too late"},
    {"SetLibraryNotUtf8",
     [](vx_error *error) { return vx_library_set(SharedLibrary(), "font-dir", kNotUtf8, error); },
     "not UTF-8"},
    {"MapNoName",
     [](vx_error *error) { return vx_library_map_font(SharedLibrary(), nullptr, "C059-Bold", error); },
     "asked is null"},
    {"MapAnEmptyName",
     [](vx_error *error) { return vx_library_map_font(SharedLibrary(), "", "C059-Bold", error); },
     "asked has 0 bytes"},
    {"MapNotUtf8",
     [](vx_error *error) { return vx_library_map_font(SharedLibrary(), "Frutiger", kNotUtf8, error); },
     "served is \"\\xC3(\", which is not UTF-8"},
    {"MapALongName",
     [](vx_error *error) {
         return vx_library_map_font(SharedLibrary(), "Frutiger", std::string(256, 'x').c_str(), error);
     },
     "served has 256 bytes"},
    {"MapOfNoLibrary",
     [](vx_error *error) { return vx_library_map_font(nullptr, "Frutiger", "C059-Bold", error); },
     "library is null"},
    {"ProfileOfNoLibrary",
     [](vx_error *error) { return vx_library_add_profile(nullptr, "press", "x", 1, error); },
     "library is null"},
    {"ProfileOfNoBytes",
     [](vx_error *error) { return vx_library_add_profile(SharedLibrary(), "press", nullptr, 1, error); },
     "bytes is null"},
    {"ProfileOfNoName",
     [](vx_error *error) { return vx_library_add_profile(SharedLibrary(), nullptr, "x", 1, error); },
     "name is null"},
    {"ProfileNotUtf8",
     [](vx_error *error) { return vx_library_add_profile(SharedLibrary(), kNotUtf8, "x", 1, error); },
     "not UTF-8"},
    {"LibraryOptionNowhere", [](vx_error *error) { return vx_library_option_at(0, nullptr, error); },
     "option is null"},
    {"LibraryOptionOfWrongSize",
     [](vx_error *error) {
         auto option = Longer<vx_option>(8);
         return vx_library_option_at(0, &option, error);
     },
     "sizeof(vx_option)"},
    {"LibraryOptionBeyondTheLast",
     [](vx_error *error) {
         auto option = Longer<vx_option>();
         return vx_library_option_at(vx_library_option_count(), &option, error);
     },
     "below the count"},
    {"CountFontsNowhere",
     [](vx_error *error) { return vx_library_font_count(SharedLibrary(), nullptr, error); }, "count is null"},
    {"FontOfNoLibrary",
     [](vx_error *error) {
         auto entry = Longer<vx_font_entry>();
         return vx_library_font_at(nullptr, 0, &entry, error);
     },
     "library is null"},
    {"FontOfWrongSize",
     [](vx_error *error) {
         auto entry = Longer<vx_font_entry>(1);
         return vx_library_font_at(SharedLibrary(), 0, &entry, error);
     },
     "sizeof(vx_font_entry)"},
    {"FontBeyondTheLast",
     [](vx_error *error) {
         auto entry = Longer<vx_font_entry>();
         return vx_library_font_at(SharedLibrary(), size_t{1} << 40, &entry, error);
     },
     "below the count"},
    {"FormatNowhere", [](vx_error *error) { return vx_format_at(0, nullptr, error); }, "format is null"},
    {"FormatOfWrongSize",
     [](vx_error *error) {
         auto format = Longer<vx_format>(-1);
         return vx_format_at(0, &format, error);
     },
     "sizeof(vx_format)"},
    {"FormatBeyondTheLast",
     [](vx_error *error) {
         auto format = Longer<vx_format>();
         return vx_format_at(vx_format_count(), &format, error);
     },
     "below the count"},
    {"OptionOfWrongSize",
     [](vx_error *error) {
         auto option = Longer<vx_option>(-1);
         return vx_option_at(0, &option, error);
     },
     "sizeof(vx_option)"},
    {"OptionBeyondTheLast",
     [](vx_error *error) {
         auto option = Longer<vx_option>();
         return vx_option_at(vx_option_count(), &option, error);
     },
     "below the count"},
    {"InksNowhere", [](vx_error *error) { return vx_document_inks(Open(), nullptr, error); }, "inks is null"},
    {"InksOfWrongSize",
     [](vx_error *error) {
         auto inks = Longer<vx_inks>(8);
         return vx_document_inks(Open(), &inks, error);
     },
     "sizeof(vx_inks)"},
    {"InksOfNoPixels",
     [](vx_error *error) {
         auto inks = Longer<vx_inks>();
         return vx_document_inks(Open(), &inks, error);
     },
     "the pixels are 0 by 0"},
    {"ObjectNowhere", [](vx_error *error) { return vx_document_object_at(Open(), 0, 0, 1, nullptr, error); },
     "json is null"},
    {"ObjectAtNoPoint",
     [](vx_error *error) {
         const char *json;
         return vx_document_object_at(Open(), NAN, 0, 1, &json, error);
     },
     "no such point"},
    {"ObjectWithinNothing",
     [](vx_error *error) {
         const char *json;
         return vx_document_object_at(Open(), 0, 0, 0, &json, error);
     },
     "within above 0"},
    {"PlatesForNobody",
     [](vx_error *error) { return vx_document_plates(Open(), "png", nullptr, nullptr, error); },
     "take is null"},
    {"CoverageNowhere",
     [](vx_error *error) { return vx_document_coverage(Open(), 300, nullptr, nullptr, nullptr, error); },
     "json is null"},
    {"CoverageAboveNothing",
     [](vx_error *error) {
         const char *json;
         return vx_document_coverage(Open(), 0, &json, nullptr, nullptr, error);
     },
     "give one as 300"},
    {"CheckNowhere", [](vx_error *error) { return vx_document_check(Open(), nullptr, error); },
     "check is null"},
    {"CheckOfWrongSize",
     [](vx_error *error) {
         auto check = Longer<vx_check>(8);
         return vx_document_check(Open(), &check, error);
     },
     "sizeof(vx_check)"},
    {"OpenFileNowhere",
     [](vx_error *error) { return vx_document_open_file(SharedLibrary(), "a.vx", nullptr, error); },
     "document is null"},
    {"OpenNoFile",
     [](vx_error *error) {
         vx_document *document;
         return vx_document_open_file(SharedLibrary(), nullptr, &document, error);
     },
     "path is null"},
    {"OpenFileNotUtf8",
     [](vx_error *error) {
         vx_document *document;
         return vx_document_open_file(SharedLibrary(), kNotUtf8, &document, error);
     },
     "path is \"\\xC3(\", which is not UTF-8"},
    {"OpenBytesOfNoLibrary",
     [](vx_error *error) {
         vx_document *document;
         return vx_document_open_bytes(nullptr, "x", 1, VX_COPY, &document, error);
     },
     "library is null"},
    {"OpenNoBytes",
     [](vx_error *error) {
         vx_document *document;
         return vx_document_open_bytes(SharedLibrary(), nullptr, 1, VX_COPY, &document, error);
     },
     "bytes is null"},
    {"OpenBytesInNoWay",
     [](vx_error *error) {
         vx_document *document;
         return vx_document_open_bytes(SharedLibrary(), "x", 1, 2, &document, error);
     },
     "VX_COPY"},
    {"OpenTooManyBytes",
     [](vx_error *error) {
         vx_document *document; // the bytes are not looked at
         return vx_document_open_bytes(SharedLibrary(), "x", size_t{1} << 31, VX_COPY, &document, error);
     },
     "2147483647"},
    {"SetNoDocument", [](vx_error *error) { return vx_document_set(nullptr, "dpi", "72", error); },
     "document is null"},
    {"SetNoName", [](vx_error *error) { return vx_document_set(Open(), nullptr, "72", error); },
     "name is null"},
    {"SetNotUtf8", [](vx_error *error) { return vx_document_set(Open(), "profile", kNotUtf8, error); },
     "value is \"\\xC3(\", which is not UTF-8"},
    {"FactsOfWrongSize",
     [](vx_error *error) {
         auto facts = Longer<vx_facts>(-8);
         return vx_document_facts(Open(), &facts, error);
     },
     "sizeof(vx_facts)"},
    {"JsonNowhere", [](vx_error *error) { return vx_document_json(Open(), nullptr, error); }, "json is null"},
    {"TextsNowhere", [](vx_error *error) { return vx_document_texts(Open(), nullptr, nullptr, error); },
     "found is null"},
    {"TextsOfNoDocument",
     [](vx_error *error) {
         return vx_document_texts(
             nullptr, [](void *, const char *, const char *) { return 0; }, nullptr, error);
     },
     "document is null"},
    {"ProgressOfNoDocument",
     [](vx_error *error) { return vx_document_set_progress(nullptr, nullptr, nullptr, error); },
     "document is null"},
    {"SizeNowhere",
     [](vx_error *error) {
         int32_t width;
         return vx_document_size(Open(), &width, nullptr, error);
     },
     "height is null"},
    {"RenderNoFormat",
     [](vx_error *error) { return vx_document_render(Open(), nullptr, AppendBytes, nullptr, error); },
     "format is null"},
    {"RenderNowhere",
     [](vx_error *error) { return vx_document_render(Open(), "svg", nullptr, nullptr, error); },
     "write is null"},
    {"NoPixels", [](vx_error *error) { return vx_document_pixels(Open(), nullptr, error); },
     "pixels is null"},
    {"PixelsOfWrongSize",
     [](vx_error *error) {
         auto pixels = Longer<vx_pixels>(8);
         return vx_document_pixels(Open(), &pixels, error);
     },
     "sizeof(vx_pixels)"},
    {"PixelsWithoutWidth",
     [](vx_error *error) {
         return DrawPixels({0, 0, 0, 0, 0, 0, 4, nullptr, 16}, error);
     },
     "0 by 4"},
    {"PixelsTooHigh",
     [](vx_error *error) {
         return DrawPixels({0, 0, 0, 0, 0, 4, 131073, nullptr, 16}, error);
     },
     "131073"},
    {"PixelsOfRowsThatOverlap",
     [](vx_error *error) {
         return DrawPixels({0, 0, 0, 0, 0, 4, 4, nullptr, -15}, error);
     },
     "the stride is -15"},
    {"PixelsOfAnEmptyBox",
     [](vx_error *error) {
         return DrawPixels({0, 1, 1, 1, 9, 4, 4, nullptr, 16}, error);
     },
     "empty"},
    {"DrawIntoNothing", [](vx_error *error) { return vx_document_draw(Open(), nullptr, error); },
     "device is null"},
    {"DrawIntoALaterDevice",
     [](vx_error *error) {
         auto device = Longer<vx_device>(sizeof(void *));
         return vx_document_draw(Open(), &device, error);
     },
     "sizeof(vx_device)"},
    {"DrawIntoHalfAProcedure",
     [](vx_error *error) {
         auto device = Longer<vx_device>(-1);
         return vx_document_draw(Open(), &device, error);
     },
     "sizeof(vx_device)"},
    {"OutlineOfNoFont",
     [](vx_error *error) {
         vx_path path;
         return vx_font_outline(nullptr, 1, &path, error);
     },
     "font is null"},
    {"FontUseBeyondTheLast",
     [](vx_error *error) {
         auto use = Longer<vx_font_use>();
         return vx_document_font_at(Open(), vx_document_font_count(Open()), &use, error);
     },
     "below the count"},
};

INSTANTIATE_TEST_SUITE_P(Calls, WrongCall, testing::ValuesIn(kWrong), CaseName());

TEST(Errors, OfAnotherSizeAreNotWrittenTo)
{
    vx_error error = {sizeof error - 1, VX_BUSY, "as it was"};
    EXPECT_EQ(vx_document_set(Open(), "dpi", "72", &error), VX_WRONG_ARGUMENT);
    EXPECT_EQ(error.status, VX_BUSY);
    EXPECT_STREQ(error.text, "as it was");
}

TEST(Errors, AreGoneAfterACallThatDoesWell)
{
    vx_error error = {sizeof error, VX_BUSY, "as it was"};
    EXPECT_EQ(vx_document_set(Open(), "samples", "1", &error), VX_OK);
    EXPECT_EQ(error.status, VX_OK);
    EXPECT_STREQ(error.text, "");
}

TEST(Errors, ThatAreLongAreCutAtTheEndOfACharacter)
{
    std::string value = "x";
    for (int i = 0; i < 400; ++i)
        value += "\xC3\xA4"; // a with two dots
    vx_error error = kNoError;
    EXPECT_EQ(vx_document_set(Open(), "dpi", value.c_str(), &error), VX_WRONG_OPTION);
    const std::string_view text = error.text;
    EXPECT_GT(text.size(), sizeof error.text - 6);
    EXPECT_TRUE(text.ends_with("\xC3\xA4...")) << text;
}

TEST(Freeing, NothingIsAllowed)
{
    vx_library_free(nullptr);
    vx_document_free(nullptr);
    EXPECT_EQ(vx_document_warning_count(nullptr), 0U);
    EXPECT_EQ(vx_document_font_count(nullptr), 0U);
    EXPECT_EQ(vx_document_warning_at(nullptr, 0), nullptr);
}

} // namespace
} // namespace vxtest
