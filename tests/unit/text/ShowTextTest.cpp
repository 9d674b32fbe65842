// What is painted for a string, and where the next one goes.
//
// In all cases text starts at (10, 20), is 12 points large, and a character is 6 points wide.
#include "plugin/text/ShowText.h"

#include "tests/support/CaseName.h"
#include "tests/unit/text/TextDocument.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using namespace vxtest;

class ShownText : public testing::TestWithParam<TextCase>
{
};

TEST_P(ShownText, MakesTheseCalls)
{
    ExpectCalls(TextDocument(GetParam().lines), GetParam());
}

const TextCase kWholeStrings[] = {
    {"AStringIsOneRecord", "(AB) Tx", "show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (AB)", kVXOk},
    {"TheNextOneFollows", "(AB) Tx (C) Tx",
     "show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (AB); "
     "show 1 | Helvetica [12 0 0 -12] 22 20 placement 1 (C)",
     kVXOk},
    {"ANumberBehindTheStringIsIgnored", "(A) 99 Tx", "show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (A)",
     kVXOk},
    {"TjShowsToo", "(A) Tj", "show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (A)", kVXOk},
    {"TSShowsToo", "(A) TS", "show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (A)", kVXOk},
    {"TTildeShowsToo", "(A) 1 T~", "show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (A)", kVXOk},
    {"THyphenShowsAHyphen", "T- (A) Tx",
     "show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (-); "
     "show 1 | Helvetica [12 0 0 -12] 16 20 placement 1 (A)",
     kVXOk},
    {"AnEmptyStringIsShownWhereTextIs", "(A) Tx () Tx",
     "show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (A); "
     "show 1 | Helvetica [12 0 0 -12] 16 20 placement 1 ()",
     kVXOk},
    {"HexStringsAreShown", "<41 42> Tx", "show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (AB)", kVXOk},
    {"NulBytesAreShown", "(A\\000B) Tx", "show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (A\\000B)",
     kVXOk},
    // Along (0, 1): 6 points up.
    {"AQuarterTurn", "0 1 -1 0 10 20 0 Tp (A) Tx (B) Tx",
     "show 1 | Helvetica [0 12 12 0] 10 20 placement 1 (A); "
     "show 1 | Helvetica [0 12 12 0] 10 26 placement 1 (B)",
     kVXOk},
    {"TheMatrixScales", "2 0 0 3 10 20 0 Tp (A) Tx (B) Tx",
     "show 1 | Helvetica [24 0 0 -36] 10 20 placement 1 (A); "
     "show 1 | Helvetica [24 0 0 -36] 22 20 placement 1 (B)",
     kVXOk},
    // 3 points up, and down again for the position.
    {"RiseGoesUp", "3 Ts (A) Tx 0 Ts (B) Tx",
     "show 1 | Helvetica [12 0 0 -12] 10 23 placement 1 (A); "
     "show 1 | Helvetica [12 0 0 -12] 16 20 placement 1 (B)",
     kVXOk},
    // 500 thousandths of 12 points back, once.
    {"KerningMovesBack", "0 500 Tk (A) Tx (B) Tx",
     "show 1 | Helvetica [12 0 0 -12] 4 20 placement 1 (A); "
     "show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (B)",
     kVXOk},
    {"NegativeKerningMovesOn", "0 -500 Tk (A) Tx", "show 1 | Helvetica [12 0 0 -12] 16 20 placement 1 (A)",
     kVXOk},
    {"AutomaticKerningIsLeftToTheFont", "1 500 Tk (A) Tx",
     "show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (A)", kVXOk},
    {"HorizontalScaleWidens", "200 Tz (A) Tx (B) Tx",
     "show 1 | Helvetica [24 0 0 -12] 10 20 placement 1 (A); "
     "show 1 | Helvetica [24 0 0 -12] 22 20 placement 1 (B)",
     kVXOk},
    {"VerticalScaleFlattens", "200 50 Tz (A) Tx (B) Tx",
     "show 1 | Helvetica [24 0 0 -6] 10 20 placement 1 (A); "
     "show 1 | Helvetica [24 0 0 -6] 22 20 placement 1 (B)",
     kVXOk},
    {"SwappedScalesActOnTheOtherAxis", "1 Ty 200 50 Tz (A) Tx (B) Tx",
     "show 1 | Helvetica [6 0 0 -24] 10 20 placement 1 (A); "
     "show 1 | Helvetica [6 0 0 -24] 13 20 placement 1 (B)",
     kVXOk},
    {"TheFillColourComesFirst", "0.5 g (A) Tx (B) Tx",
     "setoverprint 0; setgray 0.5; show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (A); "
     "show 1 | Helvetica [12 0 0 -12] 16 20 placement 1 (B)",
     kVXOk},
    {"TheFillColourIsLoadedForStrokesToo", "0.5 g 1 G 1 Tr (A) Tx",
     "setoverprint 0; setgray 0.5; show 2 | Helvetica [12 0 0 -12] 10 20 placement 1 (A)", kVXOk},
    {"ARepeatedFontIsSetAgain", "(A) Tx /_Courier 24 Tf (B) Tx",
     "show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (A); "
     "show 1 | Courier [24 0 0 -24] 16 20 placement 1 (B)",
     kVXOk},
    {"TextAfterTheObjectIsStillShown", "TO (A) Tx",
     "newpath; show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (A)", kVXOk},
    {"ALayerThatDoesNotPrintShowsNoText", "1 2 3 0 5 6 7 8 9 10 Lb (A) Tx LB", "", kVXOk},
};
INSTANTIATE_TEST_SUITE_P(WholeStrings, ShownText, testing::ValuesIn(kWholeStrings), CaseName());

