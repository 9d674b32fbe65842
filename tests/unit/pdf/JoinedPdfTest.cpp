// Tests what becomes of files of one page in one file, as another program reads it, and of parts that are damaged in any place.
#include "devices/pdf/JoinedPdf.h"
#include "devices/pdf/FontUse.h"
#include "tests/unit/pdf/DrawnPage.h"

#include <gtest/gtest.h>

#include <tuple>

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

// A page of these characters, each of which the glyph beside it stands for.
std::string PageOfText(const std::vector<std::pair<uint32_t, char32_t>> &characters, bool runsDown = false,
                       const char *file = "/usr/share/fonts/opentype/urw-base35/NimbusSans-Regular.otf")
{
    const TextFont font = {"Helvetica", "NimbusSans-Regular", FontBytes::Open(file), 0};
    GlyphRun run = {&font, {10, 0, 0, 10, 0, 0}, runsDown, false, {}};
    for (const auto &[glyph, character] : characters)
        run.glyphs.push_back({glyph, character, 1, {}});
    PdfOptions options;
    options.isToBeJoined = true;
    TextPaint paint;
    paint.fills = true;
    return DrawnPage([&](Device &device) { device.ShowText({&run, 1}, paint); }, options).bytes;
}

struct Joined {
    bool isWhole = true; // all of it could be read
    Failure failure;
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
        [&](uint64_t from, size_t count) { return from < all.size() ? all.substr(from, count) : ""; },
        Compression::None);
    uint64_t from = 0;
    for (const std::string &file : files) {
        joined.isWhole = joined.isWhole && pdf.Add(from, file.size(), "(Page)");
        from += file.size();
    }
    if (joined.isWhole)
        joined.failure = pdf.Finish();
    return joined;
}

TEST(JoinedPdfTest, HasAPageOfEachFile)
{
    const Joined joined = Join({PageOf(100, "One"), PageOf(50, "Two")});
    ASSERT_TRUE(joined.isWhole && !joined.failure);
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

// Tells what the pages of a file have as their font.
class JoinedText
{
  public:
    explicit JoinedText(const std::vector<std::string> &pages) : bytes_(Join(pages).bytes)
    {
        file_.processMemoryFile("joined", bytes_.data(), bytes_.size());
    }

    QPDFObjectHandle Font(size_t page)
    {
        std::vector<QPDFObjectHandle> pages = file_.getAllPages();
        return pages.at(page).getKey("/Resources").getKey("/Font").getKey("/F1");
    }
    QPDFObjectHandle Descendant(size_t page) { return Font(page).getKey("/DescendantFonts").getArrayItem(0); }
    std::string Characters(size_t page) { return StreamText(Font(page).getKey("/ToUnicode")); }

  private:
    std::string bytes_;
    QPDF file_;
};

// A and V are glyphs 34 and 55 of NimbusSans, and 667 wide.
TEST(JoinedFontsTest, AreThereOnceWithTheGlyphsOfAllPages)
{
    JoinedText joined({PageOfText({{55, 'V'}}), PageOfText({{34, 'A'}}), PageOfText({{34, 'A'}, {55, 'V'}})});
    EXPECT_EQ(joined.Descendant(0).getKey("/W").unparse(), "[ 34 [ 667 ] 55 [ 667 ] ]");
    EXPECT_EQ(joined.Font(0).getObjGen(), joined.Font(1).getObjGen());
    EXPECT_EQ(joined.Font(0).getObjGen(), joined.Font(2).getObjGen());
    EXPECT_NE(joined.Characters(0).find("<0022> <0041>"), std::string::npos) << joined.Characters(0);
    EXPECT_NE(joined.Characters(0).find("<0037> <0056>"), std::string::npos);
}

TEST(JoinedFontsTest, HaveACharacterTableForEachMeaningOfAGlyph)
{
    JoinedText joined({PageOfText({{34, 'A'}}), PageOfText({{34, 'B'}}), PageOfText({{34, 'A'}, {55, 'V'}})});
    EXPECT_EQ(joined.Descendant(0).getObjGen(), joined.Descendant(1).getObjGen());
    EXPECT_EQ(joined.Font(0).getObjGen(), joined.Font(2).getObjGen());
    EXPECT_NE(joined.Font(0).getObjGen(), joined.Font(1).getObjGen());
    EXPECT_NE(joined.Characters(0).find("<0022> <0041>"), std::string::npos);
    EXPECT_NE(joined.Characters(1).find("<0022> <0042>"), std::string::npos);
}

TEST(JoinedFontsTest, RunAcrossAndDownWithOneProgram)
{
    JoinedText joined({PageOfText({{34, 'A'}}), PageOfText({{55, 'V'}}, true)});
    EXPECT_EQ(joined.Font(0).getKey("/Encoding").unparse(), "/Identity-H");
    const std::vector<QPDFObjectHandle> columns = joined.Descendant(0).getKey("/W2").getArrayAsVector();
    EXPECT_EQ(columns.size(), 4U);
}

// Its second glyph has the number 700 in its collection.
TEST(JoinedFontsTest, NameGlyphsByTheirNumbersInACollection)
{
    const char *file = VX_SOURCE_DIR "/tests/unit/pdf/fonts/cid-keyed.otf";
    JoinedText joined({PageOfText({{1, 'x'}}, false, file), PageOfText({{2, 'y'}}, false, file)});
    std::vector<QPDFObjectHandle> widths = joined.Descendant(1).getKey("/W").getArrayAsVector();
    ASSERT_EQ(widths.size(), 4U);
    EXPECT_EQ(widths[0].getIntValue(), 33);
    EXPECT_EQ(widths[2].getIntValue(), 700);
}

TEST(JoinedFontsTest, FailWhereTheFontIsNoLonger)
{
    const std::string page = PageOfText({{34, 'A'}});
    const std::string name = "4E696D62757353616E732D526567756C61722E6F7466"; // its file's, without the folder
    const size_t place = page.find(name);
    ASSERT_NE(place, std::string::npos) << page;
    std::string damaged = page;
    damaged[place] = '5';
    const Joined joined = Join({damaged});
    ASSERT_TRUE(joined.isWhole);
    EXPECT_EQ(joined.failure.text,
              "the font for \"Helvetica\" is damaged, its glyphs cannot be embedded: use outlines for text");
}

TEST(FontUseTest, IsReadWhole)
{
    const FontUse use = {"/a (b).otf", 65537, "Asked", "Own", true, {{3, 0x1F600}, {65535, 'a'}}};
    const std::string value = ValueOf(use);
    const std::optional<FontUse> read = ReadFontUse(value);
    ASSERT_TRUE(read);
    EXPECT_EQ(std::tie(read->file, read->face, read->asked, read->own, read->runsDown, read->characters),
              std::tie(use.file, use.face, use.asked, use.own, use.runsDown, use.characters));
    for (size_t size = 0; size < value.size(); ++size)
        EXPECT_FALSE(ReadFontUse(value.substr(0, size))) << size;
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
    for (const std::string &whole : {PageOf(100, "One"), PageOfText({{34, 'A'}})}) {
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
