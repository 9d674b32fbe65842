// The machine's font list. The fonts that packages.txt installs are there in every checkout.
#include "host/fonts/FontconfigFonts.h"

#include "host/fonts/FontNames.h"
#include "host/fonts/MacRoman.h"
#include "host/fonts/OpenFonts.h"
#include "host/fonts/StandIns.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

namespace vxhost
{
namespace
{

// The index of that name, or -1.
int32_t Find(const FontList &fonts, std::string_view name)
{
    for (int32_t i = 0; i < fonts.Count(); ++i) {
        if (fonts.At(i).postScriptName == name)
            return i;
    }
    return -1;
}

// The metrics that came with the classic fonts are in thousandths of an em; here they are 16.16.
int32_t Thousandths(int32_t width)
{
    return (width * 65536 + 500) / 1000;
}

TEST(FontconfigFontsTest, NamesAreDistinctAndTheOrderIsAlwaysTheSame)
{
    const auto fonts = MakeFontconfigFonts();
    const auto again = MakeFontconfigFonts();
    ASSERT_EQ(fonts->Count(), again->Count());
    std::set<std::string> names;
    for (int32_t i = 0; i < fonts->Count(); ++i) {
        EXPECT_TRUE(names.insert(fonts->At(i).postScriptName).second) << fonts->At(i).postScriptName;
        EXPECT_EQ(fonts->At(i).postScriptName, again->At(i).postScriptName);
        EXPECT_EQ(fonts->At(i).file, again->At(i).file);
    }
}

TEST(FontconfigFontsTest, StandInsComeBehindTheInstalled)
{
    const auto fonts = MakeFontconfigFonts();
    bool areStandIns = false;
    for (int32_t i = 0; i < fonts->Count(); ++i) {
        const FontList::Entry &entry = fonts->At(i);
        EXPECT_TRUE(!entry.servedBy.empty() || !areStandIns) << entry.postScriptName;
        areStandIns = !entry.servedBy.empty();
        if (!areStandIns)
            continue;
        EXPECT_EQ(fonts->At(Find(*fonts, entry.servedBy)).file, entry.file);
    }
}

TEST(FontconfigFontsTest, TheClassicFontsHaveTheirOwnWidths)
{
    const auto fonts = MakeFontconfigFonts();
    struct {
        const char *font;
        uint8_t character;
        int32_t width;
    } const widths[] = {
        {"Helvetica", 'W', 944},        {"Helvetica", 'i', 222},   {"Helvetica", ' ', 278},
        {"Helvetica-Bold", 'a', 556},   {"Times-Roman", 'W', 944}, {"Times-Roman", 'i', 278},
        {"Times-BoldItalic", 'm', 778}, {"Courier", 'i', 600},     {"Courier-Oblique", 'W', 600},
        {"Helvetica", 0x80, 667},   // A with dieresis
        {"Times-Roman", 0xD5, 333}, // right single quotation mark
        {"Symbol", 'a', 631},       // alpha
        {"Symbol", 0xA5, 713},      // infinity
        {"ZapfDingbats", '"', 961}, // scissors
    };
    const DocumentFonts list(*fonts, {});
    OpenFonts opened(list);
    for (const auto &row : widths) {
        const int32_t number = Find(*fonts, row.font);
        ASSERT_GE(number, 0) << row.font;
        EXPECT_EQ(opened.CharWidth(static_cast<int16_t>(number), row.character), Thousandths(row.width))
            << row.font << " " << static_cast<int>(row.character);
    }
}

TEST(FontconfigFontsTest, ControlCharactersHaveNoWidth)
{
    const auto fonts = MakeFontconfigFonts();
    const auto courier = static_cast<int16_t>(Find(*fonts, "Courier"));
    const DocumentFonts list(*fonts, {});
    OpenFonts opened(list);
    for (const int16_t character : std::initializer_list<int16_t>{0, 13, 31, 127})
        EXPECT_EQ(opened.CharWidth(courier, character), 0) << character;
}

TEST(FontconfigFontsTest, AMachineWithoutFontsHasBoxes)
{
    FontSources sources;
    sources.useSystemFonts = false;
    const auto fonts = MakeFontconfigFonts(sources);
    ASSERT_EQ(fonts->Count(), 1);
    EXPECT_EQ(fonts->At(0).postScriptName, kBoxFontName);
    EXPECT_TRUE(fonts->At(0).file.empty());
    const DocumentFonts list(*fonts, {});
    EXPECT_EQ(OpenFonts(list).CharWidth(0, 'a'), kBoxFontWidth);
}

TEST(FontconfigFontsTest, ADirectoryOfFontsIsListed)
{
    const auto system = MakeFontconfigFonts();
    const int32_t number = Find(*system, "NimbusSans-Regular");
    ASSERT_GE(number, 0);
    FontSources sources;
    sources.useSystemFonts = false;
    sources.directories = {std::filesystem::path(system->At(number).file).parent_path().string()};
    const auto fonts = MakeFontconfigFonts(sources);
    EXPECT_GE(Find(*fonts, "NimbusSans-Regular"), 0);
    EXPECT_GE(Find(*fonts, "Helvetica"), 0) << "its stand-in";
    EXPECT_LE(fonts->Count(), system->Count());
}

SharedFontBytes HeldBytesOf(const std::string &path)
{
    const auto file = FontBytes::Open(path);
    return FontBytes::FromMemory({file->Get().begin(), file->Get().end()});
}

// A font from memory has the glyphs and widths that it has from the file, and is found first.
TEST(FontconfigFontsTest, FontsInMemoryAreAsThoseInFiles)
{
    const std::string folder = "/usr/share/fonts/opentype/urw-base35";
    FontSources sources;
    sources.useSystemFonts = false;
    sources.memory = {HeldBytesOf(folder + "/NimbusSans-Regular.otf"),
                      HeldBytesOf(VX_SOURCE_DIR "/README.md")};
    const auto fonts = MakeFontconfigFonts(sources);
    const int32_t number = Find(*fonts, "NimbusSans-Regular");
    ASSERT_GE(number, 0);
    EXPECT_TRUE(fonts->At(number).file.empty());
    EXPECT_TRUE(fonts->At(number).IsDrawn());
    const int32_t standIn = Find(*fonts, "Helvetica");
    ASSERT_GE(standIn, 0);
    const DocumentFonts list(*fonts, {});
    OpenFonts opened(list);
    EXPECT_EQ(opened.CharWidth(static_cast<int16_t>(standIn), 'W'), Thousandths(944));
    EXPECT_EQ(opened.Describe(standIn).match, FontMatch::StandIn);
    EXPECT_EQ(Find(*fonts, "NimbusSans-Bold"), -1) << "nothing but what was given";

    sources.directories = {folder};
    const auto both = MakeFontconfigFonts(sources);
    EXPECT_NE(both->At(Find(*both, "NimbusSans-Regular")).bytes, nullptr);
    EXPECT_EQ(both->At(Find(*both, "NimbusSans-Bold")).bytes, nullptr);
}

TEST(CharWidthsTest, AFileThatIsNoFontGivesBoxes)
{
    EXPECT_EQ(FontFile::Open(FontBytes::Open(VX_SOURCE_DIR "/CMakeLists.txt"), 0), nullptr);
    EXPECT_EQ(FontFile::Open(FontBytes::Open("/no/such/font"), 0), nullptr);
    EXPECT_EQ(ReadCharWidths(nullptr, TextEncoding::MacRoman, false)['a'], kBoxFontWidth);
}

// The same designs come in both formats, with the same metrics.
TEST(CharWidthsTest, Type1FontsAreReadToo)
{
    const std::string type1 = "/usr/share/fonts/X11/Type1/NimbusSans-Regular.pfb";
    if (!std::filesystem::exists(type1))
        GTEST_SKIP() << "no Type 1 fonts on this machine";
    const std::unique_ptr<FontFile> font = FontFile::Open(FontBytes::Open(type1), 0);
    ASSERT_NE(font, nullptr);
    const CharWidths widths = ReadCharWidths(font.get(), TextEncoding::MacRoman, false);
    EXPECT_EQ(widths['W'], Thousandths(944));
    EXPECT_EQ(widths[' '], Thousandths(278));
}

TEST(MacRomanTest, HasTheCharactersOfItsTime)
{
    EXPECT_EQ(FromMacRoman('A'), U'A');
    EXPECT_EQ(FromMacRoman(0x80), U'\u00C4');
    EXPECT_EQ(FromMacRoman(0xA5), U'\u2022');
    EXPECT_EQ(FromMacRoman(0xDB), U'\u00A4') << "the currency sign, not yet the euro";
    EXPECT_EQ(FromMacRoman(0xFF), U'\u02C7');
}

TEST(StandInsTest, EveryFamilyIsServedAndNoNameStandsTwice)
{
    std::set<std::string_view> names;
    for (const ClassicFamily &family : ClassicFamilies()) {
        EXPECT_NE(family.servedBy[0], nullptr) << family.name;
        for (size_t style = 0; style < family.fonts.size(); ++style) {
            if (family.fonts[style].empty())
                continue;
            EXPECT_TRUE(names.insert(family.fonts[style]).second) << family.fonts[style];
            EXPECT_FALSE((*family.servedBy[0])[style].empty()) << family.fonts[style];
        }
    }
}

} // namespace
} // namespace vxhost