const TextCase kSpacedStrings[] = {
    // 6 + 1 a character, the last one too.
    {"CharacterSpacing", "1 Tc (AB) Tx 0 Tc (C) Tx",
     "show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (A) | Helvetica [12 0 0 -12] 17 20 placement 1 (B); "
     "show 1 | Helvetica [12 0 0 -12] 24 20 placement 1 (C)",
     kVXOk},
    // The space stands behind its own spacing: 10 + 6 + 2, then 6 more.
    {"WordSpacing", "2 Tw (A B) Tx",
     "show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (A) | Helvetica [12 0 0 -12] 18 20 placement 1 ( ) | "
     "Helvetica [12 0 0 -12] 24 20 placement 1 (B)",
     kVXOk},
    {"BothSpacings", "1 Tc 2 Tw ( A) Tx 0 Tc 0 Tw (B) Tx",
     "show 1 | Helvetica [12 0 0 -12] 12 20 placement 1 ( ) | Helvetica [12 0 0 -12] 19 20 placement 1 (A); "
     "show 1 | Helvetica [12 0 0 -12] 26 20 placement 1 (B)",
     kVXOk},
    // Twice as wide: 2 × (6 + 1).
    {"SpacingIsScaledWithTheText", "200 Tz 1 Tc (AB) Tx",
     "show 1 | Helvetica [24 0 0 -12] 10 20 placement 1 (A) | Helvetica [24 0 0 -12] 24 20 placement 1 (B)",
     kVXOk},
    {"RiseAndKerning", "1 Tc 3 Ts 0 500 Tk (AB) Tx 0 Ts (C) Tx",
     "show 1 | Helvetica [12 0 0 -12] 4 23 placement 1 (A) | Helvetica [12 0 0 -12] 11 23 placement 1 (B); "
     "show 1 | Helvetica [12 0 0 -12] 18 20 placement 1 (C)",
     kVXOk},
    {"AnEmptyStringIsPlacedNowhere", "1 Tc (A) Tx () Tx (B) Tx",
     "show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (A); "
     "show 1 | Helvetica [12 0 0 -12] 0 0 placement 0 (); "
     "show 1 | Helvetica [12 0 0 -12] 17 20 placement 1 (B)",
     kVXOk},
};
INSTANTIATE_TEST_SUITE_P(SpacedStrings, ShownText, testing::ValuesIn(kSpacedStrings), CaseName());

