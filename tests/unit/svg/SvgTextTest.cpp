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

std::string WholeOf(const std::vector<GlyphRun> &runs, const TextPaint &paint,
                    const SvgOptions &options = PlainSvg())
{
    return SvgOf(
        [&](Device *device) {
            for (const GlyphRun &run : runs)
                ASSERT_TRUE(device->CanShow(*run.font));
            device->ShowText(runs, paint);
        },
        options);
}

// The body of the file without the fonts.
std::string Body(const std::vector<GlyphRun> &runs, const TextPaint &paint = Filled())
{
    const std::string body = BodyOf(WholeOf(runs, paint));
    return body.substr(0, body.find("<style>"));
}

const std::string kSansAttributes =
    " font-family=\"'Nimbus Sans',sans-serif\" font-size=\"10\" data-font=\"Helvetica\"";
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
        "<text xml:space=\"preserve\" x=\"0\" y=\"50\" font-family=\"'Nimbus Sans',sans-serif\" "
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
    const size_t style =
        svg.find("<style>@font-face{font-family:'Nimbus Sans';font-weight:400;font-style:normal;"
                 "font-stretch:normal;src:url(data:font/otf;base64,T1RUT");
    EXPECT_NE(style, std::string::npos);
    EXPECT_EQ(svg.find("<style>", style + 1), std::string::npos);
    EXPECT_EQ(svg.substr(svg.size() - 18), ")}</style>\n</svg>\n");
}

std::vector<std::string> FacesIn(const std::string &svg)
{
    std::vector<std::string> faces;
    const std::string begin = "@font-face{", end = ";src";
    for (size_t at = svg.find(begin); at != std::string::npos; at = svg.find(begin, at + 1)) {
        const size_t from = at + begin.size();
        faces.push_back(svg.substr(from, svg.find(end, from) - from));
    }
    return faces;
}

TEST(SvgTextTest, FacesOfAFamilyShareItsName)
{
    const TextFont bold = {"Helvetica-BoldOblique", "NimbusSans-BoldItalic", FontBytes::Open(kBoldItalic), 0};
    const std::string svg =
        WholeOf({MakeRun(U"a", {10, 20}), MakeRun(U"b", {10, 20}, kTenPoints, &bold)}, Filled());
    EXPECT_EQ(FacesIn(svg),
              (std::vector<std::string>{
                  "font-family:'Nimbus Sans';font-weight:400;font-style:normal;font-stretch:normal",
                  "font-family:'Nimbus Sans';font-weight:700;font-style:italic;font-stretch:normal"}));
}

// Another file of the same font may have other glyphs for the same characters.
TEST(SvgTextTest, AnotherFontOfOneNameIsNumbered)
{
    const auto copy = kFont.bytes->Get();
    const TextFont other = {"Arial", "NimbusSans-Regular", FontBytes::FromMemory({copy.begin(), copy.end()}),
                            0};
    const std::string svg =
        WholeOf({MakeRun(U"a", {10, 20}), MakeRun(U"b", {10, 20}, kTenPoints, &other)}, Filled());
    EXPECT_EQ(FacesIn(svg),
              (std::vector<std::string>{
                  "font-family:'Nimbus Sans';font-weight:400;font-style:normal;font-stretch:normal",
                  "font-family:'Nimbus Sans 2';font-weight:400;font-style:normal;font-stretch:normal"}));
    EXPECT_NE(svg.find(" font-family=\"'Nimbus Sans 2','Nimbus Sans',sans-serif\" font-size=\"10\" "
                       "data-font=\"Arial\""),
              std::string::npos);
}

// Lines to be edited. Letters of this font are as wide as here in 1000ths of an em: a 556, b 556, c 500, A and V 667, space 278.
GlyphRun MakeLine(const std::u32string &text, Point at, const Matrix &matrix = kTenPoints)
{
    GlyphRun run = MakeRun(text, at, matrix);
    const auto file = FontFile::Open(kFont.bytes, 0);
    for (PlacedGlyph &glyph : run.glyphs) {
        glyph.origin = at;
        glyph.advance = file->Advance(glyph.glyph) / 65536.0;
        at = {at.x + matrix.a * glyph.advance, at.y + matrix.b * glyph.advance};
    }
    return run;
}

std::string Lines(const std::vector<std::vector<GlyphRun>> &shows, const TextPaint &paint = Filled())
{
    SvgOptions options = PlainSvg();
    options.text = TextOutput::Editable;
    return BodyOf(SvgOf(
        [&](Device *device) {
            for (const std::vector<GlyphRun> &runs : shows)
                device->ShowText(runs, paint);
        },
        options));
}

std::string Line(const std::string &place, const std::string &more, const std::string &text)
{
    return "<text xml:space=\"preserve\" " + place + kSansAttributes + more + kBlackFill + ">" + text +
           "</text>\n";
}

TEST(SvgEditableTest, ALineHasOnePlaceAndNoFont)
{
    EXPECT_EQ(Lines({{MakeLine(U"AV  b<c", {10, 20})}}), Line("x=\"0\" y=\"50\"", "", "AV  b&lt;c"));
}

TEST(SvgEditableTest, EvenGapsAreTheLinesSpacing)
{
    GlyphRun run = MakeLine(U"abc", {10, 20});
    run.glyphs[1].origin.x += 1;
    run.glyphs[2].origin.x += 2;
    EXPECT_EQ(Lines({{run}}), Line("x=\"0\" y=\"50\"", " letter-spacing=\"1\"", "abc"));
}

