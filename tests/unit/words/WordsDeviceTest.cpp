// Glyphs at places become lines of words, as somebody reads them.
#include "devices/words/WordsDevice.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace vxhost
{
namespace
{

const TextFont kFont = {"Asked", "Served", nullptr, 0};
const TextFont kOther = {"Other", "", nullptr, 0};
const Matrix kSize10 = {10, 0, 0, 10, 0, 0};

// Each character is half an em wide, and spacing points are between two.
GlyphRun RunOf(std::u32string_view text, Point at, const Matrix &matrix = kSize10, double spacing = 0)
{
    GlyphRun run;
    run.font = &kFont;
    run.matrix = matrix;
    for (const char32_t character : text) {
        run.glyphs.push_back({1, character, 0.5, at});
        at = {at.x + 0.5 * matrix.a + spacing, at.y + 0.5 * matrix.b};
    }
    return run;
}

// Each upright character takes an em of the column, around whose axis it stands.
GlyphRun Column(std::u32string_view text, double axis, double top, bool isRoman = false)
{
    GlyphRun run;
    run.font = &kFont;
    run.matrix = kSize10;
    run.isColumn = !isRoman;
    const double width = isRoman ? 0.5 : 1;
    for (const char32_t character : text)
        run.glyphs.push_back({1, character, width, {axis - width * 5, top -= 10}});
    return run;
}

class WordsDeviceTest : public testing::Test
{
  protected:
    void Begin(TextKind kind = TextKind::Point) { paint_.object = {paint_.object.number + 1, 0, kind}; }
    void BeginPath() { ++paint_.object.path; }
    void Show(const GlyphRun &run) { device_.ShowText({&run, 1}, paint_); }

    // Returns all lines with "|" between them, and "||" between texts.
    std::string Words()
    {
        (void)device_.EndPage();
        std::string words;
        for (const FoundText &text : texts_) {
            words += words.empty() ? "" : "||";
            for (const TextLine &line : text.lines) {
                words += &line == &text.lines.front() ? "" : "|";
                for (const TextRun &run : line.runs)
                    words += run.text;
            }
        }
        return words;
    }

    std::vector<FoundText> texts_;
    WordsDevice device_{[this](const FoundText &text) { texts_.push_back(text); }};
    TextPaint paint_;
};

TEST_F(WordsDeviceTest, LinesComeFromTopToBottom)
{
    Begin();
    Show(RunOf(U"third", {0, 76}));
    Show(RunOf(U"first", {0, 100}));
    Show(RunOf(U"second", {60, 88}));
    Begin();
    Show(RunOf(U"next", {0, 200}));
    EXPECT_EQ(Words(), "first|second|third||next");
}

TEST_F(WordsDeviceTest, TurnedLinesComeInTheirOwnOrder)
{
    const Matrix up = {0, 10, -10, 0, 0, 0}; // a quarter turn to the left: the next line is on the right
    Begin();
    Show(RunOf(U"second", {62, 0}, up));
    Show(RunOf(U"first", {50, 0}, up));
    EXPECT_EQ(Words(), "first|second");
}

TEST_F(WordsDeviceTest, ColumnsComeFromRightToLeft)
{
    Begin();
    Show(Column(U"\u56f3\u9762", 40, 100));
    Show(Column(U"\u53e4\u3044", 60, 100));
    EXPECT_EQ(Words(), "\u53e4\u3044|\u56f3\u9762");
}

TEST_F(WordsDeviceTest, RomanCharactersStandInTheirColumn)
{
    Begin();
    Show(Column(U"AB", 40, 100, true));
    Show(Column(U"\u56f3", 40, 80));
    Show(Column(U"C", 40, 70, true));
    Show(Column(U"DE", 40, 60, true));
    Begin();
    Show(Column(U"A", 40, 100, true));
    Show(Column(U"\u56f3", 40, 90));
    EXPECT_EQ(Words(), "AB\u56f3"
                       "CDE||A\u56f3");
}

TEST_F(WordsDeviceTest, AreasKeepTheirLinesTogether)
{
    Begin(TextKind::Area);
    BeginPath();
    Show(RunOf(U"a", {0, 100}));
    Show(RunOf(U"b", {0, 88}));
    BeginPath();
    Show(RunOf(U"d", {80, 88}));
    Show(RunOf(U"c", {80, 100}));
    EXPECT_EQ(Words(), "a|b|c|d");
    EXPECT_EQ(texts_.at(0).kind, TextKind::Area);
}

TEST_F(WordsDeviceTest, TextOnAPathIsOneLine)
{
    Begin(TextKind::Path);
    BeginPath();
    Show(RunOf(U"a", {0, 0}));
    Show(RunOf(U"b", {5, 0}, {0, 10, -10, 0, 0, 0}));
    Show(RunOf(U"c", {5, 9}, {-10, 0, 0, -10, 0, 0})); // as wide as a blank from the end of the last
    EXPECT_EQ(Words(), "ab c");
}

TEST_F(WordsDeviceTest, GapsAreBlanksWhereTheDrawingHasNone)
{
    Begin();
    Show(RunOf(U"two", {0, 0}));
    Show(RunOf(U"words", {18, 0})); // three points behind the end
    Begin();
    Show(RunOf(U"one", {0, 0}));
    Show(RunOf(U"word", {17, 0}));
    Begin();
    Show(RunOf(U"one ", {0, 0}));
    Show(RunOf(U"blank", {30, 0}));
    Begin();
    Show(RunOf(U"wide", {0, 0}, kSize10, 6)); // the spacing goes on behind it
    Show(RunOf(U"ly", {44, 0}, kSize10, 6));
    EXPECT_EQ(Words(), "two words||oneword||one blank||widely");
}

TEST_F(WordsDeviceTest, RaisedFiguresStayInTheirLine)
{
    Begin();
    Show(RunOf(U"mc", {0, 0}));
    Show(RunOf(U"2", {10, 4}, {6, 0, 0, 6, 0, 0}));
    Show(RunOf(U"H", {13, 0}));
    Show(RunOf(U"next", {0, -7}));
    EXPECT_EQ(Words(), "mc2H|next");
    ASSERT_EQ(texts_.at(0).lines.at(0).runs.size(), 3U);
    EXPECT_EQ(texts_[0].lines[0].runs[1].text, "2");
    EXPECT_EQ(texts_[0].lines[0].runs[1].size, 6);
}

TEST_F(WordsDeviceTest, RunsDifferInFontOrColour)
{
    Begin();
    Show(RunOf(U"ab", {0, 0}));
    Show(RunOf(U"cd", {10, 0}));
    paint_.paint.colour.ink[0] = 0.5;
    Show(RunOf(U"ef", {20, 0}));
    GlyphRun other = RunOf(U"gh", {30, 0});
    other.font = &kOther;
    Show(other);
    EXPECT_EQ(Words(), "abcdefgh");
    const std::vector<TextRun> &line = texts_.at(0).lines.at(0).runs;
    ASSERT_EQ(line.size(), 3U);
    EXPECT_EQ(line[0].text, "abcd");
    EXPECT_EQ(line[1].colour.ink[0], 0.5);
    EXPECT_EQ(line[2].font->asked, "Other");
}

// Characters are 5 points wide and 10 high.
TEST_F(WordsDeviceTest, LinesHaveTheirPlaces)
{
    Begin();
    Show(RunOf(U"level", {3, 7}));
    Show(RunOf(U"on", {40, 7}));
    Begin();
    Show(RunOf(U"up", {50, 20}, {0, 20, -20, 0, 0, 0}));
    EXPECT_EQ(Words(), "level on||up");
    const TextLine &level = texts_[0].lines[0];
    EXPECT_EQ(level.start.at, (Point{3, 7}));
    EXPECT_EQ(level.start.along, (Point{1, 0}));
    EXPECT_EQ(level.length, 47);
    EXPECT_EQ(level.height, 10);
    EXPECT_FALSE(level.isColumn);
    EXPECT_TRUE(level.places.empty());
    const TextLine &up = texts_[1].lines[0];
    EXPECT_EQ(up.start.at, (Point{50, 20}));
    EXPECT_EQ(up.start.along, (Point{0, 1}));
    EXPECT_EQ(up.length, 20);
    EXPECT_EQ(up.height, 20);
}

// The ems of the column begin at 98, eight tenths of one above the baseline of the first.
TEST_F(WordsDeviceTest, ColumnsHaveTheirPlaces)
{
    Begin();
    Show(Column(U"縦書き", 30, 100));
    EXPECT_EQ(Words(), "縦書き");
    const TextLine &column = texts_[0].lines[0];
    EXPECT_EQ(column.start.at, (Point{30, 98}));
    EXPECT_EQ(column.start.along, (Point{0, -1}));
    EXPECT_EQ(column.length, 30);
    EXPECT_TRUE(column.isColumn);
}

TEST_F(WordsDeviceTest, CharactersOnAPathHaveTheirPlaces)
{
    Begin(TextKind::Path);
    Show(RunOf(U"a", {0, 0}));
    Show(RunOf(U"b", {5, 0}, {0, 10, -10, 0, 0, 0}));
    EXPECT_EQ(Words(), "ab");
    const TextLine &line = texts_[0].lines[0];
    ASSERT_EQ(line.places.size(), 2U);
    EXPECT_EQ(line.places[1].at, (Point{5, 0}));
    EXPECT_EQ(line.places[1].along, (Point{0, 1}));
    EXPECT_EQ(line.length, 10);
}

TEST_F(WordsDeviceTest, WhatClipsAfterItIsPaintedIsNotSaidTwice)
{
    Begin();
    Show(RunOf(U"once", {0, 0}));
    GlyphRun again = RunOf(U"once", {0, 0});
    again.isRepeated = true;
    Show(again);
    EXPECT_EQ(Words(), "once");
}

TEST_F(WordsDeviceTest, LayersEndTexts)
{
    Layer outer, inner;
    outer.name = "outer";
    inner.name = "inner";
    Show(RunOf(U"none", {0, 0}));
    device_.BeginLayer(outer);
    Show(RunOf(U"one", {0, 0}));
    device_.BeginLayer(inner);
    Show(RunOf(U"two", {0, 0}));
    device_.EndLayer();
    Show(RunOf(U"three", {0, 0}));
    device_.EndLayer();
    EXPECT_EQ(Words(), "none||one||two||three");
    EXPECT_EQ(texts_.at(0).layer, nullptr);
    EXPECT_EQ(texts_.at(1).layer, &outer);
    EXPECT_EQ(texts_.at(2).layer, &inner);
    EXPECT_EQ(texts_.at(3).layer, &outer);
}

TEST_F(WordsDeviceTest, TheBoxIsAroundTheCharacters)
{
    Begin();
    Show(RunOf(U"ab  ", {20, 50}));
    Show(RunOf(U"c", {20, 38}));
    (void)Words();
    const Box box = texts_.at(0).box;
    EXPECT_DOUBLE_EQ(box.left, 20);
    EXPECT_DOUBLE_EQ(box.right, 30);
    EXPECT_DOUBLE_EQ(box.bottom, 36);
    EXPECT_DOUBLE_EQ(box.top, 58);
}

TEST_F(WordsDeviceTest, CountsWhatMeansNoCharacter)
{
    Begin();
    Show(RunOf(U"a\uFFFD\uFFFD", {0, 0}));
    Begin();
    Show(RunOf(U"\uFFFD", {0, 0}));
    EXPECT_EQ(Words(), "a\uFFFD\uFFFD||\uFFFD");
    EXPECT_EQ(texts_.at(0).unknownCharacters, 2U);
    EXPECT_EQ(device_.UnknownCharacters(), 3U);
}

TEST_F(WordsDeviceTest, BlanksAloneAreNoText)
{
    Begin();
    Show(RunOf(U"  ", {0, 0}));
    Begin();
    Show(RunOf(U"a", {0, 100}));
    Show(RunOf(U" \u3000", {0, 88}));
    Show(RunOf(U"b", {0, 76}));
    EXPECT_EQ(Words(), "a|b");
}

// A matrix that a damaged document makes has no direction.
TEST_F(WordsDeviceTest, TextWithoutAnExtentIsSaidAllTheSame)
{
    Begin();
    Show(RunOf(U"a", {0, 0}, {0, 0, 0, 0, 0, 0}));
    Show(RunOf(U"b", {0, 0}, {0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(Words(), "a|b");
}

TEST_F(WordsDeviceTest, ALongTextIsToldAsSeveral)
{
    Begin();
    const std::u32string line(1 << 20, U'x');
    for (int i = 0; i < 20; ++i)
        Show(RunOf(line, {0, -20.0 * i}));
    (void)Words();
    EXPECT_EQ(texts_.size(), 2U);
}

} // namespace
} // namespace vxhost