// Down a column: the pen starts at (10, 20), ascent 10.5 and descent -1.5. A half-width character stands 3 to the
// left of the pen and 10.5 below it, and the pen goes down 12.
const TextCase kColumns[] = {
    {"CharactersStandUpright", "1 Tv (AB) Tx (C) Tx",
     "show 1 | Helvetica [12 0 0 -12] 7 9.5 placement 1 (A) | Helvetica [12 0 0 -12] 7 -2.5 placement 1 (B); "
     "show 1 | Helvetica [12 0 0 -12] 7 -14.5 placement 1 (C)",
     kVXOk},
    // On its side a character is 6 long, its middle (10.5 - 1.5) / 2 = 4.5 left of the pen.
    {"OrLieOnTheirSide", "1 Tv 1 TV (AB) Tx",
     "show 1 | Helvetica [0 -12 -12 0] 5.5 20 placement 1 (A) | "
     "Helvetica [0 -12 -12 0] 5.5 14 placement 1 (B)",
     kVXOk},
    {"SpacingGoesDown", "1 Tv 1 Tc 2 Tw (A B) Tx",
     "show 1 | Helvetica [12 0 0 -12] 7 9.5 placement 1 (A) | Helvetica [12 0 0 -12] 7 -5.5 placement 1 ( ) "
     "| "
     "Helvetica [12 0 0 -12] 7 -18.5 placement 1 (B)",
     kVXOk},
    {"RiseGoesRight", "1 Tv 3 Ts (A) Tx 0 Ts (B) Tx",
     "show 1 | Helvetica [12 0 0 -12] 10 9.5 placement 1 (A); "
     "show 1 | Helvetica [12 0 0 -12] 7 -2.5 placement 1 (B)",
     kVXOk},
    {"KerningGoesUp", "1 Tv 0 500 Tk (A) Tx", "show 1 | Helvetica [12 0 0 -12] 7 15.5 placement 1 (A)",
     kVXOk},
    // The second scale acts across the column: 50 % wide, twice as long. Ascent and size count 24 points for 12.
    {"ScalesChangePlaces", "1 Tv 200 50 Tz (AB) Tx",
     "show 1 | Helvetica [6 0 0 -24] 8.5 -1 placement 1 (A) | Helvetica [6 0 0 -24] 8.5 -25 placement 1 (B)",
     kVXOk},
    {"TyWritesInColumnsToo", "0 Ty (A) Tx", "show 1 | Helvetica [12 0 0 -12] 7 9.5 placement 1 (A)", kVXOk},
    {"AnyOtherFlagIsOff", "1 Tv 2 Tv (A) Tx", "show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (A)", kVXOk},
    {"AnEmptyStringIsPlacedNowhere", "1 Tv () Tx", "show 1 | Helvetica [12 0 0 -12] 0 0 placement 0 ()",
     kVXOk},
    // The written ascent and descent: 9 below the pen, (9 - 5) / 2 left of it on the side.
    {"WrittenAscent", "/_Helvetica 12 9 -5 Tf 1 Tv (AB) Tx",
     "show 1 | Helvetica [12 0 0 -12] 7 11 placement 1 (A) | Helvetica [12 0 0 -12] 7 -1 placement 1 (B)",
     kVXOk},
    {"WrittenDescent", "/_Helvetica 12 9 -5 Tf 1 Tv 1 TV (A) Tx",
     "show 1 | Helvetica [0 -12 -12 0] 8 20 placement 1 (A)", kVXOk},
};
INSTANTIATE_TEST_SUITE_P(Columns, ShownText, testing::ValuesIn(kColumns), CaseName());

const TextCase kRefusals[] = {
    {"NoString", "Tx", "", kVXBadFormat},
    {"ANumber", "5 Tx", "", kVXBadFormat},
    {"AName", "/A Tx", "", kVXBadFormat},
    {"TwoStrings", "(A) (B) Tx", "", kVXBadFormat},
    {"ThreeOperands", "(A) 1 2 Tx", "", kVXBadFormat},
    {"BeforeTheObjectOpens", "0 To 0 Tr (A) Tx", "", kVXBadFormat},
};
INSTANTIATE_TEST_SUITE_P(Refusals, ShownText, testing::ValuesIn(kRefusals), CaseName());

TEST(ShowTextTest, FailsBeforeAFontIsSet)
{
    RecordingHost host;
    EXPECT_EQ(host.Parse(Document(std::string(kTextOpened) + "0 Tr (A) Tx")), kVXBadFormat);
    EXPECT_EQ(host.Joined(), "");
}

// The buffer holds 8192 bytes: the pieces of a hex string, the string that they make, and its terminator.
TEST(ShowTextTest, StringsMustFitTheStringBuffer)
{
    const auto document = [](int bytes) {
        constexpr int kLine = 200;
        std::string hex;
        for (; bytes > kLine; bytes -= kLine)
            hex += Repeated("41", kLine) + "\n";
        return TextDocument("<" + hex + Repeated("41", bytes) + "> Tx");
    };
    RecordingHost host;
    EXPECT_EQ(host.Parse(document(4096)), kVXBadFormat);
    EXPECT_TRUE(host.lines.empty());
    EXPECT_EQ(host.Parse(document(4095)), kVXOk);
    ASSERT_EQ(host.lines.size(), 1u);
    EXPECT_EQ(host.lines[0],
              "show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (" + std::string(4095, 'A') + ")");
}

struct ModeCase {
    const char *name, *mode, *calls;
};

