// The names of fonts that a document asks for.
#include "host/fonts/FontNameScan.h"

#include "tests/support/CaseName.h"

#include <gtest/gtest.h>

namespace vxhost
{
namespace
{

std::vector<AskedFont> Scan(const std::string &text)
{
    std::string error;
    return ScanFontNames(*Document::FromMemory(std::as_bytes(std::span(text)), &error));
}

// As in "Helvetica Times-Roman*1": a star for a re-encoded font, and the script's number where it is said.
std::string Names(const std::vector<AskedFont> &fonts)
{
    std::string text;
    for (const AskedFont &font : fonts) {
        text += (text.empty() ? "" : " ") + font.name + (font.isReencoded ? "*" : "");
        if (font.script)
            text += std::to_string(static_cast<int>(*font.script));
    }
    return text;
}

const struct ScanCase {
    const char *name;
    const char *text;
    const char *names;
} kCases[] = {
    {"SetFont", "/_Helvetica 12 Tf", "Helvetica"},
    {"SetFontWithAscentAndDescent", "/_Helvetica 12 10.5 -1.5 Tf", "Helvetica"},
    {"LegacySetFont", "/_Times-Roman 12 14.5 0 1 z", "Times-Roman"},
    {"OperandsOnSeveralLines", "/_Helvetica\r12\rTf", "Helvetica"},
    {"EachNameOnce", "/_A 1 Tf\n/_B 2 Tf\n/_A 3 Tf", "A B"},
    {"TheNameBeforeTheOperatorCounts", "/_Gone /_Kept 12 Tf", "Kept"},
    {"OtherOperatorsAskForNothing", "/Name 1 Bg\n/Name 12 Tx", ""},
    {"AStringEndsTheSearch", "/_A (text) 12 Tf", ""},
    {"ANameBehindAString", "(a / b) Tx /_A 12 Tf", "A"},
    {"ASlashAlone", "/ 12 Tf", ""},
    {"TheEndOfTheData", "/_A 12", ""},
    {"OnlyAName", "/_A", ""},
    {"Reencoded", "/_Foo /Helvetica 0 0 0 TZ", "Foo*0"},
    {"ReencodedWithAnEncoding", "/_Foo /Helvetica 0 0 1 [39/quotesingle 96/grave] TZ", "Foo*0"},
    {"ReencodedJapanese", "/_Ryumin-Light-83pv-RKSJ-H /Ryumin-Light 0 1 0 TZ", "Ryumin-Light-83pv-RKSJ-H*1"},
    {"AScriptBeyondTheFour", "/_Foo /Bar 0 9 0 TZ", "Foo*"},
    {"ReencodedWithoutItsUnderline", "/Foo /Bar 0 0 0 TZ", "Foo*0"},
    {"SetAndReencoded", "/_Foo /Bar 0 0 0 TZ /_Foo 12 Tf", "Foo*0"},
};

class FontNames : public testing::TestWithParam<ScanCase>
{
};

TEST_P(FontNames, AreFound)
{
    EXPECT_EQ(Names(Scan(GetParam().text)), GetParam().names);
}

INSTANTIATE_TEST_SUITE_P(FontNameScan, FontNames, testing::ValuesIn(kCases), vxtest::CaseName());

TEST(FontNameScanTest, ALongNameIsCutAsThePluginCutsIt)
{
    const std::vector<AskedFont> fonts = Scan("/_" + std::string(200, 'x') + " 12 Tf");
    ASSERT_EQ(fonts.size(), 1u);
    EXPECT_EQ(fonts[0].name, std::string(80, 'x'));
}

TEST(FontNameScanTest, ManyNamesAreBounded)
{
    std::string text;
    for (int i = 0; i < 1000; ++i)
        text += "/_F" + std::to_string(i) + " 12 Tf\n";
    EXPECT_EQ(Scan(text).size(), kMaxAskedFonts);
}

// A scan that went from every slash to the end would take hours.
TEST(FontNameScanTest, ManySlashesTakeLinearTime)
{
    EXPECT_TRUE(Scan(std::string(size_t{4} << 20, '/')).empty());
}

} // namespace
} // namespace vxhost
