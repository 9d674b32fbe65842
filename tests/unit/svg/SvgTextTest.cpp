// Text as text. The page is 100 by 50, its lower left corner at (10, 20).
#include "devices/svg/WebFont.h"
#include "tests/unit/svg/Markup.h"

#include <gtest/gtest.h>
#include <hb.h>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace vxhost
{
namespace
{

constexpr const char *kSans = "/usr/share/fonts/opentype/urw-base35/NimbusSans-Regular.otf";
constexpr const char *kBoldItalic = "/usr/share/fonts/opentype/urw-base35/NimbusSans-BoldItalic.otf";
constexpr const char *kType1 = "/usr/share/fonts/type1/urw-base35/NimbusSans-Regular.t1";
constexpr const char *kJapanese = "/usr/share/fonts/opentype/ipafont-gothic/ipag.ttf";

const TextFont kFont = {"Helvetica", "NimbusSans-Regular", FontBytes::Open(kSans), 0};
const Matrix kTenPoints = {10, 0, 0, 10, 0, 0};

// Every character is half an em wide.
GlyphRun MakeRun(const std::u32string &text, Point at, const Matrix &matrix = kTenPoints,
                 const TextFont *font = &kFont)
{
    const auto file = FontFile::Open(font->bytes, 0);
    GlyphRun run;
    run.font = font;
    run.matrix = matrix;
    for (const char32_t character : text) {
        run.glyphs.push_back({file->FindGlyph(character), character, 0.5, at});
        at = {at.x + matrix.a / 2, at.y + matrix.b / 2};
    }
    return run;
}

TextPaint Filled()
{
    TextPaint paint;
    paint.fills = true;
    return paint;
}

std::string WholeOf(const std::vector<GlyphRun> &runs, const TextPaint &paint)
{
    return SvgOf([&](Device *device) {
        for (const GlyphRun &run : runs)
            ASSERT_TRUE(device->CanShow(*run.font));
        device->ShowText(runs, paint);
    });
}

// The body of the file without the fonts.
std::string Body(const std::vector<GlyphRun> &runs, const TextPaint &paint = Filled())
{
    const std::string body = BodyOf(WholeOf(runs, paint));
    return body.substr(0, body.find("<style>"));
}

const std::string kSansAttributes =
    " font-family=\"vx1,'Nimbus Sans',sans-serif\" font-size=\"10\" data-font=\"Helvetica\"";
const std::string kBlackFill = " fill=\"#000000\" data-gray=\"0\"";

TEST(SvgTextTest, AWordIsOneElement)
{
    EXPECT_EQ(Body({MakeRun(U"A<b", {10, 20})}), "<text xml:space=\"preserve\" x=\"0 5 10\" y=\"50\"" +
                                                     kSansAttributes + kBlackFill + ">A&lt;b</text>\n");
}

TEST(SvgTextTest, WordsAreItsPieces)
{
    EXPECT_EQ(Body({MakeRun(U"a  b c", {10, 20})}),
              "<text xml:space=\"preserve\"" + kSansAttributes + kBlackFill +
                  "><tspan x=\"0 5 10\" y=\"50\">a  </tspan><tspan x=\"15 20\">b </tspan>"
                  "<tspan x=\"25\">c</tspan></text>\n");
}

TEST(SvgTextTest, AGapBeginsAPiece)
{
    GlyphRun run = MakeRun(U"abc", {10, 20});
    run.glyphs[2].origin.x -= 2; // a fifth of an em
    EXPECT_EQ(Body({run}), "<text xml:space=\"preserve\"" + kSansAttributes + kBlackFill +
                               "><tspan x=\"0 5\" y=\"50\">ab</tspan><tspan x=\"8\">c</tspan></text>\n");
}

// Simple viewers would draw these two nearer to each other than the document has them.
TEST(SvgTextTest, APairThatIsKernedIsTwoPieces)
{
    EXPECT_EQ(Body({MakeRun(U"AV", {10, 20})}),
              "<text xml:space=\"preserve\"" + kSansAttributes + kBlackFill +
                  "><tspan x=\"0\" y=\"50\">A</tspan><tspan x=\"5\">V</tspan></text>\n");
}

TEST(SvgTextTest, EvenGapsAreLetterSpacing)
{
    GlyphRun run = MakeRun(U"abc", {10, 20});
    run.glyphs[1].origin.x += 1;
    run.glyphs[2].origin.x += 2;
    EXPECT_EQ(Body({run}), "<text xml:space=\"preserve\" x=\"0 6 12\" y=\"50\"" + kSansAttributes +
                               " letter-spacing=\"1\"" + kBlackFill + ">abc</text>\n");
}

TEST(SvgTextTest, EachLineHasItsHeight)
{
    GlyphRun run = MakeRun(U"ab", {10, 20});
    run.glyphs[1].origin.y += 5;
    run.glyphs.push_back(run.glyphs[1]);
    run.glyphs[2].origin.x += 20;
    EXPECT_EQ(Body({run}), "<text xml:space=\"preserve\"" + kSansAttributes + kBlackFill +
                               "><tspan x=\"0\" y=\"50\">a</tspan><tspan x=\"5\" y=\"45\">b</tspan>"
                               "<tspan x=\"25\">b</tspan></text>\n");
}

TEST(SvgTextTest, TurnedTextIsTransformed)
{
    EXPECT_EQ(Body({MakeRun(U"ab", {30, 30}, {0, 10, -10, 0, 0, 0})}),
              "<text xml:space=\"preserve\" x=\"0 5\" y=\"0\" transform=\"matrix(0 -1 1 0 20 40)\"" +
                  kSansAttributes + kBlackFill + ">ab</text>\n");
}

TEST(SvgTextTest, TheFontIsAsLargeAsTheTextIsHigh)
{
    // Condensed to four fifths.
    EXPECT_EQ(Body({MakeRun(U"ab", {30, 30}, {8, 0, 0, 10, 0, 0})}),
              "<text xml:space=\"preserve\" x=\"0 5\" y=\"0\" transform=\"matrix(.8 0 0 1 20 40)\"" +
                  kSansAttributes + kBlackFill + ">ab</text>\n");
}

TEST(SvgTextTest, NamesTheStyle)
{
    const TextFont font = {"Helvetica-BoldOblique", "NimbusSans-BoldItalic", FontBytes::Open(kBoldItalic), 0};
    EXPECT_EQ(
        Body({MakeRun(U"a", {10, 20}, kTenPoints, &font)}),
        "<text xml:space=\"preserve\" x=\"0\" y=\"50\" font-family=\"vx1,'Nimbus Sans',sans-serif\" "
        "font-weight=\"700\" font-style=\"italic\" font-size=\"10\" data-font=\"Helvetica-BoldOblique\"" +
            kBlackFill + ">a</text>\n");
}

TEST(SvgTextTest, TextIsStrokedInThePagesWidth)
{
    TextPaint paint;
    paint.strokes = true;
    paint.style.width = 2;
    EXPECT_EQ(Body({MakeRun(U"a", {30, 30}, {0, 10, -10, 0, 0, 0})}, paint),
              "<text xml:space=\"preserve\" x=\"0\" y=\"0\" transform=\"matrix(0 -1 1 0 20 40)\"" +
                  kSansAttributes +
                  " fill=\"none\" stroke=\"#000000\" data-stroke-gray=\"0\" stroke-width=\"2\">a</text>\n");
}

// The pen would be squeezed with the text, so it goes around shapes. The characters stay, to be found.
TEST(SvgTextTest, CondensedTextIsStrokedAsShapes)
{
    TextPaint paint;
    paint.strokes = true;
    const std::string body = Body({MakeRun(U"a", {30, 30}, {8, 0, 0, 10, 0, 0})}, paint);
    const std::string text =
        "<text xml:space=\"preserve\" x=\"0\" y=\"0\" transform=\"matrix(.8 0 0 1 20 40)\"" +
        kSansAttributes + " fill=\"none\">a</text>\n<path d=\"M";
    EXPECT_EQ(body.substr(0, text.size()), text);
    EXPECT_NE(body.find("Z\" fill=\"none\" stroke=\"#000000\" data-stroke-gray=\"0\" stroke-width=\"1\"/>\n"),
              std::string::npos);
}

// The font reaches that glyph by another character alone.
TEST(SvgTextTest, WhatHasNoCharacterIsAShape)
{
    GlyphRun run = MakeRun(U"aXb", {10, 20});
    run.glyphs[1].character = 0x3042;
    const std::string body = Body({run});
    const std::string text =
        "<text xml:space=\"preserve\"" + kSansAttributes + kBlackFill +
        "><tspan x=\"0\" y=\"50\">a</tspan><tspan x=\"5\" fill=\"none\" stroke=\"none\">\xE3\x81\x82</tspan>"
        "<tspan x=\"10\">b</tspan></text>\n<path d=\"M";
    EXPECT_EQ(body.substr(0, text.size()), text);
    EXPECT_NE(body.find("Z\" fill=\"#000000\" data-gray=\"0\"/>\n", text.size()), std::string::npos);
}

TEST(SvgTextTest, TextThatNobodyReadsIsShapes)
{
    for (const Matrix &matrix :
         {Matrix{0.01, 0, 0, 0.01, 0, 0}, Matrix{10, 0, 0, 0, 0, 0}, Matrix{1e5, 0, 0, 1e5, 0, 0}})
        EXPECT_EQ(Body({MakeRun(U"a", {10, 20}, matrix)}).substr(0, 10), "<path d=\"M");
}

TEST(SvgTextTest, ATextThatClipsIsFoundAndClips)
{
    TextPaint paint;
    paint.clips = true;
    const std::string body = Body({MakeRun(U"a", {10, 20})}, paint);
    const std::string begin = "<text xml:space=\"preserve\" x=\"0\" y=\"50\"" + kSansAttributes +
                              " fill=\"none\">a</text>\n<clipPath id=\"c1\"><path d=\"M";
    EXPECT_EQ(body.substr(0, begin.size()), begin);
    EXPECT_NE(body.find("Z\"/></clipPath>\n<g clip-path=\"url(#c1)\">\n</g>\n"), std::string::npos);
}

TEST(SvgTextTest, OutlinesAloneShowNoText)
{
    SvgOptions options = PlainSvg();
    options.text = TextOutput::Outlines;
    bool canShow = true;
    SvgOf([&](Device *device) { canShow = device->CanShow(kFont); }, options);
    EXPECT_FALSE(canShow);
}

// A font is carried once, however many names ask for it.
TEST(SvgTextTest, AFontIsCarriedOnce)
{
    const TextFont other = {"Arial", "NimbusSans-Regular", kFont.bytes, 0};
    const std::string svg =
        WholeOf({MakeRun(U"a", {10, 20}), MakeRun(U"b", {10, 20}, kTenPoints, &other)}, Filled());
    const size_t style = svg.find("<style>@font-face{font-family:vx1;font-weight:400;font-style:normal;"
                                  "font-stretch:normal;src:url(data:font/otf;base64,T1RUT");
    EXPECT_NE(style, std::string::npos);
    EXPECT_EQ(svg.find("<style>", style + 1), std::string::npos);
    EXPECT_EQ(svg.substr(svg.size() - 18), ")}</style>\n</svg>\n");
}

bool HasCharacter(const std::vector<std::byte> &font, char32_t character)
{
    const Owned<hb_blob_t, hb_blob_destroy> blob(hb_blob_create(reinterpret_cast<const char *>(font.data()),
                                                                static_cast<unsigned>(font.size()),
                                                                HB_MEMORY_MODE_READONLY, nullptr, nullptr));
    const Owned<hb_face_t, hb_face_destroy> face(hb_face_create(blob.get(), 0));
    const Owned<hb_font_t, hb_font_destroy> opened(hb_font_create(face.get()));
    hb_codepoint_t glyph = 0;
    return hb_font_get_nominal_glyph(opened.get(), character, &glyph) != 0;
}

TEST(SvgWebFontTest, TheSubsetHasWhatWasReached)
{
    for (const char *file : {kSans, kJapanese}) {
        const auto font = svg::WebFont::Open({"", "", FontBytes::Open(file), 0});
        ASSERT_NE(font, nullptr);
        EXPECT_TRUE(font->MakeSubset().empty());
        const auto opened = FontFile::Open(FontBytes::Open(file), 0);
        EXPECT_TRUE(font->Take(U'A', opened->FindGlyph(U'A')));
        EXPECT_TRUE(font->Take(U'A', opened->FindGlyph(U'A')));
        EXPECT_FALSE(font->Take(U'B', opened->FindGlyph(U'A')));
        EXPECT_FALSE(font->Take(0xE000, 0));
        const auto subset = font->MakeSubset();
        EXPECT_TRUE(HasCharacter(subset, U'A'));
        EXPECT_FALSE(HasCharacter(subset, U'B'));
        EXPECT_FALSE(HasCharacter(subset, U'C'));
        EXPECT_LT(subset.size(), 8192U);
        EXPECT_EQ(subset, font->MakeSubset());
    }
}

// A copy of the font with other bits of its licence, which stand at place 8 of OS/2.
SharedFontBytes WithLicence(int bits)
{
    std::ifstream in(kSans, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(in), {}};
    const size_t record = bytes.find("OS/2");
    size_t table = 0;
    for (size_t i = 8; i < 12; ++i)
        table = table << 8 | static_cast<uint8_t>(bytes.at(record + i));
    bytes.at(table + 8) = static_cast<char>(bits >> 8);
    bytes.at(table + 9) = static_cast<char>(bits);
    const auto changed = std::as_bytes(std::span(bytes));
    return FontBytes::FromMemory({changed.begin(), changed.end()});
}

TEST(SvgWebFontTest, TheLicenceDecides)
{
    const struct {
        int bits;
        bool isCarried;
    } cases[] = {
        {0x0000, true},  // installable
        {0x0004, true},  // preview and print
        {0x0008, true},  // editable
        {0x0002, false}, // restricted
        {0x0006, true},  // the less restrictive of two
        {0x0100, false}, // not to be cut
        {0x0200, false}, // bitmaps alone
    };
    for (const auto &row : cases) {
        EXPECT_EQ(svg::WebFont::Open({"", "", WithLicence(row.bits), 0}) != nullptr, row.isCarried)
            << row.bits;
    }
}

TEST(SvgWebFontTest, OnlyWhatBrowsersTakeIsCarried)
{
    ASSERT_NE(FontFile::Open(FontBytes::Open(kType1), 0), nullptr);
    EXPECT_EQ(svg::WebFont::Open({"", "", FontBytes::Open(kType1), 0}), nullptr);
    EXPECT_EQ(svg::WebFont::Open({"", "", FontBytes::Open("no-such.otf"), 0}), nullptr);
    EXPECT_EQ(svg::WebFont::Open({"", "", kFont.bytes, 1 << 16}), nullptr); // a named variation
}

} // namespace
} // namespace vxhost