class RenderModes : public testing::TestWithParam<ModeCase>
{
};

// The second string is always filled: it shows how far the first one moved the text.
TEST_P(RenderModes, PaintAndMoveTheText)
{
    RecordingHost host;
    EXPECT_EQ(host.Parse(TextDocument(std::string(GetParam().mode) + " Tr (AB) Tx 0 Tr (C) Tx")), kVXOk);
    EXPECT_EQ(host.Joined(), GetParam().calls);
    EXPECT_EQ(host.liveBlocks, 0);
}

const ModeCase kModes[] = {
    {"Fill", "0",
     "show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (AB); "
     "show 1 | Helvetica [12 0 0 -12] 22 20 placement 1 (C)"},
    {"Stroke", "1",
     "show 2 | Helvetica [12 0 0 -12] 10 20 placement 1 (AB); "
     "show 1 | Helvetica [12 0 0 -12] 22 20 placement 1 (C)"},
    {"FillAndStroke", "2",
     "show 3 | Helvetica [12 0 0 -12] 10 20 placement 1 (AB); "
     "show 1 | Helvetica [12 0 0 -12] 22 20 placement 1 (C)"},
    {"NothingDoesNotMove", "3", "show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (C)"},
    {"FillAndClip", "4",
     "show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (AB); "
     "show 1 | Helvetica [12 0 0 -12] 22 20 placement 1 (C)"},
    {"StrokeAndClip", "5",
     "show 2 | Helvetica [12 0 0 -12] 10 20 placement 1 (AB); "
     "show 1 | Helvetica [12 0 0 -12] 22 20 placement 1 (C)"},
    {"FillStrokeAndClip", "6",
     "show 3 | Helvetica [12 0 0 -12] 10 20 placement 1 (AB); "
     "show 1 | Helvetica [12 0 0 -12] 22 20 placement 1 (C)"},
    {"ClipOfAWholeStringLeavesMovingToTheHost", "7", "show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (C)"},
    {"EightIsNothing", "8", "show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (C)"},
    {"NegativeOnesAreNothing", "-1", "show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (C)"},
};
INSTANTIATE_TEST_SUITE_P(ShowText, RenderModes, testing::ValuesIn(kModes), CaseName());

TEST(ShowTextTest, WithoutARenderModeNothingIsShown)
{
    RecordingHost host;
    EXPECT_EQ(host.Parse(Document(std::string(kTextOpened) + "/_Helvetica 12 Tf (A) Tx")), kVXOk);
    EXPECT_EQ(host.Joined(), "");
}

TEST(ShowTextTest, ANewObjectNeedsItsOwnRenderMode)
{
    RecordingHost host;
    EXPECT_EQ(host.Parse(TextDocument("TO 0 To 1 0 0 1 5 5 0 Tp TP (A) Tx 8 Tr (B) Tx 0 Tr (C) Tx")), kVXOk);
    EXPECT_EQ(host.Joined(), "newpath; show 1 | Helvetica [12 0 0 -12] 5 5 placement 1 (C)");
}

// A string is measured with the widths of its font: A is 0.25 em, other characters 0.75.
TEST(ShowTextTest, WidthsAreTheHosts)
{
    RecordingHost host;
    host.widthOf = [](int16_t, int16_t character) { return character == 'A' ? 0x4000 : 0xC000; };
    EXPECT_EQ(host.Parse(TextDocument("(AB) Tx (C) Tx")), kVXOk);
    EXPECT_EQ(host.Joined(), "show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (AB); "
                             "show 1 | Helvetica [12 0 0 -12] 22 20 placement 1 (C)");
}

// With the first string of a font that is painted, all 256 codes in order.
TEST(ShowTextTest, WidthsAreFetchedOnceForEachPaintedFont)
{
    RecordingHost host;
    std::vector<int> asked;
    host.widthOf = [&asked](int16_t number, int16_t character) {
        asked.push_back(number * 256 + character);
        return 0x8000;
    };
    EXPECT_EQ(host.Parse(TextDocument("3 Tr (B) Tx /_Courier 9 Tf 1 Tr () Tx /_Helvetica 9 Tf 3 Tr (B) Tx")),
              kVXOk);
    EXPECT_EQ(asked.size(), 256u);
    EXPECT_EQ(host.Parse(TextDocument("(A) Tx 3 Tr (B) Tx 7 Tr (C) Tx 1 Tr () Tx /_Courier 9 Tf (A) Tx "
                                      "/_Helvetica 9 Tf (A) Tx")),
              kVXOk);
    ASSERT_EQ(asked.size(), 768u);
    for (int i = 0; i < 256; ++i) {
        EXPECT_EQ(asked[static_cast<size_t>(i)], 512 + i); // Courier
        EXPECT_EQ(asked[static_cast<size_t>(256 + i)], i); // the next parse knows nothing of the one before
        EXPECT_EQ(asked[static_cast<size_t>(512 + i)], 512 + i);
    }
}

