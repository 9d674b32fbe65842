// Each allocation of a program's calls of vx.h fails in turn: a call does all of its work, or says that memory ran out.
#include "tests/memory/FailingMalloc.h"

#include <vx.h>

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <string>

namespace
{

using vxtest::FailingMalloc;
using vxtest::MallocFailure;

struct Made {
    vx_status status = VX_OK;
    vx_error error = {sizeof error, VX_OK, ""};
    std::string bytes;
};

// A program keeps its output in room of its own, which it has before anything fails.
constexpr size_t kRoom = size_t{1} << 20;

Made Make(vx_library *library, const char *format)
{
    Made made;
    made.bytes.reserve(kRoom);
    vx_document *document = nullptr;
    const auto keep = [](void *to, const void *bytes, size_t size) {
        static_cast<std::string *>(to)->append(static_cast<const char *>(bytes), size);
        return 0;
    };
    made.status =
        vx_document_open_file(library, VX_SOURCE_DIR "/samples/text-point.vx", &document, &made.error);
    if (made.status == VX_OK)
        made.status = vx_document_set(document, "fit", "60", &made.error);
    if (made.status == VX_OK)
        made.status = vx_document_render(document, format, keep, &made.bytes, &made.error);
    vx_document_free(document);
    return made;
}

// The same in another process.
Made MakeIsolated(vx_library *library, const char *format)
{
    Made made;
    made.bytes.reserve(kRoom);
    const char *const options[] = {"fit", "60"};
    vx_isolated request = {};
    request.size = sizeof request;
    request.path = VX_SOURCE_DIR "/samples/text-point.vx";
    request.format = format;
    request.options = options;
    request.option_count = 1;
    const auto keep = [](void *to, const void *bytes, size_t size) {
        static_cast<std::string *>(to)->append(static_cast<const char *>(bytes), size);
        return 0;
    };
    made.status = vx_render_isolated(library, &request, keep, &made.bytes, &made.error);
    return made;
}

struct MakingCase {
    const char *name, *format;
    Made (*make)(vx_library *library, const char *format);
};

void PrintTo(const MakingCase &making, std::ostream *to)
{
    *to << making.name;
}

class InterfaceWithoutMemory : public testing::TestWithParam<MakingCase>
{
};

TEST_P(InterfaceWithoutMemory, IsToldOrHasNoEffect)
{
    const auto &[name, format, make] = GetParam();
    if (!vxtest::CanMallocFail())
        GTEST_SKIP() << "a sanitizer has its own malloc";
    vx_library *library = nullptr;
    ASSERT_EQ(vx_library_create(VX_INTERFACE, &library, nullptr), VX_OK);
    const Made whole = make(library, format); // what a process makes only once is made here
    ASSERT_EQ(whole.status, VX_OK) << whole.error.text;
    ASSERT_LT(whole.bytes.size(), kRoom);
    uint64_t count = 0;
    {
        const MallocFailure none(0, FailingMalloc::Once, vxtest::AllocationsOf::All);
        (void)make(library, format);
        count = MallocFailure::Count();
    }
    uint64_t told = 0;
    const uint64_t step = 1 + count / 400;
    for (const FailingMalloc how : {FailingMalloc::Once, FailingMalloc::FromThenOn}) {
        for (uint64_t number = 2; number <= count;
             number += number < 200 ? 1 : step) { // the first allocation is the room
            std::optional<MallocFailure> failure(std::in_place, number, how, vxtest::AllocationsOf::All);
            Made made = make(library, format);
            failure.reset();
            told += made.status == VX_OUT_OF_MEMORY ? 1 : 0;
            EXPECT_TRUE(made.status == VX_OUT_OF_MEMORY ||
                        (made.status == VX_OK && made.bytes == whole.bytes))
                << "allocation " << number << " of " << count << ": status " << made.status << ", \""
                << made.error.text << '"';
        }
    }
    EXPECT_GT(told, 0U);
    vx_library_free(library);
}

const MakingCase kMaking[] = {
    {"png", "png", Make}, {"svg", "svg", Make}, {"pdf", "pdf", Make}, {"isolated", "png", MakeIsolated}};

INSTANTIATE_TEST_SUITE_P(Formats, InterfaceWithoutMemory, testing::ValuesIn(kMaking),
                         [](const auto &tested) { return std::string(tested.param.name); });

// What a library is given.
struct GivingCase {
    const char *name;
    bool isBeforeFonts; // it comes before they are listed
    vx_status (*give)(vx_library *library, vx_error *error);
};

void PrintTo(const GivingCase &giving, std::ostream *to)
{
    *to << giving.name;
}

std::string ReadBytes(const char *path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// These are read before anything fails.
const std::string kFont = ReadBytes("/usr/share/fonts/opentype/urw-base35/C059-Bold.otf");
const std::string kProfile = ReadBytes(VX_SOURCE_DIR "/devices/colour/profiles/fogra39.icc");

const std::string kMapFile = [] {
    std::string path = testing::TempDir() + "vx-interface-test.map";
    std::ofstream(path) << "A name that is too long to be kept in place = C059-Bold\n";
    return path;
}();

const GivingCase kGiving[] = {
    {"Font", true,
     [](vx_library *library, vx_error *error) {
         return vx_library_add_font(library, kFont.data(), kFont.size(), error);
     }},
    {"FontMap", false,
     [](vx_library *library, vx_error *error) {
         return vx_library_map_font(library, "A name that is too long to be kept in place", "C059-Bold",
                                    error);
     }},
    {"FontMapFile", false,
     [](vx_library *library, vx_error *error) {
         return vx_library_set(library, "font-map", kMapFile.c_str(), error);
     }},
    {"Profile", false,
     [](vx_library *library, vx_error *error) {
         return vx_library_add_profile(library, "press", kProfile.data(), kProfile.size(), error);
     }},
    {"TemporaryFolder", false,
     [](vx_library *library, vx_error *error) {
         return vx_library_set(library, "temp-dir", VX_SOURCE_DIR "/samples", error);
     }},
};

class GivingWithoutMemory : public testing::TestWithParam<GivingCase>
{
};

vx_library *MakeLibraryForGiving(bool isBeforeFonts)
{
    vx_library *library = nullptr;
    size_t count = 0;
    EXPECT_EQ(vx_library_create(VX_INTERFACE, &library, nullptr), VX_OK);
    EXPECT_EQ(vx_library_set(library, "system-fonts", "no", nullptr), VX_OK);
    if (!isBeforeFonts) {
        EXPECT_EQ(vx_library_add_font(library, kFont.data(), kFont.size(), nullptr), VX_OK);
        EXPECT_EQ(vx_library_font_count(library, &count, nullptr), VX_OK);
    }
    return library;
}

// After the call that failed the same call does well.
TEST_P(GivingWithoutMemory, IsToldAndCanBeDoneAgain)
{
    if (!vxtest::CanMallocFail())
        GTEST_SKIP() << "a sanitizer has its own malloc";
    const auto &[name, isBeforeFonts, give] = GetParam();
    uint64_t told = 0, count = 1;
    for (uint64_t number = 0; number <= count; ++number) { // with 0 none fails, and they are counted
        vx_library *library = MakeLibraryForGiving(isBeforeFonts);
        vx_error error = {sizeof error, VX_OK, ""};
        std::optional<MallocFailure> failure(std::in_place, number, FailingMalloc::Once,
                                             vxtest::AllocationsOf::All);
        const vx_status status = give(library, &error);
        count = number == 0 ? MallocFailure::Count() : count;
        failure.reset();
        EXPECT_TRUE(status == VX_OUT_OF_MEMORY || status == VX_OK)
            << "allocation " << number << " of " << count << ": status " << status << ", \"" << error.text
            << '"';
        EXPECT_TRUE(status == VX_OK || number > 0);
        told += status == VX_OUT_OF_MEMORY ? 1 : 0;
        EXPECT_EQ(give(library, &error), VX_OK) << error.text;
        vx_library_free(library);
    }
    EXPECT_GT(count, 0U);
    EXPECT_GE(told + 5, count) << "few allocations are ones that nobody needs";
}

INSTANTIATE_TEST_SUITE_P(Given, GivingWithoutMemory, testing::ValuesIn(kGiving),
                         [](const auto &tested) { return std::string(tested.param.name); });

// Making a library, too.
TEST(InterfaceCreation, TellsTheLackOfMemory)
{
    if (!vxtest::CanMallocFail())
        GTEST_SKIP() << "a sanitizer has its own malloc";
    auto *library = reinterpret_cast<vx_library *>(1);
    vx_error error = {sizeof error, VX_OK, ""};
    std::optional<MallocFailure> failure(std::in_place, 1, FailingMalloc::Once, vxtest::AllocationsOf::All);
    const vx_status status = vx_library_create(VX_INTERFACE, &library, &error);
    failure.reset();
    EXPECT_EQ(status, VX_OUT_OF_MEMORY);
    EXPECT_EQ(library, nullptr);
    EXPECT_STREQ(error.text, "needs more memory than there is: free some, and call again");
}

} // namespace
