// What serves the fonts that a document asks for, with fonts of installed packages through a directory of our own.
#include "host/fonts/DocumentFonts.h"

#include "host/fonts/DocumentGlyphs.h"
#include "host/fonts/FontconfigFonts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace vxhost
{
namespace
{

constexpr const char *kRomanFonts = "/usr/share/fonts/opentype/urw-base35";
constexpr const char *kJapaneseFonts = "/usr/share/fonts/opentype/ipafont-gothic";
constexpr const char *kChineseFonts = "/usr/share/fonts/truetype/arphic-bsmi00lp";
constexpr const char *kKoreanFonts = "/usr/share/fonts/truetype/baekmuk";

class DocumentFontsTest : public testing::Test
{
  protected:
    static void SetUpTestSuite()
    {
        installed_ = MakeFontconfigFonts({false, {kRomanFonts, kJapaneseFonts, kChineseFonts, kKoreanFonts}})
                         .release();
    }
    static void TearDownTestSuite()
    {
        delete installed_;
        installed_ = nullptr;
    }

    void Ask(const std::string &name, bool isReencoded = false)
    {
        options_.asked.push_back({name, isReencoded, {}});
    }

    // The PostScript name of the font that is drawn.
    std::string ServedFor(const std::string &name)
    {
        Ask(name);
        const DocumentFonts fonts(*installed_, options_);
        const int32_t index = fonts.Find(name);
        return index < 0 ? "" : OpenFonts(fonts).Describe(index).served;
    }

    static FontList *installed_;
    DocumentFontOptions options_;
};

FontList *DocumentFontsTest::installed_ = nullptr;

TEST_F(DocumentFontsTest, ServesTheNearest)
{
    const struct {
        const char *asked;
        const char *served;
    } cases[] = {
        {"NimbusSans-Bold", "NimbusSans-Bold"},
        {"Helvetica-Bold", "NimbusSans-Bold"},
        {"Frutiger", "NimbusSans-Regular"},
        {"Frutiger-Black", "NimbusSans-Bold"},
        {"Frutiger-BlackItalic", "NimbusSans-BoldItalic"},
        {"Helvetica-Condensed", "NimbusSansNarrow-Regular"},
        {"Frutiger-BoldCond", "NimbusSansNarrow-Bold"},
        {"CenturySchoolbook-Bold", "NimbusRoman-Bold"},
        {"SymbolMT", "StandardSymbolsPS"},
        {"ITCZapfDingbats-Medium", "D050000L"},
        {"Helvetica-Black", "NimbusSans-Bold"},
        {"AGaramond-Italic", "NimbusRoman-Italic"},
        {"LetterTypewriter", "NimbusMonoPS-Regular"},
        {"GothicBBB-Medium-83pv-RKSJ-H", "IPAGothic"},
        {"Unheard-RKSJ-V", "IPAGothic"},
        {"MSung-Light-ETen-B5-H", "ShanHeiSun-Light"},
        {"HYSMyeongJo-Medium-KSCms-UHC-H", "Baekmuk-Batang"},
    };
    for (const auto &row : cases) {
        options_ = {};
        EXPECT_EQ(ServedFor(row.asked), row.served) << row.asked;
    }
}

TEST_F(DocumentFontsTest, SaysWhy)
{
    for (const char *name : {"NimbusSans-Bold", "Helvetica", "Frutiger"})
        Ask(name);
    const DocumentFonts fonts(*installed_, options_);
    OpenFonts openFonts(fonts);
    EXPECT_EQ(openFonts.Describe(fonts.Find("NimbusSans-Bold")).match, FontMatch::Exact);
    EXPECT_EQ(openFonts.Describe(fonts.Find("Helvetica")).match, FontMatch::StandIn);
    EXPECT_EQ(openFonts.Describe(fonts.Find("Frutiger")).match, FontMatch::Substitute);
}

TEST_F(DocumentFontsTest, OneEntryServesAllSuffixesOfAName)
{
    Ask("Ryumin-Light-83pv-RKSJ-H");
    Ask("Ryumin-Light-83pv-RKSJ-V");
    const DocumentFonts fonts(*installed_, options_);
    EXPECT_EQ(fonts.Count(), installed_->Count() + 1);
    EXPECT_EQ(fonts.At(fonts.Count() - 1).postScriptName, "Ryumin-Light-83pv-RKSJ-H");
    EXPECT_GE(fonts.FindFor("Ryumin-Light"), 0);
}

TEST_F(DocumentFontsTest, WithoutSubstitutesUnknownNamesStayOut)
{
    options_.substitute = false;
    Ask("Frutiger");
    const DocumentFonts fonts(*installed_, options_);
    EXPECT_EQ(fonts.Count(), installed_->Count());
    EXPECT_EQ(fonts.FindFor("Frutiger"), -1);
    EXPECT_GE(fonts.FindFor("Helvetica"), 0);
}

TEST_F(DocumentFontsTest, TheUsersChoiceComesFirst)
{
    options_.served = {{"Frutiger", "C059-Bold"}, {"Helvetica", "C059-Roman"}};
    Ask("Frutiger");
    Ask("Helvetica");
    const DocumentFonts fonts(*installed_, options_);
    OpenFonts openFonts(fonts);
    EXPECT_EQ(openFonts.Describe(fonts.Find("Frutiger")).served, "C059-Bold");
    EXPECT_EQ(openFonts.Describe(fonts.Find("Helvetica")).served, "C059-Roman");
    EXPECT_EQ(fonts.Count(), installed_->Count() + 1);
}

TEST_F(DocumentFontsTest, TextOfWindowsIsItsCodePageUnlessReencoded)
{
    options_.isCodePage1252 = true;
    Ask("Helvetica");
    Ask("Times-Roman", true);
    Ask("IPAGothic");
    const DocumentFonts fonts(*installed_, options_);
    EXPECT_EQ(fonts.EncodingOf(fonts.Find("Helvetica")), TextEncoding::CodePage1252);
    EXPECT_EQ(fonts.EncodingOf(fonts.Find("Times-Roman")), TextEncoding::MacRoman);
    EXPECT_EQ(fonts.EncodingOf(fonts.Find("IPAGothic")), TextEncoding::MacJapanese);
}

TEST_F(DocumentFontsTest, TextStandsInTheSetOfItsFont)
{
    Ask("HYSMyeongJo-Medium");
    Ask("MSung-Light-ETen-B5-H");
    Ask("Symbol");
    Ask("ZapfDingbats");
    options_.isCodePage1252 = true; // for Roman text alone
    const DocumentFonts fonts(*installed_, options_);
    EXPECT_EQ(fonts.EncodingOf(fonts.Find("HYSMyeongJo-Medium")), TextEncoding::MacKorean);
    EXPECT_EQ(fonts.EncodingOf(fonts.Find("MSung-Light-ETen-B5-H")), TextEncoding::MacChinese);
    EXPECT_EQ(fonts.EncodingOf(fonts.Find("Symbol")), TextEncoding::Symbol);
    EXPECT_EQ(fonts.EncodingOf(fonts.Find("ZapfDingbats")), TextEncoding::Dingbats);
}

TEST_F(DocumentFontsTest, ASymbolFontMakesTheSetOfANameThatItServes)
{
    options_.served = {{"Greek", "StandardSymbolsPS"}};
    Ask("Greek");
    const DocumentFonts fonts(*installed_, options_);
    EXPECT_EQ(fonts.EncodingOf(fonts.Find("Greek")), TextEncoding::Symbol);
}

struct SystemCase {
    const char *why;
    std::vector<AskedFont> asked;
    std::optional<Script> said;
    Script script;
};

TEST_F(DocumentFontsTest, TheSystemsScriptIsThatOfTheFontsThatAreNotReencoded)
{
    const SystemCase cases[] = {
        {"nothing is asked for", {}, std::nullopt, Script::Roman},
        {"Roman fonts", {{"Helvetica", false, {}}, {"Frutiger", false, {}}}, std::nullopt, Script::Roman},
        {"a Japanese name",
         {{"Helvetica", false, {}}, {"Ryumin-Light", false, {}}},
         std::nullopt,
         Script::Japanese},
        {"the font itself is Korean", {{"Baekmuk-Dotum", false, {}}}, std::nullopt, Script::Korean},
        {"the first of them",
         {{"MSung", false, {}}, {"Osaka", false, {}}},
         std::nullopt,
         Script::TraditionalChinese},
        {"a re-encoded one says its script itself",
         {{"Ryumin-Light", true, Script::Japanese}, {"Helvetica", false, {}}},
         std::nullopt,
         Script::Roman},
        {"the user says so", {{"Helvetica", false, {}}}, Script::Korean, Script::Korean},
        {"the user knows better", {{"Ryumin-Light", false, {}}}, Script::Roman, Script::Roman},
    };
    for (const SystemCase &row : cases) {
        options_ = {};
        options_.asked = row.asked;
        options_.systemScript = row.said;
        const DocumentFonts fonts(*installed_, options_);
        EXPECT_EQ(fonts.SystemScript(), row.script) << row.why;
    }
}

TEST_F(DocumentFontsTest, TheSystemsScriptReadsTextWhoseNameSaysNothing)
{
    options_.served = {{"Plain", "IPAGothic"}};
    Ask("Plain");
    const DocumentFonts found(*installed_, options_);
    EXPECT_EQ(found.EncodingOf(found.Find("Plain")), TextEncoding::MacJapanese);
    options_.systemScript = Script::Roman;
    const DocumentFonts roman(*installed_, options_);
    EXPECT_EQ(roman.EncodingOf(roman.Find("Plain")), TextEncoding::MacRoman);
    options_.systemScript = Script::Korean; // a script that the font does not have
    const DocumentFonts korean(*installed_, options_);
    EXPECT_EQ(korean.EncodingOf(korean.Find("Plain")), TextEncoding::MacJapanese);
}

// 0xC9 is the accented capital E of Windows (667) and three dots of the Mac (1000).
TEST_F(DocumentFontsTest, WidthsFollowTheCharacterSet)
{
    Ask("Helvetica");
    const DocumentFonts mac(*installed_, options_);
    options_.isCodePage1252 = true;
    const DocumentFonts windows(*installed_, options_);
    const auto number = static_cast<int16_t>(mac.Find("Helvetica"));
    EXPECT_EQ(OpenFonts(mac).CharWidth(number, 0xC9), 65536);
    EXPECT_EQ(OpenFonts(windows).CharWidth(number, 0xC9), (667 * 65536 + 500) / 1000);
}

TEST_F(DocumentFontsTest, BytesThatBeginTwoAreAnEmWide)
{
    const DocumentFonts fonts(*installed_, options_);
    const auto number = static_cast<int16_t>(fonts.Find("IPAGothic"));
    OpenFonts openFonts(fonts);
    EXPECT_EQ(openFonts.CharWidth(number, 0x81), 65536);
    EXPECT_EQ(openFonts.CharWidth(number, 'A'), 32768);
    EXPECT_EQ(openFonts.CharWidth(number, 0xB1), 32768) << "half-width katakana";
    EXPECT_EQ(openFonts.CharWidth(number, '\n'), 0);
}

class DocumentGlyphsTest : public DocumentFontsTest
{
  protected:
    static Glyph Take(DocumentGlyphs *glyphs, std::initializer_list<uint8_t> text, bool isUpright = false)
    {
        return glyphs->Next({text.begin(), text.size()}, isUpright);
    }
};

TEST_F(DocumentGlyphsTest, NumbersTellOutlinesApart)
{
    const DocumentFonts fonts(*installed_, options_);
    OpenFonts openFonts(fonts);
    DocumentGlyphs glyphs(&openFonts);
    std::set<uint64_t> numbers;
    for (const char *font : {"Helvetica", "Courier", "NoSuchFont"}) {
        glyphs.BeginString(font, true);
        for (const uint8_t letter : {'H', 'i'}) {
            const uint64_t number = Take(&glyphs, {letter}).outlineNumber;
            EXPECT_NE(number, 0U);
            EXPECT_EQ(number, Take(&glyphs, {letter}).outlineNumber);
            numbers.insert(number);
        }
    }
    EXPECT_EQ(numbers.size(), 6U);
}

TEST_F(DocumentGlyphsTest, OutlinesStandOnTheBaseline)
{
    const DocumentFonts fonts(*installed_, options_);
    OpenFonts openFonts(fonts);
    DocumentGlyphs glyphs(&openFonts);
    glyphs.BeginString("Helvetica", true);
    const Glyph glyph = Take(&glyphs, {'H'});
    ASSERT_NE(glyph.outline, nullptr);
    EXPECT_NEAR(glyph.advance, 0.722, 1e-3);
    double low = 9, high = -9;
    for (const Point &point : glyph.outline->points) {
        low = std::min(low, point.y);
        high = std::max(high, point.y);
    }
    EXPECT_NEAR(low, 0, 1e-3);
    EXPECT_NEAR(high, 0.729, 1e-3); // the capitals' height
}

TEST_F(DocumentGlyphsTest, ColumnsHaveFormsOfTheirOwn)
{
    const DocumentFonts fonts(*installed_, options_);
    OpenFonts openFonts(fonts);
    DocumentGlyphs glyphs(&openFonts);
    glyphs.BeginString("IPAGothic", true);
    const Path along = *Take(&glyphs, {0x81, 0x75}).outline; // left corner bracket
    const Path upright = *Take(&glyphs, {0x81, 0x75}, true).outline;
    const Path byCode = *Take(&glyphs, {0xEB, 0x75}).outline;
    EXPECT_NE(along.points, upright.points);
    EXPECT_EQ(byCode.points, upright.points);
}

// Half a character at the end of one text says nothing about a whole one in the next.
TEST_F(DocumentGlyphsTest, WhatAByteWasItIsAgainInItsFontAlone)
{
    const DocumentFonts fonts(*installed_, options_);
    OpenFonts openFonts(fonts);
    DocumentGlyphs glyphs(&openFonts);
    glyphs.BeginString("IPAGothic", true);
    EXPECT_EQ(Take(&glyphs, {0x83}).bytes, 1u);
    const Glyph whole = Take(&glyphs, {0x83, 0x41});
    EXPECT_EQ(whole.bytes, 2u);
    EXPECT_EQ(whole.character, U'\u30A2');
    const Glyph japanese = Take(&glyphs, {'i'});
    glyphs.BeginString("Helvetica", true);
    const Glyph first = Take(&glyphs, {'i'}), second = Take(&glyphs, {'i'});
    EXPECT_EQ(second.glyph, first.glyph);
    EXPECT_EQ(second.outline, first.outline);
    EXPECT_NEAR(second.advance, 0.222, 1e-3);
    EXPECT_NEAR(japanese.advance, 0.5, 1e-3);
    EXPECT_EQ(glyphs.FontsUsed().at(0).characters, 3u);
    EXPECT_EQ(glyphs.FontsUsed().at(1).characters, 2u);
}

TEST_F(DocumentGlyphsTest, CountsWhatIsShownAndWhatLacks)
{
    const DocumentFonts fonts(*installed_, options_);
    OpenFonts openFonts(fonts);
    DocumentGlyphs glyphs(&openFonts);
    glyphs.BeginString("Helvetica", true);
    Take(&glyphs, {'a'});
    Take(&glyphs, {'\t'});
    glyphs.BeginString("Helvetica", true);
    Take(&glyphs, {0xF0}); // a maker's mark, which no font has
    const std::vector<FontUse> uses = glyphs.FontsUsed();
    ASSERT_EQ(uses.size(), 1u);
    EXPECT_EQ(uses[0].strings, 2u);
    EXPECT_EQ(uses[0].characters, 2u);
    EXPECT_EQ(uses[0].missingGlyphs, 1u);
    EXPECT_EQ(uses[0].served, "NimbusSans-Regular");
    EXPECT_EQ(uses[0].match, FontMatch::StandIn);
}

TEST_F(DocumentGlyphsTest, AStringThatIsShownAgainIsNotCountedAgain)
{
    const DocumentFonts fonts(*installed_, options_);
    OpenFonts openFonts(fonts);
    DocumentGlyphs glyphs(&openFonts);
    for (const bool isNew : {true, false}) {
        glyphs.BeginString("Helvetica", isNew);
        Take(&glyphs, {'a'});
        Take(&glyphs, {0xF0});
    }
    const std::vector<FontUse> uses = glyphs.FontsUsed();
    ASSERT_EQ(uses.size(), 1u);
    EXPECT_EQ(uses[0].strings, 1u);
    EXPECT_EQ(uses[0].characters, 2u);
    EXPECT_EQ(uses[0].missingGlyphs, 1u);
}

// The font calls alpha "a"; as a character it is the Greek letter.
TEST_F(DocumentGlyphsTest, SymbolsAreTheirCharacters)
{
    const DocumentFonts fonts(*installed_, options_);
    OpenFonts openFonts(fonts);
    DocumentGlyphs glyphs(&openFonts);
    glyphs.BeginString("Symbol", true);
    const Glyph alpha = Take(&glyphs, {'a'});
    EXPECT_EQ(alpha.character, 0x03B1u);
    EXPECT_NEAR(alpha.advance, 0.631, 1e-4);
    EXPECT_EQ(Take(&glyphs, {0xD2}).character, U'\u00AE');
    EXPECT_NE(Take(&glyphs, {0xD2}).glyph, Take(&glyphs, {0xE2}).glyph) << "with serifs, and without";
    Take(&glyphs, {0xF0});
    const std::vector<FontUse> uses = glyphs.FontsUsed();
    ASSERT_EQ(uses.size(), 1u);
    EXPECT_EQ(uses[0].characters, 5u);
    EXPECT_EQ(uses[0].missingGlyphs, 1u) << "the code that no sign has";
}

// Another font that serves the name is asked for the characters, not for the bytes.
TEST_F(DocumentGlyphsTest, SymbolsOfAFontOfLettersAreFoundByCharacter)
{
    options_.served = {{"Symbol", "IPAGothic"}};
    Ask("Symbol");
    const DocumentFonts fonts(*installed_, options_);
    OpenFonts openFonts(fonts);
    DocumentGlyphs glyphs(&openFonts);
    glyphs.BeginString("Symbol", true);
    const uint32_t alpha = Take(&glyphs, {'a'}).glyph;
    glyphs.BeginString("IPAGothic", true);
    EXPECT_EQ(Take(&glyphs, {0x83, 0xBF}).glyph, alpha); // the Greek letter in the Japanese set
    EXPECT_NE(alpha, 0u);
}

TEST_F(DocumentGlyphsTest, WithoutAFontTextIsBoxes)
{
    const auto none = MakeFontconfigFonts({false, {}});
    Ask("Helvetica");
    const DocumentFonts fonts(*none, options_);
    OpenFonts openFonts(fonts);
    DocumentGlyphs glyphs(&openFonts);
    glyphs.BeginString("Helvetica", true);
    const Glyph box = Take(&glyphs, {'a'});
    ASSERT_NE(box.outline, nullptr);
    EXPECT_EQ(box.outline->points.size(), 8u) << "a frame";
    EXPECT_EQ(box.advance, 0.5);
    EXPECT_EQ(Take(&glyphs, {' '}).outline, nullptr);
    const std::vector<FontUse> uses = glyphs.FontsUsed();
    ASSERT_EQ(uses.size(), 1u);
    EXPECT_EQ(uses[0].match, FontMatch::Missing);
    EXPECT_EQ(uses[0].served, "");
}

} // namespace
} // namespace vxhost