TEST(ShowTextTest, WithoutMemoryForWidthsTheyAreZero)
{
    RecordingHost host;
    // Setup 3, string buffer, fonts, 4 + 2 suffixes, operands, then the width table of the first string.
    host.failAllocation = 13;
    EXPECT_EQ(host.Parse(TextDocument("(AB) Tx (C) Tx")), kVXOk);
    EXPECT_EQ(host.Joined(), "show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (AB); "
                             "show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (C)");
}

TEST(ShowTextTest, WithoutMemoryForARecordTheChainEndsThere)
{
    RecordingHost host;
    host.failAllocation = 15; // the width table, the record of B, and not that of C
    EXPECT_EQ(host.Parse(TextDocument("1 Tc (ABC) Tx (D) Tx")), kVXBadFormat);
    EXPECT_EQ(host.Joined(), "show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (A) | "
                             "Helvetica [12 0 0 -12] 17 20 placement 1 (B)");
    EXPECT_EQ(host.liveBlocks, 0);
}

class SubstitutedFonts : public testing::TestWithParam<TextCase>
{
};

TEST_P(SubstitutedFonts, AreAskedAboutOnce)
{
    RecordingHost host;
    host.record.warningsOff = 1; // this is a question, not a warning
    EXPECT_EQ(host.Parse(TextDocument(GetParam().lines)), GetParam().result);
    EXPECT_EQ(host.Joined(), GetParam().calls);
}

const TextCase kSubstitutions[] = {
    {"AMissingFont", "/_Geneva 12 Tf (A) Tx",
     "report 5; show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (A)", kVXOk},
    {"TwoMissingFonts", "/_Geneva 12 Tf (A) Tx /_Monaco 12 Tf (B) Tx",
     "report 5; show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (A); "
     "show 1 | Helvetica [12 0 0 -12] 16 20 placement 1 (B)",
     kVXOk},
    {"ASuffixIsNoSubstitution", "/_Courier-V 12 Tf (A) Tx",
     "show 1 | Courier [12 0 0 -12] 10 20 placement 1 (A)", kVXOk},
    {"TextThatIsNotPaintedIsAskedAboutToo", "/_Geneva 12 Tf 3 Tr (A) Tx", "report 5", kVXOk},
};
INSTANTIATE_TEST_SUITE_P(ShowText, SubstitutedFonts, testing::ValuesIn(kSubstitutions), CaseName());

TEST(SubstitutedFontsTest, NamesCountTo80Bytes)
{
    RecordingHost host;
    host.fontNames = {"Helvetica", std::string(80, 'n')};
    const auto show = [](size_t bytes) {
        return TextDocument("/_" + std::string(bytes, 'n') + " 12 Tf (A) Tx");
    };
    const std::string shown = " [12 0 0 -12] 10 20 placement 1 (A)";
    EXPECT_EQ(host.Parse(show(79)), kVXOk);
    EXPECT_EQ(host.Joined(), "report 5; show 1 | Helvetica" + shown);
    host.lines.clear();
    EXPECT_EQ(host.Parse(show(81)), kVXOk);
    EXPECT_EQ(host.Joined(), "show 1 | " + std::string(80, 'n') + shown);
}

TEST(SubstitutedFontsTest, ARefusalEndsTheParseAfterTheString)
{
    RecordingHost host;
    host.refuseFonts = true;
    EXPECT_EQ(host.Parse(TextDocument("/_Geneva 12 Tf (A) Tx (B) Tx")), kVXStoppedByUser);
    EXPECT_EQ(host.Joined(), "report 5; show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (A)");
}

TEST(SubstitutedFontsTest, WithoutADefaultFontTheNameGoesToTheHost)
{
    RecordingHost host;
    host.fontNames = {"Symbol"};
    EXPECT_EQ(host.Parse(TextDocument("/_Geneva 12 Tf (A) Tx (B) Tx")), kVXOk);
    // Its widths are not known.
    EXPECT_EQ(host.Joined(), "show 1 | Geneva [12 0 0 -12] 10 20 placement 1 (A); "
                             "show 1 | Geneva [12 0 0 -12] 10 20 placement 1 (B)");
}

} // namespace
