// Text beside the same glyphs, taken from the fonts by FreeType and put where the operators say: which glyph, on
// which baseline, how far from the last one, which way up. The fonts are those of Debian packages, in their folders.
#include "tests/pictures/FontOutline.h"
#include "tests/pictures/Picture.h"
#include "tests/support/CaseName.h"

#include "devices/raster/RasterDevice.h"
#include "host/fonts/DocumentGlyphs.h"
#include "host/fonts/FontconfigFonts.h"
#include "host/reading/Reading.h"

#include <gtest/gtest.h>

#include <span>

namespace vxtest
{
namespace
{

using vxhost::Matrix;

constexpr const char *kFolders[] = {
    "/usr/share/fonts/opentype/urw-base35", "/usr/share/fonts/opentype/ipafont-gothic",
    "/usr/share/fonts/truetype/baekmuk", "/usr/share/fonts/truetype/arphic-bsmi00lp"};
constexpr const char *kSans = "/usr/share/fonts/opentype/urw-base35/NimbusSans-Regular.otf";
constexpr const char *kSymbol = "/usr/share/fonts/opentype/urw-base35/StandardSymbolsPS.otf";
constexpr const char *kDingbats = "/usr/share/fonts/opentype/urw-base35/D050000L.otf";
constexpr const char *kJapanese = "/usr/share/fonts/opentype/ipafont-gothic/ipag.ttf";
constexpr const char *kKorean = "/usr/share/fonts/truetype/baekmuk/batang.ttf";
constexpr const char *kChinese = "/usr/share/fonts/truetype/arphic-bsmi00lp/bsmi00lp.ttf";

// Both are drawn by the same device, from the same outlines: what differs is a rounding of 1 / 65536.
constexpr double kMostOverInk = 0.5;
constexpr double kPageSide = 200; // points

// A glyph, and the glyphs before it in its line, whose widths move it: they are set at the same size.
struct GlyphAt {
    const char *glyph; // a character in UTF-8, or a glyph's name after a slash
    Matrix matrix;     // ems to the page, without the widths
    const char *before = "";
    double widths = 1; // page units that an em of width counts; along the matrix's own direction
};

struct TextPictureCase {
    const char *name;
    const char *lines;
    const char *file; // of the font from which all glyphs are taken
    std::vector<GlyphAt> glyphs;
};

void Begin(vxhost::Device *device)
{
    vxhost::Page page;
    page.box = {0, 0, kPageSide, kPageSide};
    device->BeginPage(page);
}

std::unique_ptr<vxhost::Device> MakeDevice(vxhost::Picture *picture)
{
    vxhost::RasterOptions raster;
    raster.dpi = 144;
    raster.profile = "none";
    raster.samples = 8;
    std::string error;
    auto device = vxhost::MakePictureDevice(raster, picture, &error);
    EXPECT_EQ(error, "");
    return device;
}

vxhost::Picture DrawDocument(const std::string &lines)
{
    const std::string text = "%!PS-Tavro-3.0\n%%BoundingBox: 0 0 200 200\n%VX5_FileFormat 3\n%%EndComments\n"
                             "%%BeginSetup\n%%EndSetup\n0 g\n" +
                             lines + "\n%%PageTrailer\n%%EOF\n";
    std::string error;
    static const vxhost::Installation installation = {
        vxhost::Plugin::Load(VX_PLUGIN_PATH, &error),
        vxhost::MakeFontconfigFonts({false, {std::begin(kFolders), std::end(kFolders)}})};
    const auto document = vxhost::Document::FromMemory(std::as_bytes(std::span(text)), &error);
    EXPECT_EQ(error, "");
    vxhost::Reading reading(installation, *document, {});
    vxhost::Picture picture;
    const auto device = MakeDevice(&picture);
    const vxhost::Outcome outcome = reading.Draw(reading.PageFor(), *device);
    EXPECT_EQ(outcome.result, 0);
    EXPECT_FALSE(outcome.failure);
    return picture;
}

// The characters of UTF-8, or the one name.
std::vector<uint32_t> GlyphsOf(const FontOutlines &font, const std::string &text)
{
    if (text.starts_with('/') && text.size() > 1)
        return {font.FindByName(text.substr(1))};
    std::vector<uint32_t> glyphs;
    for (size_t at = 0; at < text.size();) {
        const auto lead = static_cast<uint8_t>(text[at]);
        const size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : 3;
        char32_t character = length == 1 ? lead : lead & (0x3FU >> (length - 1));
        for (size_t i = 1; i < length; ++i)
            character = character << 6 | (static_cast<uint8_t>(text[at + i]) & 0x3FU);
        glyphs.push_back(font.Find(character));
        at += length;
    }
    return glyphs;
}

vxhost::Picture DrawGlyphs(const TextPictureCase &picture)
{
    const FontOutlines font(picture.file);
    vxhost::Picture drawn;
    const auto device = MakeDevice(&drawn);
    Begin(device.get());
    for (const GlyphAt &glyph : picture.glyphs) {
        double ems = 0;
        for (const uint32_t before : GlyphsOf(font, glyph.before))
            ems += font.Advance(before);
        Matrix matrix = glyph.matrix;
        matrix.tx += matrix.a * ems * glyph.widths;
        matrix.ty += matrix.b * ems * glyph.widths;
        const std::vector<uint32_t> found = GlyphsOf(font, glyph.glyph);
        EXPECT_EQ(found.size(), 1u) << glyph.glyph;
        EXPECT_NE(found.at(0), 0u) << glyph.glyph;
        device->FillPath(font.Outline(found.at(0), matrix), {});
    }
    EXPECT_FALSE(device->EndPage());
    return drawn;
}

class TextPictures : public testing::TestWithParam<TextPictureCase>
{
};

TEST_P(TextPictures, ShowTheGlyphsWhereTheOperatorsSay)
{
    const vxhost::Picture expected = DrawGlyphs(GetParam());
    const PictureDistance distance = Compare(expected, DrawDocument(GetParam().lines));
    EXPECT_GT(distance.inkedPixels, 200u);
    EXPECT_LT(distance.inked, kMostOverInk) << "most at " << distance.tileX << ", " << distance.tileY;
}

// Ascent is 7/8 of the size: that far below its origin, and half its width to the left, a character stands in a column.
const TextPictureCase kPictures[] = {
    {"StandsOnItsBaseline",
     "0 To 1 0 0 1 20 50 0 Tp TP 0 Tr /_Helvetica 60 Tf (Rg) Tx TO",
     kSans,
     {{"R", {60, 0, 0, 60, 20, 50}}, {"g", {60, 0, 0, 60, 20, 50}, "R"}}},
    {"TurnsWithItsMatrix",
     "0 To 0 1 -1 0 150 20 0 Tp TP 0 Tr /_Helvetica 60 Tf (Rg) Tx TO",
     kSans,
     {{"R", {0, 60, -60, 0, 150, 20}}, {"g", {0, 60, -60, 0, 150, 20}, "R"}}},
    {"GoesOnBehindTheLastString",
     "0 To 1 0 0 1 20 50 0 Tp TP 0 Tr /_Helvetica 40 Tf (RF) Tx (g) Tx TO",
     kSans,
     {{"R", {40, 0, 0, 40, 20, 50}},
      {"F", {40, 0, 0, 40, 20, 50}, "R"},
      {"g", {40, 0, 0, 40, 20, 50}, "RF"}}},
    // 7 points up. Spacing counts twice where the text is twice as wide.
    {"IsScaledSpacedAndRaised",
     "0 To 1 0 0 1 20 50 0 Tp TP 0 Tr /_Helvetica 30 Tf 200 50 Tz 5 Tc 7 Ts (RFg) Tx TO",
     kSans,
     {{"R", {60, 0, 0, 15, 20, 57}},
      {"F", {60, 0, 0, 15, 30, 57}, "R"},
      {"g", {60, 0, 0, 15, 40, 57}, "RF"}}},
    {"SpreadsItsWords",
     "0 To 1 0 0 1 20 50 0 Tp TP 0 Tr /_Helvetica 40 Tf 25 Tw (R g) Tx TO",
     kSans,
     {{"R", {40, 0, 0, 40, 20, 50}}, {"g", {40, 0, 0, 40, 45, 50}, "R "}}},
    // The letter moves back by 250 thousandths of 40 points.
    {"IsKerned",
     "0 To 1 0 0 1 20 50 0 Tp TP 0 Tr /_Helvetica 40 Tf (R) Tx 0 250 Tk (g) Tx TO",
     kSans,
     {{"R", {40, 0, 0, 40, 20, 50}}, {"g", {40, 0, 0, 40, 10, 50}, "R"}}},
    {"HasLines",
     "0 To 1 0 0 1 20 150 0 Tp TP 0 Tr /_Helvetica 40 Tf 45 10 Tl (R) Tx T* (F) Tx -5 -50 Td (g) Tx TO",
     kSans,
     {{"R", {40, 0, 0, 40, 20, 150}}, {"F", {40, 0, 0, 40, 30, 105}}, {"g", {40, 0, 0, 40, 25, 55}}}},
    // The lines move left by half their width and by all of it; the second is 50 down.
    {"IsCentred",
     "[1 0 0 1 100 120]e /_Helvetica 40 50 0 1 z (Rg)t (F)t T",
     kSans,
     {{"R", {40, 0, 0, 40, 100, 120}, "Rg", -0.5},
      {"g", {40, 0, 0, 40, 100 + 40 * 0.722, 120}, "Rg", -0.5},
      {"F", {40, 0, 0, 40, 100, 70}, "F", -0.5}}},
    {"IsRightAligned",
     "[1 0 0 1 180 120]e /_Helvetica 40 50 0 2 z (Rg)t (F)t T",
     kSans,
     {{"R", {40, 0, 0, 40, 180, 120}, "Rg", -1},
      {"g", {40, 0, 0, 40, 180, 120}, "g", -1},
      {"F", {40, 0, 0, 40, 180, 70}, "F", -1}}},
    // What is painted later shows inside the letters alone.
    {"Clips",
     "q 0 To 1 0 0 1 20 50 0 Tp TP 7 Tr /_Helvetica 60 Tf (R) Tx (g) Tx TO 0 0 m 200 0 L 200 200 L 0 200 L f "
     "Q",
     kSans,
     {{"R", {60, 0, 0, 60, 20, 50}}, {"g", {60, 0, 0, 60, 20, 50}, "R"}}},
    {"OfMacRomanHasAccents",
     "0 To 1 0 0 1 20 50 0 Tp TP 0 Tr /_Helvetica 60 Tf (\\216\\247) Tx TO",
     kSans,
     {{"é", {60, 0, 0, 60, 20, 50}}, {"ß", {60, 0, 0, 60, 20, 50}, "é"}}},
    {"OfSymbolIsGreek",
     "0 To 1 0 0 1 20 50 0 Tp TP 0 Tr /_Symbol 40 Tf (aW\\345) Tx TO",
     kSymbol,
     {{"/alpha", {40, 0, 0, 40, 20, 50}},
      {"/Omega", {40, 0, 0, 40, 20 + 40 * 0.631, 50}},
      {"/summation", {40, 0, 0, 40, 20 + 40 * (0.631 + 0.768), 50}}}},
    {"OfDingbatsIsDingbats",
     "0 To 1 0 0 1 20 50 0 Tp TP 0 Tr /_ZapfDingbats 50 Tf (\"\\252) Tx TO",
     kDingbats,
     {{"/a2", {50, 0, 0, 50, 20, 50}}, {"/a110", {50, 0, 0, 50, 20 + 50 * 0.961, 50}}}},
    {"IsJapanese",
     "/_IPAGothic /IPAGothic 0 1 0 TZ 0 To 1 0 0 1 20 50 0 Tp TP 0 Tr /_IPAGothic 40 Tf (\\202\\240A\\220}) "
     "Tx TO",
     kJapanese,
     {{"あ", {40, 0, 0, 40, 20, 50}}, {"A", {40, 0, 0, 40, 60, 50}}, {"図", {40, 0, 0, 40, 80, 50}}}},
    // A font of the same name that is not re-encoded: its script becomes the system's, whose characters have two bytes.
    {"IsJapaneseByItsFont",
     "0 To 1 0 0 1 20 50 0 Tp TP 0 Tr /_IPAGothic 40 Tf 3 Tc (\\202\\240A\\220}) Tx TO",
     kJapanese,
     {{"あ", {40, 0, 0, 40, 20, 50}}, {"A", {40, 0, 0, 40, 63, 50}}, {"図", {40, 0, 0, 40, 86, 50}}}},
    {"RunsDownAColumn",
     "/_IPAGothic /IPAGothic 0 1 0 TZ 0 To 1 0 0 1 100 180 0 Tp TP 0 Tr 1 Tv /_IPAGothic 40 Tf "
     "(\\202\\240A\\220}) Tx TO",
     kJapanese,
     {{"あ", {40, 0, 0, 40, 80, 145}}, {"A", {40, 0, 0, 40, 90, 105}}, {"図", {40, 0, 0, 40, 80, 65}}}},
    // A quarter clockwise; (35 - 5) / 2 left of the line is the letter's baseline.
    {"LiesOnItsSide",
     "/_IPAGothic /IPAGothic 0 1 0 TZ 0 To 1 0 0 1 100 180 0 Tp TP 0 Tr 1 Tv 1 TV /_IPAGothic 40 Tf "
     "(A\\202\\240) Tx TO",
     kJapanese,
     {{"A", {0, -40, 40, 0, 85, 180}}, {"あ", {40, 0, 0, 40, 80, 125}}}},
    // Bracket and comma for columns, by their numbers in the collection of glyphs that the font is made from.
    {"HasFormsForColumns",
     "/_IPAGothic /IPAGothic 0 1 0 TZ 0 To 1 0 0 1 100 180 0 Tp TP 0 Tr 1 Tv /_IPAGothic 40 Tf "
     "(\\201u\\201A) Tx TO",
     kJapanese,
     {{"/aj7911", {40, 0, 0, 40, 80, 145}}, {"/aj7887", {40, 0, 0, 40, 80, 105}}}},
    {"IsKorean",
     "/_Baekmuk-Batang /X 0 3 0 TZ 0 To 1 0 0 1 20 50 0 Tp TP 0 Tr /_Baekmuk-Batang 40 Tf "
     "(\\307\\321\\261\\333) Tx TO",
     kKorean,
     {{"한", {40, 0, 0, 40, 20, 50}}, {"글", {40, 0, 0, 40, 60, 50}}}},
    // Characters of two bytes are taken to have no width: 45 points of spacing are the step.
    {"IsSpacedKorean",
     "/_Baekmuk-Batang /X 0 3 0 TZ 0 To 1 0 0 1 20 50 0 Tp TP 0 Tr 45 Tc /_Baekmuk-Batang 40 Tf "
     "(\\307\\321\\261\\333) Tx "
     "TO",
     kKorean,
     {{"한", {40, 0, 0, 40, 20, 50}}, {"글", {40, 0, 0, 40, 65, 50}}}},
    // So the left end of characters in a column stands on the line.
    {"IsChineseDownAColumn",
     "/_ShanHeiSun-Light /X 0 2 0 TZ 0 To 1 0 0 1 100 180 0 Tp TP 0 Tr 1 Tv /_ShanHeiSun-Light 40 Tf "
     "(\\244\\345\\246r) Tx "
     "TO",
     kChinese,
     {{"文", {40, 0, 0, 40, 100, 145}}, {"字", {40, 0, 0, 40, 100, 105}}}},
    {"IsChinese",
     "/_ShanHeiSun-Light /X 0 2 0 TZ 0 To 1 0 0 1 20 50 0 Tp TP 0 Tr /_ShanHeiSun-Light 40 Tf "
     "(\\244\\345\\246r) Tx TO",
     kChinese,
     {{"文", {40, 0, 0, 40, 20, 50}}, {"字", {40, 0, 0, 40, 60, 50}}}},
};
INSTANTIATE_TEST_SUITE_P(Pictures, TextPictures, testing::ValuesIn(kPictures), CaseName());

struct SignSet {
    const char *name;
    const char *asked;
    vxhost::TextEncoding encoding;
    const char *type1, *openType;
    int codes;
    int known; // glyphs whose names say which character they are
};

class SymbolSets : public testing::TestWithParam<SignSet>
{
};

// The Type 1 file of each font has the order of codes that its text stands in; the other one is drawn.
TEST_P(SymbolSets, AreInTheOrderThatTheFontsMakersGaveThem)
{
    const FontOutlines original(GetParam().type1);
    const FontOutlines drawn(GetParam().openType);
    const auto installed = vxhost::MakeFontconfigFonts({false, {kFolders[0]}});
    const vxhost::DocumentFonts fonts(*installed, {});
    vxhost::OpenFonts openFonts(fonts);
    vxhost::DocumentGlyphs glyphs(&openFonts);
    glyphs.BeginString(GetParam().asked, true);
    int codes = 0, known = 0;
    for (int code = 0x21; code < 256; ++code) {
        const auto byte = static_cast<uint8_t>(code);
        const uint32_t glyph = original.FindInOwnOrder(byte);
        const char32_t character = DecodeCharacter(GetParam().encoding, {&byte, 1}).character;
        if (glyph == 0 || character == 0)
            continue;
        ++codes;
        const vxhost::Glyph ours = glyphs.Next({&byte, 1}, false);
        EXPECT_EQ(drawn.NameOf(ours.glyph), original.NameOf(glyph)) << std::hex << code;
        EXPECT_NEAR(ours.advance, original.Advance(glyph), 1e-4) << std::hex << code;
        const uint32_t byName = original.Find(character);
        if (byName == 0)
            continue;
        ++known;
        EXPECT_EQ(original.NameOf(byName), original.NameOf(glyph)) << std::hex << code;
    }
    EXPECT_EQ(codes, GetParam().codes);
    EXPECT_GE(known, GetParam().known);
}

const SignSet kSymbolSets[] = {
    {"Symbol", "Symbol", vxhost::TextEncoding::Symbol,
     "/usr/share/fonts/type1/urw-base35/StandardSymbolsPS.t1", kSymbol, 188, 150},
    {"Dingbats", "ZapfDingbats", vxhost::TextEncoding::Dingbats,
     "/usr/share/fonts/type1/urw-base35/D050000L.t1", kDingbats, 201, 0},
};
INSTANTIATE_TEST_SUITE_P(Pictures, SymbolSets, testing::ValuesIn(kSymbolSets), CaseName());

} // namespace
} // namespace vxtest
