// Each allocation of a document's way to its output fails in turn, whoever makes it: the output is what it always is, or
// the lack of memory is told.
#include "devices/pdf/PdfDevice.h"
#include "devices/raster/RasterDevice.h"
#include "devices/svg/SvgDevice.h"
#include "host/CappedHeap.h"
#include "host/fonts/FontconfigFonts.h"
#include "host/fonts/GivenFonts.h"
#include "host/reading/Reading.h"
#include "tests/memory/FailingMalloc.h"
#include "tests/support/CaseName.h"
#include "tests/support/Packed.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <memory>
#include <new>
#include <optional>
#include <span>
#include <string>

namespace vxhost
{
namespace
{

using vxtest::AllocationsOf;
using vxtest::FailingMalloc;
using vxtest::MallocFailure;

Installation Install(const FontSources &sources)
{
    std::string error;
    return {Plugin::Load(VX_PLUGIN_PATH, &error), MakeFontconfigFonts(sources)};
}

const Installation &OpenTypeFonts()
{
    static const Installation installation = Install({});
    return installation;
}

// Fonts that FreeType opens in the host as well.
const Installation &Type1Fonts()
{
    static const Installation installation = Install({false, {"/usr/share/fonts/type1/urw-base35"}});
    return installation;
}

using Maker = std::function<std::unique_ptr<Device>(ByteSink, std::string *)>;

std::unique_ptr<Device> MakePng(ByteSink sink, std::string *error)
{
    RasterOptions options;
    options.dpi = 18;
    options.samples = 1;
    return MakePngDevice(options, std::move(sink), error);
}
std::unique_ptr<Device> MakeSvg(ByteSink sink, std::string *error)
{
    return MakeSvgDevice({}, std::move(sink), error);
}
std::unique_ptr<Device> MakePdf(ByteSink sink, std::string *error)
{
    return MakePdfDevice({}, std::move(sink), error);
}
// This one reads and describes a profile.
std::unique_ptr<Device> MakePdfX(ByteSink sink, std::string *error)
{
    PdfOptions options;
    options.standard = PdfX::X1a;
    options.profile = VX_SOURCE_DIR "/devices/colour/profiles/fogra39.icc";
    options.date = 0;
    return MakePdfDevice(options, std::move(sink), error);
}

struct Drawn {
    bool lacksMemory = false; // and it was told
    std::string error;        // anything else that was told
    std::string bytes;
};

Drawn Draw(const Document &document, const Installation &installation, const Maker &make)
{
    Drawn drawn;
    const ByteSink sink = [&drawn](std::span<const std::byte> bytes) {
        drawn.bytes.append(reinterpret_cast<const char *>(bytes.data()), bytes.size());
        return Failure{};
    };
    try {
        const std::unique_ptr<Device> device = make(sink, &drawn.error);
        if (device == nullptr)
            return drawn;
        Reading reading(installation, document, {});
        Page page = reading.PageFor();
        if (page.box.Width() <= 0) // the header was not read
            page.box = {0, 0, 100, 100};
        const Outcome outcome = reading.Draw(page, *device);
        drawn.lacksMemory =
            outcome.result == kVXOutOfMemory || outcome.failure.kind == FailureKind::OutOfMemory;
        if (outcome.result != kVXOk)
            drawn.error = "result " + std::to_string(outcome.result);
        if (outcome.failure)
            drawn.error += "failure " + outcome.failure.text;
    } catch (const std::bad_alloc &) {
        drawn.lacksMemory = true;
    }
    return drawn;
}

struct MemoryCase {
    const char *name, *sample;
    std::unique_ptr<Device> (*make)(ByteSink, std::string *);
    const Installation &(*fonts)() = OpenTypeFonts;
};

void PrintTo(const MemoryCase &memoryCase, std::ostream *to)
{
    *to << memoryCase.name;
}

class OutOfMemory : public testing::TestWithParam<MemoryCase>
{
};

// Where VX_SLOW is set every allocation fails; else the first ones, in which things are opened, and some of the rest.
uint64_t StepAfter(uint64_t number, uint64_t count)
{
    constexpr uint64_t kFirst = 100, kOthers = 100;
    const char *slow = std::getenv("VX_SLOW");
    const bool isSlow = slow != nullptr && std::string_view(slow) == "1";
    return isSlow || number < kFirst ? 1 : 1 + count / kOthers;
}

TEST_P(OutOfMemory, IsToldOrHasNoEffect)
{
    if (!vxtest::CanMallocFail())
        GTEST_SKIP() << "a sanitizer has its own malloc";
    std::string error;
    const auto document =
        Document::Open(std::string(VX_SOURCE_DIR "/samples/") + GetParam().sample + ".vx", &error);
    ASSERT_NE(document, nullptr) << error;
    const Maker make = GetParam().make;
    (void)Draw(*document, GetParam().fonts(), make); // what a process makes only once is made here
    uint64_t count = 0;
    std::string whole;
    {
        const MallocFailure none(0, FailingMalloc::Once, AllocationsOf::All);
        const Drawn drawn = Draw(*document, GetParam().fonts(), make);
        count = MallocFailure::Count();
        ASSERT_FALSE(drawn.lacksMemory);
        ASSERT_EQ(drawn.error, "");
        whole = drawn.bytes;
    }
    uint64_t told = 0;
    for (const FailingMalloc how : {FailingMalloc::Once, FailingMalloc::FromThenOn}) {
        for (uint64_t number = 1; number <= count; number += StepAfter(number, count)) {
            std::optional<MallocFailure> failure(std::in_place, number, how, AllocationsOf::All);
            const Drawn drawn = Draw(*document, GetParam().fonts(), make);
            failure.reset();
            told += drawn.lacksMemory ? 1 : 0;
            EXPECT_TRUE(drawn.lacksMemory || (drawn.error.empty() && drawn.bytes == whole))
                << "allocation " << number << " of " << count
                << (how == FailingMalloc::Once ? "" : " and all after it") << ": \"" << drawn.error << "\", "
                << drawn.bytes.size() << " bytes instead of " << whole.size();
        }
    }
    EXPECT_GT(told, 0U);
    RecordProperty("allocations", static_cast<int>(count));
}

const MemoryCase kCases[] = {
    {"RomanPng", "text-point", MakePng},
    {"RomanSvg", "text-point", MakeSvg},
    {"RomanPdf", "text-point", MakePdf},
    {"JapanesePng", "text-japanese", MakePng},
    {"JapaneseSvg", "text-japanese", MakeSvg},
    {"JapanesePdf", "text-japanese", MakePdf},
    {"ColumnsPng", "text-vertical", MakePng},
    {"ColumnsSvg", "text-vertical", MakeSvg},
    {"ColumnsPdf", "text-vertical", MakePdf},
    {"GradientsPng", "gradients", MakePng},
    {"GradientsSvg", "gradients", MakeSvg},
    {"GradientsPdf", "gradients", MakePdf},
    {"Type1Png", "text-point", MakePng, Type1Fonts},
    {"Type1Pdf", "text-point", MakePdf, Type1Fonts},
    {"OverprintPdfX", "overprint", MakePdfX},
};

// The machine has no memory, though the limit is not reached.
TEST(CappedHeapWithoutMemory, RefusesAndRemembers)
{
    if (!vxtest::CanMallocFail())
        GTEST_SKIP() << "a sanitizer has its own malloc";
    CappedHeap heap(1000);
    std::optional<MallocFailure> failure(std::in_place, 1, FailingMalloc::Once, AllocationsOf::All);
    void *none = heap.Procs()->allocate(10, heap.Procs()->refcon);
    failure.reset();
    EXPECT_EQ(none, nullptr);
    EXPECT_TRUE(heap.HasRefused());
    EXPECT_FALSE(heap.WasLimitHit());
    EXPECT_EQ(heap.HeldBytes(), 0);
}

// A machine whose fonts cannot be listed is not taken for one without fonts.
TEST(FontconfigWithoutMemory, IsTold)
{
    if (!vxtest::CanMallocFail())
        GTEST_SKIP() << "a sanitizer has its own malloc";
    const MallocFailure failure(1, FailingMalloc::FromThenOn, AllocationsOf::C);
    EXPECT_THROW((void)MakeFontconfigFonts(), std::bad_alloc);
}

// Nor does a font from memory lose what there was no memory to read.
TEST(GivenFontsWithoutMemory, AreWholeOrTold)
{
    if (!vxtest::CanMallocFail())
        GTEST_SKIP() << "a sanitizer has its own malloc";
    for (const char *path : {"/usr/share/fonts/opentype/urw-base35/C059-Bold.otf",
                             "/usr/share/fonts/opentype/ipafont-gothic/ipag.ttf"}) {
        const SharedFontBytes bytes = FontBytes::Open(path);
        ASSERT_NE(bytes, nullptr) << path;
        std::vector<FontCandidate> whole;
        ReadGivenFont(bytes, &whole);
        ASSERT_EQ(whole.size(), 1U);
        uint64_t told = 0, count = 1;
        for (uint64_t number = 0; number <= count; ++number) { // with 0 none fails, and they are counted
            std::vector<FontCandidate> read;
            bool isTold = false;
            {
                const MallocFailure failure(number, FailingMalloc::Once, AllocationsOf::All);
                try {
                    ReadGivenFont(bytes, &read);
                } catch (const std::bad_alloc &) {
                    isTold = true;
                }
                count = number == 0 ? MallocFailure::Count() : count;
            }
            told += isTold ? 1 : 0;
            if (isTold)
                continue;
            ASSERT_EQ(read.size(), 1U) << "allocation " << number << " of " << count;
            EXPECT_EQ(read[0].entry.postScriptName, whole[0].entry.postScriptName) << number;
            EXPECT_EQ(read[0].entry.familyName, whole[0].entry.familyName) << number;
            EXPECT_EQ(read[0].entry.scripts, whole[0].entry.scripts) << number;
            EXPECT_EQ(read[0].entry.style.weight, whole[0].entry.style.weight) << number;
        }
        EXPECT_GT(told, 10U) << path;
    }
}

// A document that is packed comes out whole, or the lack of memory is told.
TEST(UnpackingWithoutMemory, IsWholeOrTold)
{
    if (!vxtest::CanMallocFail())
        GTEST_SKIP() << "a sanitizer has its own malloc";
    const std::string text(5000000, 'x');
    for (const std::string &packed : {vxtest::Gzip(text), vxtest::Xz(text), vxtest::Gzip(vxtest::Xz(text))}) {
        std::string error;
        const auto document = Document::FromMemory(std::as_bytes(std::span(packed)), &error);
        uint64_t told = 0, count = 1;
        for (uint64_t number = 0; number <= count; ++number) { // with 0 none fails, and they are counted
            std::unique_ptr<const Unpacked> unpacked;
            {
                const MallocFailure failure(number, FailingMalloc::Once, AllocationsOf::All);
                try {
                    unpacked = Unpack(*document, {}, nullptr);
                } catch (const std::bad_alloc &) {
                    ++told;
                }
                count = number == 0 ? MallocFailure::Count() : count;
            }
            if (unpacked == nullptr)
                continue;
            ASSERT_NE(unpacked->document, nullptr) << "allocation " << number << " of " << count;
            EXPECT_EQ(unpacked->document->Bytes().size(), text.size()) << number;
            EXPECT_EQ(unpacked->damage, "") << number;
        }
        EXPECT_GT(told, 5U);
    }
}

INSTANTIATE_TEST_SUITE_P(Documents, OutOfMemory, testing::ValuesIn(kCases), vxtest::CaseName());

} // namespace
} // namespace vxhost
