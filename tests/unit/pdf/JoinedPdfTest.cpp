// Tests what becomes of files of one page in one file, as another program reads it, and of parts that are damaged in any place.
#include "devices/pdf/JoinedPdf.h"

#include "tests/unit/pdf/DrawnPage.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace vxhost;
using namespace vxhost::pdf;
using namespace vxtest;

namespace
{

const Layer kGround = {"Ground"};
const SpotInk kRed = {"Red", {0, 1, 1, 0}};

std::string PageOf(double side, const char *title)
{
    Page page;
    page.box = {0, 0, side, side};
    page.title = title;
    const auto draw = [&](Device &device) {
        device.BeginLayer(kGround);
        Paint paint;
        paint.colour = {ColourSpace::Cmyk, {0, 1, 1, 0}, {{{&kRed, 1}, {}}}};
        device.FillPath(Rectangle(0, 0, side, 9), paint);
        device.EndLayer();
    };
    return DrawnPage(draw, {}, page).bytes;
}

struct Joined {
    bool isWhole = true;
    std::string bytes;
};

Joined Join(const std::vector<std::string> &files)
{
    std::string all;
    for (const std::string &file : files)
        all += file;
    Joined joined;
    JoinedPdf pdf(
        [&](std::span<const std::byte> part) {
            joined.bytes.append(reinterpret_cast<const char *>(part.data()), part.size());
            return Failure();
        },
        [&](uint64_t from, size_t count) { return from < all.size() ? all.substr(from, count) : ""; });
    uint64_t from = 0;
    for (const std::string &file : files) {
        joined.isWhole = joined.isWhole && pdf.Add(from, file.size(), "(Page)");
        from += file.size();
    }
    if (joined.isWhole) {
        EXPECT_FALSE(pdf.Finish());
    }
    return joined;
}

TEST(JoinedPdfTest, HasAPageOfEachFile)
{
    const Joined joined = Join({PageOf(100, "One"), PageOf(50, "Two")});
    ASSERT_TRUE(joined.isWhole);
    QPDF file;
    file.processMemoryFile("joined", joined.bytes.data(), joined.bytes.size());
    std::vector<QPDFObjectHandle> pages = file.getAllPages();
    ASSERT_EQ(pages.size(), 2U);
    EXPECT_EQ(pages[0].getKey("/MediaBox").unparse(), "[ 0 0 100 100 ]");
    EXPECT_EQ(pages[1].getKey("/MediaBox").unparse(), "[ 0 0 50 50 ]");
    EXPECT_EQ(file.getTrailer().getKey("/Info").getKey("/Title").unparse(), "(One)");
    const auto spaceOf = [&](size_t page) {
        return pages[page].getKey("/Resources").getKey("/ColorSpace").getKey("/Spot1").getObjGen();
    };
    EXPECT_EQ(spaceOf(0), spaceOf(1)) << "an ink is one object";
    QPDFObjectHandle layers = file.getRoot().getKey("/OCProperties");
    EXPECT_EQ(layers.getKey("/OCGs").getArrayNItems(), 2) << "a layer is one object a page";
    EXPECT_EQ(layers.getKey("/D").getKey("/Order").getArrayItem(1).getArrayItem(0).getUTF8Value(), "(Page)");
    QPDFObjectHandle outlines = file.getRoot().getKey("/Outlines");
    EXPECT_EQ(outlines.getKey("/Count").getIntValue(), 2);
    EXPECT_EQ(outlines.getKey("/First").getKey("/Title").getUTF8Value(), "(Page)");
    EXPECT_EQ(outlines.getKey("/First").getKey("/Next").getKey("/Dest").getArrayItem(0).getObjGen(),
              pages[1].getObjGen());
}

TEST(JoinedPdfTest, RefusesFilesThatAreCutOff)
{
    const std::string whole = PageOf(100, "One");
    for (size_t size = 0; size + 10 < whole.size();
         ++size) // behind the table's place comes nothing that is needed
        EXPECT_FALSE(Join({whole.substr(0, size)}).isWhole) << size;
}

TEST(JoinedPdfTest, LivesThroughDamage)
{
    const std::string whole = PageOf(100, "One");
    size_t refused = 0;
    for (size_t place = 0; place < whole.size(); ++place) {
        for (const char character : {'(', '<', '9', '\0'}) {
            std::string damaged = whole;
            damaged[place] = character;
            refused += Join({damaged, whole}).isWhole ? 0 : 1;
        }
    }
    EXPECT_GT(refused, whole.size()) << "most of a small file is structure";
}

struct ValueCase {
    const char *text, *renumbered; // null: refused. Each number becomes ten times as large
};

const ValueCase kValues[] = {
    {"12 0 R", "120 0 R"},
    {"<</A 1 0 R/B[2 0 R 3 0 R]>>", "<</A 10 0 R/B[20 0 R 30 0 R]>>"},
    {"[1 0 0 1]", "[1 0 0 1]"},
    {"[(1 0 R\\) 2 0 R)/F1 3 0 R]", "[(1 0 R\\) 2 0 R)/F1 30 0 R]"},
    {"[/F1 0 Rest]", "[/F1 0 Rest]"},
    {"<31203020 52>", "<31203020 52>"},
    {"[7 0 R]", nullptr}, // is not known
    {"[1 0 R", nullptr},
    {"<</A 1 0 R]", nullptr},
    {"(1 0 R", nullptr},
    {"1 0 R 2 0 R", nullptr},
    {"", nullptr},
    {")", nullptr},
};

TEST(PdfTextTest, RenumbersReferencesAlone)
{
    for (const ValueCase &row : kValues) {
        const auto found = Renumbered(row.text, [](uint32_t number) {
            return number == 7 ? std::optional<Reference>() : Reference{10 * number};
        });
        ASSERT_EQ(found.has_value(), row.renumbered != nullptr) << row.text;
        EXPECT_EQ(found.value_or(""), row.renumbered == nullptr ? "" : row.renumbered);
    }
}

TEST(PdfTextTest, RefusesWhatIsNestedWithoutEnd)
{
    EXPECT_FALSE(Renumbered(std::string(100000, '['), [](uint32_t) { return Reference(); }));
}

} // namespace
