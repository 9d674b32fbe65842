// Tests the sentences about a document that was read.
#include "library/Warnings.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace vxhost
{
namespace
{

FontUse Use(const char *asked, const char *served, FontMatch match, uint64_t missingGlyphs = 0)
{
    FontUse use;
    use.asked = asked;
    use.served = served;
    use.match = match;
    use.characters = 9;
    use.missingGlyphs = missingGlyphs;
    return use;
}

using Lines = std::vector<std::string>;

TEST(Warnings, OfReportsLoseTheirFullStop)
{
    Outcome outcome;
    outcome.reports = {{1, "Patterns", "A pattern is not shown."}, {2, "Embedded. ", ""}};
    EXPECT_EQ(ListWarnings(outcome, "help"), (Lines{"A pattern is not shown", "Embedded"}));
}

TEST(Warnings, OfWhatIsNotShownSayHowMuch)
{
    Outcome outcome;
    outcome.reports = {{kVXProblemPattern, "", "patterns"},
                       {kVXProblemPostScript, "", "PostScript"},
                       {kVXProblemOperator, "", "operators"},
                       {kVXProblemBinary, "", "binary"}};
    outcome.unshown = {1, 1, 1, 1, 1};
    EXPECT_EQ(ListWarnings(outcome, "help"),
              (Lines{"operators", "1 pattern is painted in half gray", "1 placed picture is not drawn",
                     "1 fragment of embedded PostScript is passed over, what it draws is missing",
                     "1 section of binary data is passed over, a picture may be missing",
                     "1 object behind the end of a layer, before another begins, is not drawn"}));
    outcome.unshown = {2, 3, 4, 5, 6};
    EXPECT_EQ(ListWarnings(outcome, "help"),
              (Lines{"operators", "2 patterns are painted in half gray", "3 placed pictures are not drawn",
                     "4 fragments of embedded PostScript are passed over, what they draw is missing",
                     "5 sections of binary data are passed over, pictures may be missing",
                     "6 objects behind the end of a layer, before another begins, are not drawn"}));
    outcome.unshown = {0, 1, 0, 0, 0};
    EXPECT_EQ(ListWarnings(outcome, "help"),
              (Lines{"patterns", "PostScript", "operators", "binary", "1 placed picture is not drawn"}));
}

TEST(Warnings, OfADrawingLargerThanItsPageSayHowMuch)
{
    Outcome outcome;
    outcome.page.tooWide = 10.251;
    const std::string help =
        " than its room on the page: choose a larger page, a smaller margin, or drawing as the page";
    EXPECT_EQ(ListWarnings(outcome, "help"), (Lines{"the drawing is 10.26 pt wider" + help}));
    outcome.page.tooHigh = 3;
    EXPECT_EQ(ListWarnings(outcome, "help"), (Lines{"the drawing is 10.26 pt wider and 3 pt higher" + help}));
}

SpotUse Ink(const char *name, double cyan)
{
    return {name, {cyan, 0, 0, 0}, 0, 0};
}

TEST(Warnings, OfInksSayWhatAPressMakesOfThem)
{
    Outcome outcome;
    outcome.spots = {Ink("Lake", 1), Ink("Moss", 1), Ink("all", 1)};
    EXPECT_EQ(ListWarnings(outcome, "help"), Lines());
    outcome.spots = {Ink("Lake", 1), Ink("Moss", 1), Ink("Lake", 0.5), Ink("Lake", 0)};
    EXPECT_EQ(
        ListWarnings(outcome, "help"),
        (Lines{
            "spot ink \"Lake\" is mixed from process inks in 3 ways and has one plate: rename all but one"}));
    outcome.spots = {Ink("None", 1), Ink("All", 1), Ink("All", 0), Ink("", 1)};
    EXPECT_EQ(ListWarnings(outcome, "help"),
              (Lines{"a spot ink without a name is painted in process inks in PDF: name it",
                     "spot ink \"All\" is painted in process inks in PDF, where that name means every plate: "
                     "rename it",
                     "spot ink \"None\" is painted in process inks in PDF, where that name means no plate: "
                     "rename it"}));
}

TEST(Warnings, OfFontsSayWhatServesThem)
{
    Outcome outcome;
    outcome.fonts = {Use("A", "A", FontMatch::Exact), Use("B", "C", FontMatch::StandIn),
                     Use("D", "E", FontMatch::Substitute), Use("F", "", FontMatch::Missing, 9)};
    EXPECT_EQ(ListWarnings(outcome, "install it"), (Lines{"no font \"D\", drawn with \"E\": install it",
                                                          "no font \"F\", drawn as boxes: install it"}));
}

TEST(Warnings, OfFontsSayWhatTheyLack)
{
    Outcome outcome;
    outcome.fonts = {Use("A", "A", FontMatch::Exact, 2), Use("B", "C", FontMatch::StandIn, 3)};
    EXPECT_EQ(ListWarnings(outcome, "help"),
              (Lines{"font \"A\" lacks 2 of 9 characters: install one that has them",
                     "font \"C\" lacks 3 of 9 characters of \"B\": install one that has them"}));
}

TEST(Warnings, TellOfTextThatIsNotDrawn)
{
    Outcome outcome;
    outcome.undrawnTexts = 1;
    EXPECT_EQ(
        ListWarnings(outcome, "help"),
        (Lines{
            "1 text is not drawn, there was nothing to take glyphs from: read the document with its fonts"}));
    outcome.undrawnTexts = 20;
    EXPECT_EQ(ListWarnings(outcome, "help").at(0).substr(0, 26), "20 texts are not drawn, th");
}

TEST(Warnings, TellOfTextThatIsNoLine)
{
    Outcome outcome;
    outcome.placedTexts = 1;
    EXPECT_EQ(ListWarnings(outcome, "help"),
              (Lines{"1 text along a path or down a column stands character by character in the SVG, no line "
                     "to edit: type it anew in the editor"}));
    outcome.placedTexts = 2;
    EXPECT_EQ(ListWarnings(outcome, "help"),
              (Lines{"2 texts along paths or down columns stand character by character in the SVG, no line "
                     "to edit: type them anew in the editor"}));
}

TEST(Warnings, TellOfBytesThatMeanNoCharacter)
{
    Outcome outcome;
    outcome.unknownCharacters = 1;
    EXPECT_EQ(ListWarnings(outcome, "help"), (Lines{"1 character of the text means nothing in its font's "
                                                    "character set, written as U+FFFD: vx text --json "
                                                    "shows where"}));
    outcome.unknownCharacters = 20;
    EXPECT_EQ(ListWarnings(outcome, "help").at(0).substr(0, 50),
              "20 characters of the text mean nothing in their fo");
}

TEST(Warnings, TellOfWhatIsSalvaged)
{
    Outcome outcome;
    outcome.salvage.faults = 1;
    outcome.salvage.first = {{7, 3, "\"S\" wants no operands, has 1"}};
    EXPECT_EQ(ListWarnings(outcome, "help"),
              (Lines{"1 fault is left out: line 7, column 3: \"S\" wants no operands, has 1"}));
    outcome.salvage.faults = 12;
    outcome.salvage.first = {{7, 3, "a"}, {8, 3, "b"}, {9, 3, "c"}};
    outcome.salvage.isCut = true;
    outcome.fault = {50, 0, "d"};
    EXPECT_EQ(ListWarnings(outcome, "help"),
              (Lines{"12 faults are left out: line 7, column 3: a; line 8, column 3: b; line 9, column 3: c; "
                     "and so on; the drawing is cut off at line 50: d"}));
    outcome.salvage = {0, {}, true};
    outcome.fault = {};
    outcome.bytesRead = 70;
    EXPECT_EQ(ListWarnings(outcome, "help"), (Lines{"the drawing is cut off near byte 70"}));
}

TEST(Warnings, LeaveOutWhatEndedTheDocument)
{
    Outcome outcome;
    outcome.lackedFont = "F";
    outcome.reports = {{kVXProblemFont, "Fonts", "Fonts are substituted."}, {1, "Patterns", ""}};
    outcome.fonts = {Use("F", "", FontMatch::Missing), Use("D", "E", FontMatch::Substitute)};
    EXPECT_EQ(ListWarnings(outcome, "help"), (Lines{"Patterns", "no font \"D\", drawn with \"E\": help"}));
}

TEST(Warnings, OfWhatIsLeftOutSayHowMuch)
{
    EXPECT_EQ(ListOmitted({}), Lines());
    Omitted omitted;
    omitted.reports = 3;
    omitted.fonts = 2;
    EXPECT_EQ(ListOmitted(omitted),
              (Lines{"3 more problems are not told of", "2 more fonts are not told of"}));
}

TEST(Warnings, OfTheSandboxSayWhatIsLacking)
{
    const auto text = [](bool byLandlock, bool bySeccomp) {
        return UnconfinedText({byLandlock, bySeccomp, ENOSYS, EINVAL});
    };
    EXPECT_EQ(text(true, true), "");
    EXPECT_EQ(text(false, true),
              "no sandbox for files, no Landlock in this kernel (function not implemented)");
    EXPECT_EQ(text(true, false), "no sandbox for calls, no seccomp in this kernel (invalid argument)");
    EXPECT_EQ(text(false, false),
              "no sandbox for files, no Landlock in this kernel (function not implemented); nor "
              "for calls, no seccomp in this kernel (invalid argument)");
}

} // namespace
} // namespace vxhost
