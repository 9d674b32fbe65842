// Tests which options hold where several are said, and which formats are meant.
#include "cli/options/OutputOptions.h"

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
    std::vector<const char *> formats; // empty: refused
};

const FormatCase kFormatCases[] = {
    {"", "a.png", {"png"}}, {"", "a.Svg", {"svg"}},     {"", "a.pdf", {"pdf"}},
    {"", "a", {"pdf"}},     {"", "-", {"pdf"}},         {"", "out/", {"pdf"}},
    {"", "a.b/c", {"pdf"}}, {"", ".png", {"pdf"}}, // a hidden file without an extension
    {"", "a.jpeg", {}},     {"png", "a.jpeg", {"png"}}, {"svg,pdf", "{stem}.{ext}", {"svg", "pdf"}},
    {"svg,", "a", {}},      {",svg", "a", {}},          {"svg,svg", "a", {}},
    {"PNG", "a", {}},       {"", "a.tga", {}},          {"", "{stem}.{ext}", {"pdf"}},
    {"", "a.", {"pdf"}},    {"", "a.pdf.old", {}},      {"", "a.{number}", {"pdf"}},
};

TEST(ReadFormatsTest, ListensToTheWordThenToTheName)
{
    for (const FormatCase &row : kFormatCases) {
        if (row.formats.empty()) {
            EXPECT_THROW(ReadFormats(row.word, row.output), OptionError) << row.word << " " << row.output;
            continue;
        }
        FormatList formats;
        for (const char *name : row.formats)
            formats.push_back(FindFormat(name));
        EXPECT_EQ(ReadFormats(row.word, row.output), formats) << row.word << " " << row.output;
    }
}

OutputOptions Words(const std::vector<std::pair<const char *, const char *>> &said)
{
    OutputOptions words;
    for (const auto &[name, value] : said)
        EXPECT_TRUE(words.Set(name, value)) << name;
    return words;
}

TEST(OutputOptionsTest, AreSetByTheLongNamesOfOptions)
{
    OutputOptions words;
    EXPECT_TRUE(words.Set("pdf-x", "x3"));
    EXPECT_EQ(words.texts.Of("pdf-x"), "x3");
    for (const char *name : {"", "f", "-f", "--format", "pdfX", "output", "max-time"})
        EXPECT_FALSE(words.Set(name, "x")) << name;
}

TEST(OutputOptionsTest, LaterOnesReplaceASizeAsAWhole)
{
    const OutputOptions words = Words({{"width", "9"}, {"height", "9"}, {"box", "bbox"}, {"text", "text"}});
    EXPECT_EQ(words.OverriddenBy(Words({{"fit", "3"}, {"text", "outlines"}})),
              Words({{"fit", "3"}, {"box", "bbox"}, {"text", "outlines"}}));
    EXPECT_EQ(words.OverriddenBy(Words({{"width", "3"}})),
              Words({{"width", "3"}, {"box", "bbox"}, {"text", "text"}}));
    EXPECT_EQ(words.OverriddenBy({}), words);
}

} // namespace

} // namespace vxhost