TEST(SvgEditableTest, AGapIsTheSpacingOfThatBeforeIt)
{
    GlyphRun kerned = MakeLine(U"abcab", {10, 20});
    for (size_t i = 2; i < 5; ++i)
        kerned.glyphs[i].origin.x -= 1;
    EXPECT_EQ(Lines({{kerned}}), Line("x=\"0\" y=\"50\"", "", "a<tspan letter-spacing=\"-1\">b</tspan>cab"));
    GlyphRun spaced = MakeLine(U"ab ca", {10, 20});
    for (size_t i = 2; i < 5; ++i) // before the space, where nobody sees it
        spaced.glyphs[i].origin.x += 3;
    EXPECT_EQ(Lines({{spaced}}), Line("x=\"0\" y=\"50\"", "", "ab<tspan letter-spacing=\"3\"> </tspan>ca"));
}

TEST(SvgEditableTest, ALineGoesOnThroughTexts)
{
    // "ab" is 11.12 wide, so a text that follows it begins at 21.12; this one is kerned by 1.
    const GlyphRun first = MakeLine(U"ab", {10, 20}), next = MakeLine(U"ca", {20.12, 20});
    EXPECT_EQ(Lines({{first}, {next}}),
              Line("x=\"0\" y=\"50\"", "", "a<tspan letter-spacing=\"-1\">b</tspan>ca"));
}

TEST(SvgEditableTest, WhatIsElsewhereIsALineOfItsOwn)
{
    const std::string first = Line("x=\"0\" y=\"50\"", "", "ab");
    const GlyphRun run = MakeLine(U"ab", {10, 20});
    EXPECT_EQ(Lines({{run}, {MakeLine(U"c", {10, 10})}}), first + Line("x=\"0\" y=\"60\"", "", "c"));
    // An em and more away.
    EXPECT_EQ(Lines({{run}, {MakeLine(U"c", {31.2, 20})}}), first + Line("x=\"21.2\" y=\"50\"", "", "c"));
}

// A document may go on along a line for ever, and a line is held until it ends.
TEST(SvgEditableTest, ALineHasAnEnd)
{
    const std::string lines = Lines({{MakeLine(std::u32string(4097, U'a'), {10, 20})}});
    EXPECT_NE(lines.find(std::string(4096, 'a') + "</text>\n"), std::string::npos);
    EXPECT_NE(lines.find(">a</text>\n"), std::string::npos);
}

TEST(SvgEditableTest, OtherPaintBeginsALine)
{
    SvgOptions options = PlainSvg();
    options.text = TextOutput::Editable;
    const std::string svg = SvgOf(
        [&](Device *device) {
            device->ShowText(std::vector{MakeLine(U"ab", {10, 20})}, Filled());
            TextPaint other = Filled();
            other.paint.colour.ink[0] = 1;
            device->ShowText(std::vector{MakeLine(U"c", {21.12, 20})}, other);
        },
        options);
    EXPECT_NE(svg.find(">ab</text>\n"), std::string::npos);
    EXPECT_NE(svg.find(" fill=\"#ffffff\" data-gray=\"1\">c</text>\n"), std::string::npos);
}

TEST(SvgEditableTest, WhatIsPaintedBetweenEndsALine)
{
    SvgOptions options = PlainSvg();
    options.text = TextOutput::Editable;
    const std::string body = BodyOf(SvgOf(
        [&](Device *device) {
            device->ShowText(std::vector{MakeLine(U"ab", {10, 20})}, Filled());
            Path path;
            path.verbs = {Verb::Move, Verb::Line};
            path.points = {{0, 0}, {9, 9}};
            device->FillPath(path, {});
            device->ShowText(std::vector{MakeLine(U"c", {21.12, 20})}, Filled());
        },
        options));
    const size_t line = body.find(">ab</text>"), shape = body.find("<path "), next = body.find(">c</text>");
    EXPECT_LT(line, shape);
    EXPECT_LT(shape, next);
    EXPECT_NE(next, std::string::npos);
}

TEST(SvgEditableTest, KeepsToTheWidthsOfFonts)
{
    SvgOptions options = PlainSvg();
    EXPECT_EQ(SvgOf([](Device *) {}, options).find("font-kerning"), std::string::npos);
    options.text = TextOutput::Editable;
    EXPECT_NE(
        SvgOf([](Device *) {}, options)
            .find(" style=\"font-kerning:none;font-feature-settings:'kern' 0,'liga' 0,'clig' 0,'calt' 0\">"),
        std::string::npos);
}

TEST(SvgEditableTest, ColumnsAndPathsAreToldAndPlaced)
{
    SvgOptions options = PlainSvg();
    options.text = TextOutput::Editable;
    const auto device = MakeSvgDevice(
        options, [](std::span<const std::byte>) { return Failure(); }, nullptr);
    device->BeginPage({{0, 0, 100, 50}, "", ""});
    const auto show = [&](const GlyphRun &run, TextKind kind, uint64_t number) {
        TextPaint paint = Filled();
        paint.object = {number, 0, kind};
        device->ShowText(std::vector{run}, paint);
    };
    GlyphRun column = MakeLine(U"ab", {10, 20});
    column.isColumn = true;
    show(MakeLine(U"ab", {10, 20}), TextKind::Point, 1);
    EXPECT_EQ(device->PlacedTexts(), 0U);
    show(column, TextKind::Point, 2);
    show(column, TextKind::Point, 2);
    EXPECT_EQ(device->PlacedTexts(), 1U);
    show(MakeLine(U"a", {10, 20}), TextKind::Path, 3);
    show(MakeLine(U"b", {20, 20}), TextKind::Path, 3);
    EXPECT_EQ(device->PlacedTexts(), 2U);
    EXPECT_EQ(Lines({{column}}).find("<text xml:space=\"preserve\" x=\"0 5.56\""), 0U);
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
        EXPECT_NE(svg::WebFont::Open({"", "", WithLicence(row.bits), 0}, svg::WebFontUse::Named), nullptr)
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
