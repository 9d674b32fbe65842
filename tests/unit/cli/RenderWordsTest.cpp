// Which of the words about a picture hold, and which formats are meant.
#include "cli/RenderWords.h"

#include "cli/CommonOptions.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace vxhost
{

namespace
{

struct FormatCase {
    const char *word;
    const char *output;
    std::vector<Format> formats; // empty: refused
};

const FormatCase kFormatCases[] = {
    {"", "a.png", {Format::Png}},
    {"", "a.Svg", {Format::Svg}},
    {"", "a.pdf", {Format::Pdf}},
    {"", "a", {Format::Pdf}},
    {"", "-", {Format::Pdf}},
    {"", "out/", {Format::Pdf}},
    {"", "a.b/c", {Format::Pdf}},
    {"", ".png", {Format::Pdf}}, // a hidden file without an extension
    {"", "a.jpeg", {}},
    {"png", "a.jpeg", {Format::Png}},
    {"svg,pdf", "{stem}.{ext}", {Format::Svg, Format::Pdf}},
    {"svg,", "a", {}},
    {",svg", "a", {}},
    {"svg,svg", "a", {}},
    {"PNG", "a", {}},
};

TEST(ReadFormatsTest, ListensToTheWordThenToTheName)
{
    for (const FormatCase &row : kFormatCases) {
        if (row.formats.empty())
            EXPECT_THROW(ReadFormats(row.word, row.output), UsageError) << row.word << " " << row.output;
        else
            EXPECT_EQ(ReadFormats(row.word, row.output), row.formats) << row.word << " " << row.output;
    }
}

RenderWords Words(const std::vector<std::pair<const char *, const char *>> &said)
{
    RenderWords words;
    for (const auto &[name, value] : said)
        EXPECT_TRUE(words.Set(name, value)) << name;
    return words;
}

TEST(RenderWordsTest, AreSetByTheLongNamesOfOptions)
{
    RenderWords words;
    EXPECT_TRUE(words.Set("pdf-x", "x3"));
    EXPECT_EQ(words.pdfX, "x3");
    for (const char *name : {"", "f", "-f", "--format", "pdfX", "output"})
        EXPECT_FALSE(words.Set(name, "x")) << name;
}

TEST(RenderWordsTest, LaterOnesReplaceASizeAsAWhole)
{
    const RenderWords words = Words({{"width", "9"}, {"height", "9"}, {"box", "bbox"}, {"text", "text"}});
    EXPECT_EQ(words.OverriddenBy(Words({{"fit", "3"}, {"text", "outlines"}})),
              Words({{"fit", "3"}, {"box", "bbox"}, {"text", "outlines"}}));
    EXPECT_EQ(words.OverriddenBy(Words({{"width", "3"}})),
              Words({{"width", "3"}, {"box", "bbox"}, {"text", "text"}}));
    EXPECT_EQ(words.OverriddenBy({}), words);
}

struct MeantCase {
    const char *name, *value;
    std::vector<Format> formats;
    bool isMeant;
};

const MeantCase kMeantCases[] = {
    {"box", "0,0,1,1", {Format::Svg}, true},
    {"dpi", "72", {Format::Png}, true},
    {"dpi", "72", {Format::Pdf, Format::Svg}, false},
    {"dpi", "72", {Format::Pdf, Format::Png}, true},
    {"pdf-x", "x1a", {Format::Png}, false},
    {"pdf-x", "none", {Format::Png}, false},
    {"overprint", "simulate", {Format::Pdf}, false},
    {"text", "text", {Format::Svg}, true},
    {"profile", "none", {Format::Svg}, true},
    {"profile", "fogra39", {Format::Pdf}, false}, // nothing converts colours
    {"profile", "fogra39", {Format::Pdf, Format::Png}, true},
};

TEST(RenderWordsTest, MeanSomethingForSomeFormats)
{
    for (const MeantCase &row : kMeantCases) {
        const RenderWords words = Words({{row.name, row.value}});
        if (row.isMeant)
            EXPECT_NO_THROW(words.CheckMeant(row.formats)) << row.name;
        else
            EXPECT_THROW(words.CheckMeant(row.formats), UsageError) << row.name;
    }
    const Format pdf[] = {Format::Pdf};
    EXPECT_NO_THROW(Words({{"profile", "fogra39"}, {"pdf-x", "x3"}}).CheckMeant(pdf));
    EXPECT_THROW(Words({{"profile", "fogra39"}, {"pdf-x", "none"}}).CheckMeant(pdf), UsageError);
}

} // namespace

} // namespace vxhost
