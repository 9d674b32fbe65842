// What the text operators leave in the text state, and how text objects open and close.
#include "plugin/text/TextOperators.h"

#include "tests/support/CaseName.h"
#include "tests/unit/body/ParsingContext.h"
#include "tests/unit/text/TextDocument.h"

#include <gtest/gtest.h>

namespace
{

using namespace vx;
using namespace vxtest;

constexpr Fixed Points(double points)
{
    return static_cast<Fixed>(points * 65536);
}

void ExpectMatrix(const FixedMatrix &matrix, const FixedMatrix &expected)
{
    EXPECT_EQ(matrix.a, expected.a);
    EXPECT_EQ(matrix.b, expected.b);
    EXPECT_EQ(matrix.c, expected.c);
    EXPECT_EQ(matrix.d, expected.d);
    EXPECT_EQ(matrix.tx, expected.tx);
    EXPECT_EQ(matrix.ty, expected.ty);
}

class TextState : public ParsingContext
{
  protected:
    TextState()
    {
        for (int32_t &font : context.text.fonts.defaultFont)
            font = kNoFont;
    }
    ~TextState() override { TerminateTextState(&context); }

    TextObject &text = context.text.object;
};

TEST_F(TextState, StartsWithItsDefaults)
{
    EXPECT_EQ(text.fontSet[0], 1);
    EXPECT_EQ(text.fontSet[1], 2);
    EXPECT_EQ(text.fontSet[2], 2);
    EXPECT_EQ(text.openState, 2);
    EXPECT_EQ(text.pathState, 2);
    EXPECT_EQ(text.newLinePending, 1);
    EXPECT_EQ(text.kerningPending, 0);
    EXPECT_EQ(text.scaleState, 640);
    EXPECT_EQ(text.type, 111);
    EXPECT_EQ(text.renderMode, 0u);
    EXPECT_EQ(text.visible, 1);
    EXPECT_EQ(text.renderModeState, 2);
    EXPECT_EQ(text.legacySentinel, 555);
    EXPECT_EQ(text.legacyLineCount, 0);
    EXPECT_EQ(text.horizontalScale, Points(1));
    EXPECT_EQ(text.verticalScale, Points(1));
    EXPECT_EQ(text.writingScale, Points(1));
    EXPECT_EQ(text.scaleGiven, 0);
}

TEST_F(TextState, ToResetsTheObjectEvenWhenItFails)
{
    ASSERT_EQ(Interpret("0 To 1 0 0 1 5 6 7 Tp 1 Ty TM Te 3 Tr 0 5 Tk 200 Tz"), kOk);
    EXPECT_EQ(Interpret("1 2 To"), kParserBadFormat);
    EXPECT_EQ(text.type, 111);
    EXPECT_EQ(text.openState, 2);
    EXPECT_EQ(text.pathState, 2);
    EXPECT_EQ(text.usesMatrix, 0);
    EXPECT_EQ(text.usesEncoding, 0);
    EXPECT_EQ(text.visible, 1);
    EXPECT_EQ(text.renderModeState, 2);
    EXPECT_EQ(text.scaleState, 640);
    EXPECT_EQ(text.kerningPending, 0);
    EXPECT_EQ(text.kerning, 0);
    EXPECT_EQ(text.swapScales, 0);
    EXPECT_EQ(text.scaleGiven, 0);
    EXPECT_EQ(text.writingScale, Points(1));
    ExpectMatrix(text.givenMatrix, {Points(1), 0, 0, Points(-1), 0, 0});
}

TEST_F(TextState, OutlivesAnObjectInPart)
{
    ASSERT_EQ(Interpret("0 To 1 0 0 1 5 6 0 Tp /_Helvetica 12 Tf 1 Tc 2 Tw 3 Ts 2 Tr 200 50 Tz 1 Tv TO"),
              kOk);
    EXPECT_EQ(text.scaleState, 643);
    ASSERT_EQ(Interpret("0 To"), kOk);
    EXPECT_EQ(text.characterSpacing, Points(1));
    EXPECT_EQ(text.wordSpacing, Points(2));
    EXPECT_EQ(text.rise, Points(3));
    EXPECT_EQ(text.negatedRise, Points(-3));
    EXPECT_EQ(text.renderMode, 3u);
    EXPECT_EQ(text.horizontalScale, Points(2));
    EXPECT_EQ(text.verticalScale, Points(0.5));
    EXPECT_EQ(text.vertical, 1);
    EXPECT_EQ(text.scaleState, 643);
    EXPECT_EQ(text.fontSet[0], 1);
    EXPECT_EQ(text.fontSet[1], 1);
    EXPECT_EQ(text.fontSet[2], 2);
    EXPECT_STREQ(context.text.fontName, "Helvetica");
}

TEST_F(TextState, ToTakesThreeTypes)
{
    for (const auto &[operand, type] :
         {std::pair("0", 0), {"1", 1}, {"2", 2}, {"3", 111}, {"-1", 111}, {"111", 111}}) {
        EXPECT_EQ(Interpret(std::string(operand) + " To"), kOk);
        EXPECT_EQ(text.type, type) << operand;
    }
}

TEST_F(TextState, ScaleStateFollowsTheObject)
{
    ASSERT_EQ(Interpret("0 To 1 0 0 1 5 6 0 Tp /_Helvetica 12 Tf"), kOk);
    EXPECT_EQ(text.scaleState, 640);
    ASSERT_EQ(Interpret("100 Tz"), kOk);
    EXPECT_EQ(text.scaleState, 641);
    ASSERT_EQ(Interpret("TO"), kOk);
    EXPECT_EQ(text.scaleState, 643);
    ASSERT_EQ(Interpret("(A) Tx"), kOk);
    EXPECT_EQ(text.scaleState, 641);
}

TEST_F(TextState, TpSetsThePathAndFlipsTheTextMatrix)
{
    ASSERT_EQ(Interpret("0 To 1 2 3 4 5 6 7 Tp"), kOk);
    EXPECT_EQ(text.pathStart, Points(7));
    ExpectMatrix(text.pathMatrix, {Points(1), Points(2), Points(3), Points(4), Points(5), Points(6)});
    ExpectMatrix(text.lineMatrix, {Points(1), Points(2), Points(3), Points(4), Points(5), Points(6)});
    ExpectMatrix(text.textMatrix, {Points(1), Points(2), Points(-3), Points(-4), Points(5), Points(6)});
    EXPECT_EQ(text.openState, 1);
    EXPECT_EQ(text.pathState, 1);
}

struct FontCase {
    const char *name, *line;
    FileVersion version;
    double size, ascent, descent;
};

class FontSizes : public TextState, public testing::WithParamInterface<FontCase>
{
};

TEST_P(FontSizes, GiveAscentAndDescent)
{
    InitFontEncodingObject(&encoding, GetParam().version);
    ASSERT_EQ(Interpret("0 To 1 0 0 1 0 0 0 Tp"), kOk);
    ASSERT_EQ(Interpret(GetParam().line), kOk);
    EXPECT_EQ(context.text.fontSize, Points(GetParam().size));
    EXPECT_EQ(context.text.ascent, Points(GetParam().ascent));
    EXPECT_EQ(context.text.descent, Points(GetParam().descent));
    EXPECT_STREQ(context.text.fontName, "Helvetica");
}

const FontCase kFonts[] = {
    {"SevenEighthsOfTheSize", "/_Helvetica 12 Tf", 5, 12, 10.5, -1.5},
    {"FractionsOfASize", "/_Helvetica 1.5 Tf", 5, 1.5, 1.3125, -0.1875},
    {"AMacKeepsItsDescent", "/_Helvetica 12 9 -5 Tf", 5, 12, 9, -5},
    {"OthersMakeItFillTheSize", "/_Helvetica 12 9 -5 Tf", 4, 12, 9, -3},
    {"WithoutAnAscentBothFollow", "/_Helvetica 16 0 -5 Tf", 5, 16, 14, -2},
    {"TheFirstCharacterGoesWhateverItIs", "/xHelvetica 12 Tf", 5, 12, 10.5, -1.5},
};
INSTANTIATE_TEST_SUITE_P(TextOperators, FontSizes, testing::ValuesIn(kFonts), CaseName());

TEST_F(TextState, NamesOfOneCharacterAndNoneAreEmpty)
{
    ASSERT_EQ(Interpret("0 To 1 0 0 1 0 0 0 Tp /_ 12 Tf"), kOk);
    EXPECT_STREQ(context.text.fontName, "");
    ASSERT_EQ(Interpret("/_A 12 Tf / 12 Tf"), kOk);
    EXPECT_STREQ(context.text.fontName, "");
}

TEST_F(TextState, ScalesAreRatios)
{
    ASSERT_EQ(Interpret("200 50 Tz"), kOk);
    EXPECT_EQ(text.horizontalScale, Points(2));
    EXPECT_EQ(text.verticalScale, Points(0.5));
    EXPECT_EQ(text.writingScale, Points(2));
    EXPECT_EQ(text.scaleGiven, 1);
    ASSERT_EQ(Interpret("1 Tv 300 Tz"), kOk);
    EXPECT_EQ(text.horizontalScale, Points(3));
    EXPECT_EQ(text.verticalScale, Points(1));
    EXPECT_EQ(text.writingScale, Points(1));
}

TEST_F(TextState, KerningIsInFontSizesAndNegated)
{
    ASSERT_EQ(Interpret("1 5 Tk"), kOk);
    EXPECT_EQ(text.kerningPending, 0);
    EXPECT_EQ(text.kerning, 0);
    ASSERT_EQ(Interpret("0 5 Tk"), kOk);
    EXPECT_EQ(text.kerningPending, 1);
    EXPECT_EQ(text.kerning, -328) << "-0.005 is -327.68 / 65536";
    ASSERT_EQ(Interpret("2 50 Tk"), kOk);
    EXPECT_EQ(text.kerning, -328);
}

TEST_F(TextState, MirrorsWhatNobodyReads)
{
    ASSERT_EQ(Interpret("9 3 Tt 7 TA 2 Ta 1 2 3 4 5 6 TR TM Te"), kOk);
    EXPECT_EQ(text.tracking, 196) << "3 × 65536 / 1000, cut off";
    EXPECT_EQ(text.alignmentLimit, Points(7));
    EXPECT_EQ(text.alignment, 2);
    ExpectMatrix(text.resetMatrix, {Points(1), Points(2), Points(3), Points(4), Points(5), Points(6)});
    EXPECT_EQ(text.usesMatrix, 1);
    EXPECT_EQ(text.usesEncoding, 1);
    ASSERT_EQ(Interpret("-3 Tt"), kOk);
    EXPECT_EQ(text.tracking, -196);
}

TEST_F(TextState, OperandsOfTMAndTeAreNotLookedAt)
{
    EXPECT_EQ(Interpret("1 2 TM (a) Te"), kOk);
    EXPECT_EQ(text.usesMatrix, 1);
    EXPECT_EQ(text.usesEncoding, 1);
}

TEST_F(TextState, FlagsAreOneOrNothing)
{
    ASSERT_EQ(Interpret("1 Tv 1 TV"), kOk);
    EXPECT_EQ(text.vertical, 1);
    EXPECT_EQ(text.sidewaysRoman, 1);
    ASSERT_EQ(Interpret("2 Tv 0 TV"), kOk);
    EXPECT_EQ(text.vertical, 0);
    EXPECT_EQ(text.sidewaysRoman, 0);
    ASSERT_EQ(Interpret("0 Ty"), kOk);
    EXPECT_EQ(text.swapScales, 0);
    EXPECT_EQ(text.vertical, 1);
    ASSERT_EQ(Interpret("1 Ty"), kOk);
    EXPECT_EQ(text.swapScales, 1);
    EXPECT_EQ(text.vertical, 0);
}

TEST_F(TextState, TrWithAnUnknownModeTakesTheModeAway)
{
    ASSERT_EQ(Interpret("2 Tr"), kOk);
    EXPECT_EQ(text.renderMode, 3u);
    for (const char *line : {"8 Tr", "-1 Tr"}) {
        ASSERT_EQ(Interpret("2 Tr"), kOk);
        EXPECT_EQ(Interpret(line), kOk);
        EXPECT_EQ(text.renderMode, 0u);
        EXPECT_EQ(text.visible, 1);
        EXPECT_EQ(text.renderModeState, 1);
    }
}

struct PositionCase {
    const char *name, *line;
    double x, y; // where the next text goes
};

class LinePositions : public TextState, public testing::WithParamInterface<PositionCase>
{
};

TEST_P(LinePositions, AreWhereTheNextTextGoes)
{
    ASSERT_EQ(Interpret("0 To"), kOk);
    ASSERT_EQ(Interpret(GetParam().line), kOk);
    EXPECT_EQ(text.textMatrix.tx, Points(GetParam().x));
    EXPECT_EQ(text.textMatrix.ty, Points(GetParam().y));
    EXPECT_EQ(text.newLinePending, 1);
}

const PositionCase kPositions[] = {
    {"TdMovesTheLineStart", "1 0 0 1 10 20 0 Tp 5 -7 Td", 15, 13},
    {"TdCountsFromTheLastLineStart", "1 0 0 1 10 20 0 Tp 5 -7 Td 5 -7 Td", 20, 6},
    {"TdGoesAlongTheLineMatrix", "0 2 -2 0 10 20 0 Tp 5 -7 Td", 24, 30},
    {"TmPlacesTheText", "1 0 0 1 10 20 0 Tp 1 0 0 1 100 200 Tm", 100, 200},
    {"TdForgetsTm", "1 0 0 1 10 20 0 Tp 1 0 0 1 100 200 Tm 5 -7 Td", 15, 13},
    // The leading is written as the distance of the lines, then the shift along them.
    {"TStarGoesDownALine", "1 0 0 1 10 20 0 Tp 14 3 Tl T*", 13, 6},
    {"TStarGoesDownFromTheLastLine", "1 0 0 1 10 20 0 Tp 14 3 Tl T* T*", 16, -8},
    {"TStarGoesOnFromTd", "1 0 0 1 10 20 0 Tp 14 0 Tl 5 0 Td T*", 15, 6},
    {"ColumnsGoLeft", "1 0 0 1 10 20 0 Tp 1 Tv 14 3 Tl T*", -4, 17},
    {"TStarTakesAnyOperands", "1 0 0 1 10 20 0 Tp 14 3 Tl (a) 1 T*", 13, 6},
};
INSTANTIATE_TEST_SUITE_P(TextOperators, LinePositions, testing::ValuesIn(kPositions), CaseName());

TEST_F(TextState, ANewLineForgetsTheKerningButNotThatItWasPending)
{
    for (const char *line : {"0 5 Tk 1 2 Td", "0 5 Tk 1 0 0 1 0 0 Tm"}) {
        ASSERT_EQ(Interpret(line), kOk);
        EXPECT_EQ(text.kerning, 0) << line;
        EXPECT_EQ(text.kerningPending, 1) << line;
    }
    ASSERT_EQ(Interpret("0 5 Tk T*"), kOk);
    EXPECT_EQ(text.kerning, -328);
}

class TextObjects : public testing::TestWithParam<TextCase>
{
};

TEST_P(TextObjects, MakeTheseCalls)
{
    ExpectCalls(Document(GetParam().lines), GetParam());
}

const TextCase kObjects[] = {
    {"PointText", "0 To 1 0 0 1 0 0 0 Tp TP TO", "newpath", kVXOk},
    {"AreaText", "2 To 1 0 0 1 0 0 0 Tp TP TO", "newpath", kVXOk},
    {"PathTextKeepsItsPathInASave", "1 To 1 0 0 1 0 0 0 Tp TP TO", "gsave; grestore; newpath", kVXOk},
    {"ASecondPathEndsTheFirst", "1 To 1 0 0 1 0 0 0 Tp TP 1 0 0 1 0 0 0 Tp TP TO",
     "gsave; grestore; newpath; gsave; grestore; newpath", kVXOk},
    {"OfPointTextItDoesNot", "0 To 1 0 0 1 0 0 0 Tp TP 1 0 0 1 0 0 0 Tp TP", "", kVXOk},
    {"AnEndWithoutAnObject", "TO", "newpath", kVXOk},
    {"AnEndTakesAnyOperands", "(a) 1 TO", "newpath", kVXOk},
    {"TpWithoutAnObject", "1 0 0 1 0 0 0 Tp", "", kVXOk},
    {"TPWithoutAnObjectFails", "1 0 0 1 0 0 0 Tp TP", "", kVXBadFormat},
    {"TPOfAnUnknownTypeFails", "3 To 1 0 0 1 0 0 0 Tp TP", "", kVXBadFormat},
    {"ThePathOfATextIsKept", "1 To 1 0 0 1 0 0 0 Tp 0 0 m 9 9 l n TP TO",
     "moveto 0 0; lineto 9 9; comment path; gsave; grestore; newpath", kVXOk},
    {"AFilledTextPathIsKept", "0.5 g 2 To 1 0 0 1 0 0 0 Tp 0 0 m 9 9 l f TP TO",
     "moveto 0 0; lineto 9 9; closepath; gsave; comment path; setoverprint 0; setgray 0.5; fill; grestore; "
     "newpath",
     kVXOk},
    // The restore at the end brings back the colour from before the path, and nobody takes note of that.
    {"TheColourIsNotSentAgain", "0.5 g 1 To 1 0 0 1 10 20 0 Tp TP /_Helvetica 12 Tf 0 Tr (A) Tx TO 0 0 m f",
     "gsave; setoverprint 0; setgray 0.5; show 1 | Helvetica [12 0 0 -12] 10 20 placement 1 (A); grestore; "
     "newpath; "
     "moveto 0 0; closepath; comment path; fill",
     kVXOk},
};
INSTANTIATE_TEST_SUITE_P(TextOperators, TextObjects, testing::ValuesIn(kObjects), CaseName());

struct LineCase {
    const char *name, *line;
    Result result;
};

class TextOperands : public TextState, public testing::WithParamInterface<LineCase>
{
};

TEST_P(TextOperands, AreCounted)
{
    ASSERT_EQ(Interpret("0 To 1 0 0 1 0 0 0 Tp"), kOk);
    EXPECT_EQ(Interpret(GetParam().line), GetParam().result);
}

const LineCase kLines[] = {
    {"ToWithoutAType", "To", kParserBadFormat},
    {"ToWithAFraction", "0.5 To", kParserBadFormat},
    {"TpWithSix", "1 0 0 1 0 0 Tp", kParserBadFormat},
    {"TpWithEight", "1 0 0 1 0 0 0 0 Tp", kParserBadFormat},
    {"TpWithAString", "1 0 0 (a) 0 0 0 Tp", kParserBadFormat},
    {"TfWithThree", "/_A 12 1 Tf", kParserBadFormat},
    {"TfWithOne", "/_A Tf", kParserBadFormat},
    {"TfWithFive", "/_A 1 12 1 1 Tf", kParserBadFormat},
    {"TfWithSizeZero", "/_A 0 Tf", kParserBadFormat},
    {"TfWithANegativeSize", "/_A -1 Tf", kParserBadFormat},
    {"TfWithAString", "(A) 12 Tf", kParserBadFormat},
    {"TfWithTheOrderTurned", "12 /_A Tf", kParserBadFormat},
    {"TfBeforeTp", "0 To /_A 12 Tf", kParserBadFormat},
    {"TcWithTwo", "1 2 Tc", kParserBadFormat},
    {"TcWithNone", "Tc", kParserBadFormat},
    {"TwWithAName", "/a Tw", kParserBadFormat},
    {"TsWithTwo", "1 2 Ts", kParserBadFormat},
    {"TkWithOne", "1 Tk", kParserBadFormat},
    {"TkWithAFractionForItsFlag", "0.5 1 Tk", kParserBadFormat},
    {"TtWithTwo", "1 2 Tt", kOk},
    {"TtWithNone", "Tt", kParserBadFormat},
    {"TzWithThree", "1 2 3 Tz", kParserBadFormat},
    {"TzWithNone", "Tz", kParserBadFormat},
    {"TlWithOne", "1 Tl", kParserBadFormat},
    {"TaWithAFraction", "1.5 Ta", kParserBadFormat},
    {"TAWithNone", "TA", kParserBadFormat},
    {"TrWithTwo", "1 2 Tr", kParserBadFormat},
    {"TmWithFive", "1 0 0 1 0 Tm", kParserBadFormat},
    {"TmWithAnArray", "[1 0 0 1 0 0] Tm", kParserBadFormat},
    {"TdWithThree", "1 2 3 Td", kParserBadFormat},
    {"TRWithFive", "1 2 3 4 5 TR", kParserBadFormat},
    {"TvWithTwo", "1 1 Tv", kParserBadFormat},
    {"TVWithAFraction", "1.0 TV", kParserBadFormat},
    {"TyWithNone", "Ty", kParserBadFormat},
    {"TXChangesNothing", "1 2 TX", kOk},
    {"TYChangesNothing", "TY", kOk},
    {"TEChangesNothing", "(a) TE", kOk},
    {"TWChangesNothing", "TW", kOk},
    {"TPlusChangesNothing", "T+", kOk},
    {"TgTiTGChangeNothing", "Tg Ti TG", kOk},
    {"THyphenTakesAnyOperands", "/_A 12 Tf 1 2 T-", kOk},
};
INSTANTIATE_TEST_SUITE_P(TextOperators, TextOperands, testing::ValuesIn(kLines), CaseName());

} // namespace
