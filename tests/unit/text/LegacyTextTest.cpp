// Text of the older, one-character syntax.
//
// In all cases a block starts at (50, 60), its font is 12 points large, its lines are 14 points apart, and a character
// is 6 points wide.
#include "plugin/text/LegacyText.h"

#include "tests/support/CaseName.h"
#include "tests/unit/body/ParsingContext.h"
#include "tests/unit/text/TextDocument.h"

#include <gtest/gtest.h>

namespace
{

using namespace vx;
using namespace vxtest;

class LegacyText : public testing::TestWithParam<TextCase>
{
};

TEST_P(LegacyText, MakesTheseCalls)
{
    ExpectCalls(Document(GetParam().lines), GetParam());
}

const TextCase kBlocks[] = {
    {"EFills", "[1 0 0 1 50 60] e /_Helvetica 12 14 0 0 z (AB) t T",
     "show 1 | Helvetica [12 0 0 -12] 50 60 placement 1 (AB)", kVXOk},
    {"RStrokes", "[1 0 0 1 50 60] r /_Helvetica 12 14 0 0 z (AB) t T",
     "show 2 | Helvetica [12 0 0 -12] 50 60 placement 1 (AB)", kVXOk},
    {"AFillsAndStrokes", "[1 0 0 1 50 60] a /_Helvetica 12 14 0 0 z (AB) t T",
     "show 3 | Helvetica [12 0 0 -12] 50 60 placement 1 (AB)", kVXOk},
    {"OHidesTextWhateverItsMode", "[1 0 0 1 50 60] e [1 0 0 1 50 60] o /_Helvetica 12 14 0 0 z (AB) t T", "",
     kVXOk},
    {"LinesGoDown", "[1 0 0 1 50 60] e /_Helvetica 12 14 0 0 z (AB) t (CD) t (EF) t T",
     "show 1 | Helvetica [12 0 0 -12] 50 60 placement 1 (AB); "
     "show 1 | Helvetica [12 0 0 -12] 50 46 placement 1 (CD); "
     "show 1 | Helvetica [12 0 0 -12] 50 32 placement 1 (EF)",
     kVXOk},
    // What is down for the text is to the right on the page.
    {"LinesGoDownAlongTheMatrix", "[0 1 -1 0 50 60] e /_Helvetica 12 14 0 0 z (AB) t (CD) t T",
     "show 1 | Helvetica [0 12 12 0] 50 60 placement 1 (AB); "
     "show 1 | Helvetica [0 12 12 0] 64 60 placement 1 (CD)",
     kVXOk},
    {"CentredLines", "[1 0 0 1 50 60] e /_Helvetica 12 14 0 1 z (AB) t (CDEF) t T",
     "show 1 | Helvetica [12 0 0 -12] 44 60 placement 1 (AB); "
     "show 1 | Helvetica [12 0 0 -12] 38 46 placement 1 (CDEF)",
     kVXOk},
    {"RightAlignedLines", "[1 0 0 1 50 60] e /_Helvetica 12 14 0 2 z (AB) t (CDEF) t T",
     "show 1 | Helvetica [12 0 0 -12] 38 60 placement 1 (AB); "
     "show 1 | Helvetica [12 0 0 -12] 26 46 placement 1 (CDEF)",
     kVXOk},
    // Width 2 × (6 + 1), the spacing of the last character included.
    {"AlignmentMovesEveryCharacter", "[1 0 0 1 50 60] e 1 Tc /_Helvetica 12 14 0 1 z (AB) t T",
     "show 1 | Helvetica [12 0 0 -12] 43 60 placement 1 (A) | Helvetica [12 0 0 -12] 50 60 placement 1 (B)",
     kVXOk},
    {"OtherAlignmentsAreLeft", "[1 0 0 1 50 60] e /_Helvetica 12 14 0 -1 z (AB) t T",
     "show 1 | Helvetica [12 0 0 -12] 50 60 placement 1 (AB)", kVXOk},
    // A half-width character stands 3 to the left of the pen and 10.5 below it.
    {"Columns", "[1 0 0 1 50 60] e 1 TV /_Helvetica 12 14 0 3 z (AB) t (C) t T",
     "show 1 | Helvetica [12 0 0 -12] 47 49.5 placement 1 (A) | Helvetica [12 0 0 -12] 47 37.5 placement 1 "
     "(B); "
     "show 1 | Helvetica [12 0 0 -12] 33 49.5 placement 1 (C)",
     kVXOk},
    // Two characters of 12 points: up by 12.
    {"CentredColumns", "[1 0 0 1 50 60] e /_Helvetica 12 14 0 4 z (AB) t T",
     "show 1 | Helvetica [12 0 0 -12] 47 61.5 placement 1 (A) | Helvetica [12 0 0 -12] 47 49.5 placement 1 "
     "(B)",
     kVXOk},
    {"ColumnsThatEndAtTheOrigin", "[1 0 0 1 50 60] e /_Helvetica 12 14 0 5 z (AB) t T",
     "show 1 | Helvetica [12 0 0 -12] 47 73.5 placement 1 (A) | Helvetica [12 0 0 -12] 47 61.5 placement 1 "
     "(B)",
     kVXOk},
    // The next string starts behind the unshifted end: 50 + 12. It is centred too.
    {"AlignmentOutlivesTheBlock",
     "0 To 1 0 0 1 0 0 0 Tp TP [1 0 0 1 50 60] e /_Helvetica 12 14 0 1 z (AB) t T (CD) Tx",
     "show 1 | Helvetica [12 0 0 -12] 44 60 placement 1 (AB); "
     "show 1 | Helvetica [12 0 0 -12] 56 60 placement 1 (CD)",
     kVXOk},
    {"UntilTheModeIsWritten", "[1 0 0 1 50 60] e /_Helvetica 12 14 0 1 z (AB) t T 0 Tr (CD) Tx",
     "show 1 | Helvetica [12 0 0 -12] 44 60 placement 1 (AB); "
     "show 1 | Helvetica [12 0 0 -12] 62 60 placement 1 (CD)",
     kVXOk},
    {"OrABlockOpens",
     "[1 0 0 1 50 60] e /_Helvetica 12 14 0 1 z (AB) t T [1 0 0 1 50 60] r /_Helvetica 12 14 0 0 z (CD) t T",
     "show 1 | Helvetica [12 0 0 -12] 44 60 placement 1 (AB); "
     "show 2 | Helvetica [12 0 0 -12] 50 60 placement 1 (CD)",
     kVXOk},
    // Centring is looked at first, and the bit of right alignment, 2^30, stays in the mode.
    {"CentredAndRightAligned",
     "[1 0 0 1 50 60] e /_Helvetica 12 14 0 1 z (AB) t /_Helvetica 12 14 0 2 z (CD) t T",
     "show 1 | Helvetica [12 0 0 -12] 44 60 placement 1 (AB); "
     "show 1073741825 | Helvetica [12 0 0 -12] 44 46 placement 1 (CD)",
     kVXOk},
    {"ALineWithoutAFontTakesItsPlace", "[1 0 0 1 50 60] e (AB) t /_Helvetica 12 14 0 0 z (CD) t T",
     "show 1 | Helvetica [12 0 0 -12] 50 46 placement 1 (CD)", kVXOk},
    {"ALineWithoutAStringTakesItsPlace", "[1 0 0 1 50 60] e /_Helvetica 12 14 0 0 z t 5 t (CD) t T",
     "show 1 | Helvetica [12 0 0 -12] 50 32 placement 1 (CD)", kVXOk},
    {"OperandsBelowTheStringDoNotCount", "[1 0 0 1 50 60] e /_Helvetica 12 14 0 0 z 1 2 /x (AB) t T",
     "show 1 | Helvetica [12 0 0 -12] 50 60 placement 1 (AB)", kVXOk},
    {"TheEndOfABlockStartsToCountAgain", "[1 0 0 1 50 60] e /_Helvetica 12 14 0 0 z (AB) t T (CD) t",
     "show 1 | Helvetica [12 0 0 -12] 50 60 placement 1 (AB); "
     "show 1 | Helvetica [12 0 0 -12] 62 60 placement 1 (CD)",
     kVXOk},
    {"KerningMovesALineThoughItIsNoLongerPending",
     "[1 0 0 1 50 60] e /_Helvetica 12 14 0 0 z (AB) t 0 500 Tk (CD) t T",
     "show 1 | Helvetica [12 0 0 -12] 50 60 placement 1 (AB); "
     "show 1 | Helvetica [12 0 0 -12] 44 46 placement 1 (CD)",
     kVXOk},
    {"ZIsIgnored", "(x) 1 2 Z", "", kVXOk},
    {"TheEndOfNoBlock", "1 (a) T", "", kVXOk},
    {"WithoutAMatrixTextGoesOnTurnedOver", "[1 0 0 1 50 60] e /_Helvetica 12 14 0 0 z (AB) t T r (CD) t T",
     "show 1 | Helvetica [12 0 0 -12] 50 60 placement 1 (AB); "
     "show 2 | Helvetica [12 0 0 12] 62 60 placement 1 (CD)",
     kVXOk},
    {"AndTheNextBlockTurnsItBack", "[1 0 0 1 50 60] e /_Helvetica 12 14 0 0 z (AB) t T r T (x) a (CD) t T",
     "show 1 | Helvetica [12 0 0 -12] 50 60 placement 1 (AB); "
     "show 3 | Helvetica [12 0 0 -12] 62 60 placement 1 (CD)",
     kVXOk},
    {"AFontNeedsFiveOperands", "[1 0 0 1 50 60] e /_Helvetica 12 14 0 z", "", kVXBadFormat},
    {"AFontTakesNoSix", "[1 0 0 1 50 60] e 1 /_Helvetica 12 14 0 0 z", "", kVXBadFormat},
    {"AnAlignmentIsWhole", "[1 0 0 1 50 60] e /_Helvetica 12 14 0 0.5 z", "", kVXBadFormat},
    {"ASizeIsPositive", "[1 0 0 1 50 60] e /_Helvetica 0 14 0 0 z", "", kVXBadFormat},
};
INSTANTIATE_TEST_SUITE_P(Blocks, LegacyText, testing::ValuesIn(kBlocks), CaseName());

class LegacyState : public ParsingContext
{
  protected:
    TextObject &text = context.text.object;
};

TEST_F(LegacyState, ZReadsTheColumnFromTheAlignment)
{
    text.sidewaysRoman = 1;
    ASSERT_EQ(Interpret("/_Helvetica 12 14 99 2 z"), kOk);
    EXPECT_EQ(text.vertical, 0);
    EXPECT_EQ(text.alignment, 2);
    EXPECT_EQ(text.sidewaysRoman, 1);
    ASSERT_EQ(Interpret("/_Helvetica 12 14 99 4 z"), kOk);
    EXPECT_EQ(text.vertical, 1);
    EXPECT_EQ(text.alignment, 1);
    EXPECT_EQ(text.sidewaysRoman, 0);
    EXPECT_EQ(text.lineSpacing, 14 * kFixedOne);
    EXPECT_EQ(context.text.fontSize, 12 * kFixedOne);
    EXPECT_EQ(text.openState, kTextOpen);
}

TEST_F(LegacyState, AnOpenerKeepsTheMatrixAsWritten)
{
    ASSERT_EQ(Interpret("[1 2 3 4 5 6] e"), kOk);
    EXPECT_EQ(text.pathMatrix.c, 3 * kFixedOne);
    EXPECT_EQ(text.textMatrix.a, 1 * kFixedOne);
    EXPECT_EQ(text.textMatrix.b, 2 * kFixedOne);
    EXPECT_EQ(text.textMatrix.c, -3 * kFixedOne);
    EXPECT_EQ(text.textMatrix.d, -4 * kFixedOne);
    EXPECT_EQ(text.textMatrix.tx, 5 * kFixedOne);
    EXPECT_EQ(text.textMatrix.ty, 6 * kFixedOne);
    EXPECT_EQ(text.openState, kTextOpen);
    EXPECT_EQ(text.renderMode, 1u);
}

TEST_F(LegacyState, AnArrayOfAnotherSizeIsNotRead)
{
    ASSERT_EQ(Interpret("[1 0 0 1 5 6] e [7 7 7 7 7] e"), kOk);
    EXPECT_EQ(text.textMatrix.a, 1 * kFixedOne);
    EXPECT_EQ(text.textMatrix.tx, 5 * kFixedOne);
    EXPECT_EQ(text.textMatrix.d, 1 * kFixedOne) << "turned over once more";
}

TEST_F(LegacyState, AnOpenerWithoutAnArrayTurnsTheMatrixOver)
{
    for (const char *line : {"e", "5 r", "(x) a", "[7 7 7 7 7 7] 1 o"}) {
        ASSERT_EQ(Interpret("[1 2 3 4 5 6] e"), kOk);
        text.openState = kTextClosed;
        text.legacyLineCount = 7;
        ASSERT_EQ(Interpret(line), kOk) << line;
        EXPECT_EQ(text.pathMatrix.c, -3 * kFixedOne) << line;
        EXPECT_EQ(text.pathMatrix.ty, 6 * kFixedOne) << line;
        EXPECT_EQ(text.textMatrix.a, 1 * kFixedOne) << line;
        EXPECT_EQ(text.textMatrix.c, 3 * kFixedOne) << line;
        EXPECT_EQ(text.textMatrix.d, 4 * kFixedOne) << line;
        EXPECT_EQ(text.openState, kTextOpen) << line;
        EXPECT_EQ(text.legacyLineCount, 0) << line;
    }
}

TEST_F(LegacyState, AnArrayIsReadUpToWhatIsNoNumber)
{
    ASSERT_EQ(Interpret("[1 0 0 1 5 6] e [7 8 (a) 9 9 9] e"), kOk);
    EXPECT_EQ(text.textMatrix.a, 7 * kFixedOne);
    EXPECT_EQ(text.textMatrix.b, 8 * kFixedOne);
    EXPECT_EQ(text.textMatrix.tx, 5 * kFixedOne);
}

TEST_F(LegacyState, BuildMatrixTakesNumbersAsTheListYieldsThem)
{
    ASSERT_EQ(Interpret("[1 2 3 4 5 6]"), kOk);
    FixedMatrix matrix = {};
    EXPECT_EQ(BuildMatrix(&stack.head->array, &matrix), kOk);
    EXPECT_EQ(matrix.a, 1 * kFixedOne);
    EXPECT_EQ(matrix.ty, 6 * kFixedOne);
    EXPECT_EQ(BuildMatrix(&stack.head->array, &matrix), kParserBadFormat) << "the numbers were taken";
}

TEST_F(LegacyState, TSetsTheSentinelAndStartsCounting)
{
    text.legacySentinel = 0;
    text.legacyLineCount = 7;
    ASSERT_EQ(Interpret("T"), kOk);
    EXPECT_EQ(text.legacySentinel, 555);
    EXPECT_EQ(text.legacyLineCount, 0);
}

} // namespace
