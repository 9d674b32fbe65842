// How much a drawing shows that is not drawn.
#include "host/reading/Unshown.h"

#include "tests/unit/reading/PluginReading.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <ostream>
#include <span>
#include <string>
#include <string_view>

namespace vxhost
{

void PrintTo(const Unshown &unshown, std::ostream *to)
{
    *to << unshown.patterns << " patterns, " << unshown.placedPictures << " placed pictures, "
        << unshown.postscript << " fragments, " << unshown.binary << " binary sections, "
        << unshown.betweenLayers << " between layers";
}

namespace
{

const std::string kComments =
    "%!PS-Tavro-3.0\n%%BoundingBox: 0 0 100 100\n%VX5_FileFormat 3\n%%EndComments\n";
const std::string kHeader = kComments + "%%BeginSetup\n%%EndSetup\n";
const std::string kPlaced = "%VX5_BeginPlace\n1 0 0 1 k\n%VX5_EndPlace\n";
const std::string kBinary = "%%BeginBinary: 3\n(((\n%%EndBinary\n";
const std::string kPaint = "0 0 m 9 0 L f\n", kDraw = "0 0 m 9 0 L S\n";

Unshown CountOf(std::string_view text, int version = 3, const Blanks &blanks = {})
{
    std::string error;
    const auto document = Document::FromMemory(std::as_bytes(std::span(text)), &error);
    return CountUnshown(*document, text, version, blanks);
}

Unshown CountOfBody(const std::string &body)
{
    return CountOf(kHeader + body + "%%EOF\n");
}

struct Case {
    const char *name;
    std::string body;
    Unshown count;
};

const Case kCases[] = {
    {"Nothing", "0 g " + kPaint, {}},
    {"OnePattern", "(Dots) 0 0 1 p " + kPaint + kPaint, {1, 0, 0, 0}},
    {"OneNameTwice", "(Dots) p " + kPaint + "0 g " + kPaint + "(Dots) P " + kDraw, {1, 0, 0, 0}},
    {"TwoNames", "(Dots) p (Bricks) P 0 0 m 9 0 L b\n", {2, 0, 0, 0}},
    {"TheFirstStringIsTheName", "(a) (b) p f (a) (c) p f\n", {1, 0, 0, 0}},
    {"AnEscapedName", "(a\\(b) p f (a\\050b) p f\n", {1, 0, 0, 0}},
    {"AHexName", "<4142> p f (AB) p f <41\n43> p f\n", {2, 0, 0, 0}},
    {"NoName", "1 2 p f 3 4 p f () p f\n", {1, 0, 0, 0}},
    {"OperandsOfAnotherLine", "(Dots)\n[1 0 0 1 0 0]\np\nf\n", {1, 0, 0, 0}},
    {"OperandsOfAnotherOperator", "(a) Ln p f (b) Ln p f\n", {1, 0, 0, 0}},
    {"UnusedOnes", "(a) p (b) P 0.5 g 0.5 G (c) p 0 0 0 1 k (d) P 0 0 0 1 K " + kPaint + kDraw, {}},
    {"AFillOfAStroke", "(a) P 0 g " + kPaint + "0 G (b) p " + kDraw, {}},
    {"ASpotInkAfterIt", "(a) p 0 0 0 1 (Lake) 0 x f (a) P 0 0 0 1 (Lake) 0 X S\n", {}},
    {"TextInOne", "(a) p (b) P 0 To (text) Tx TO\n", {1, 0, 0, 0}},
    {"InAString", "(p f ` ~) Ln (%VX5_BeginPlace) Ln\n", {}},
    {"InAComment", "% (a) p f `\n0 g % (a) p f `\n % %VX5_BeginPlace\n", {}},
    {"InHexData", "<4a % (a) p f\n4b> Ln f\n", {}},
    {"InOtherWords", "/p f pp f up `` ~~ x` f\n", {}},
    {"Pictures", kPlaced + kPaint + kPlaced, {0, 2, 0, 0}},
    {"WhatAPictureIsMadeOf",
     "%VX5_BeginPlace\n(a) p f ` ~\n%VX5_BeginPlace\n%%PageTrailer\n%VX5_EndPlace\nf\n",
     {0, 1, 0, 0}},
    {"APictureWithoutAnEnd", "%VX5_BeginPlace\n(a) p f\n", {0, 1, 0, 0}},
    {"APictureBehindBlanks", " " + kPlaced + "x%VX5_BeginPlace\n", {}},
    {"BinaryData",
     kBinary + kPaint + kBinary + "%%BeginBinary: 3\n%%BeginBinary: 3\n%VX5_BeginPlace\n",
     {0, 0, 0, 3}},
    // The end of the data ends the picture too.
    {"BinaryDataOfAPicture", "%VX5_BeginPlace\n" + kBinary + "(a) p f\n" + kPlaced, {1, 2, 0, 1}},
    {"CropMarks", "%VX3_BeginCrops\n(a) p f ` ~\n%VX3_EndCrops\n(a) p f\n", {}},
    {"BehindCropMarks", "%VX3_BeginCrops\n%VX3_EndCrops\n" + kPlaced + "(a) p f\n", {1, 1, 0, 0}},
    {"Fragments", "1 ` 2 ~ `\n" + kPaint + "~\n", {0, 0, 2, 0}},
    {"AFragmentOfAFragment", "` ` ~ ~ `\n", {0, 0, 2, 0}},
    {"AnEndOfNoFragment", "~ ` ~ ~\n", {0, 0, 3, 0}},
    {"BehindTheEnd", "%%PageTrailer\n(a) p f ` ~\n" + kPlaced + kBinary, {}},
    {"AnEndWithinASection", "%VX5_BeginPlace\n%%EOF\n%VX5_EndPlace\n" + kBinary + "(a) p f\n", {0, 1, 0, 0}},
};

TEST(Unshown, IsCountedAsTheInterpreterReads)
{
    for (const auto &[name, body, count] : kCases) {
        EXPECT_EQ(CountOfBody(body), count) << name;
        std::string returns = kHeader + body + "%%EOF\n";
        std::ranges::replace(returns, '\n', '\r');
        EXPECT_EQ(CountOf(returns), count) << name;
    }
}

// A line that is cut after 499 bytes begins anew.
TEST(Unshown, IsFoundInTheRestOfALongLine)
{
    EXPECT_EQ(CountOfBody(std::string(499, ' ') + kPlaced), (Unshown{0, 1, 0, 0}));
    EXPECT_EQ(CountOfBody(std::string(498, ' ') + kPlaced), Unshown());
    EXPECT_EQ(CountOfBody("(a)" + std::string(495, ' ') + "xp f\n"), (Unshown{1, 0, 0, 0}));
}

TEST(Unshown, IsNothingBeforeTheSetupEnds)
{
    const std::string all = "(a) p f ` ~\n" + kPlaced + kBinary;
    EXPECT_EQ(CountOf(kComments + all + "%%BeginSetup\n" + all + "%%EndSetup\n" + kPaint), Unshown());
    EXPECT_EQ(CountOf(kComments + "%%BeginSetup\n%%EndSetup\n" + all), (Unshown{1, 1, 1, 1}));
    EXPECT_EQ(CountOf(kComments + all), Unshown());
    // Version 2 has no definitions, and is read from behind its setup section.
    EXPECT_EQ(CountOf(kComments + "%%BeginSetup\n" + all + "%%EndSetup\n" + all, 2), (Unshown{1, 1, 1, 1}));
}

TEST(Unshown, IsNothingOfWhatIsLeftOut)
{
    const std::string document = kHeader + "(a) p f\n(b) p f\n";
    Blanks blanks;
    const ByteRange place = {kHeader.size() + 8, kHeader.size() + 13};
    EXPECT_EQ(CountOf(document), (Unshown{2, 0, 0, 0}));
    blanks.Add(std::span(&place, 1));
    EXPECT_EQ(CountOf(document, 3, blanks), (Unshown{1, 0, 0, 0}));
}

TEST(Unshown, HasItsMostPatterns)
{
    std::string body;
    for (size_t i = 0; i < Unshown::kMostPatterns + 1; ++i)
        body += "(" + std::to_string(i) + ") p f\n";
    EXPECT_EQ(CountOfBody(body), (Unshown{Unshown::kMostPatterns, 0, 0, 0}));
}

TEST(Unshown, IsLookedForInEachPiece)
{
    const std::string_view comment = "%VX5_BeginPlace";
    for (const size_t before : {size_t{0}, Document::kReadAtOnce - comment.size(), Document::kReadAtOnce - 1,
                                Document::kReadAtOnce, 2 * Document::kReadAtOnce - 7}) {
        std::string text = std::string(before, '%').append(comment);
        std::string error;
        const auto holds = [&] {
            const auto document = Document::FromMemory(std::as_bytes(std::span(text)), &error);
            return MayHoldPlacedPicture(*document, text);
        };
        EXPECT_TRUE(holds()) << before;
        text.pop_back();
        EXPECT_FALSE(holds()) << before;
    }
}

class UnshownReading : public vxtest::PluginReading
{
  protected:
    static Outcome Look(const std::string &bytes, bool salvage = false)
    {
        std::string error;
        const auto document = Document::FromMemory(std::as_bytes(std::span(bytes)), &error);
        ReadingOptions options;
        options.salvage = salvage;
        return Reading(installation_, *document, options).Look();
    }
};

TEST_F(UnshownReading, TellsWhatThePluginReportsAndWhatItDoesNot)
{
    const std::string all = "(a) p " + kPaint + "(b) p " + kPaint + "` ~\n" + kBinary;
    EXPECT_EQ(Look(kHeader + all + "%%EOF\n").unshown, (Unshown{2, 0, 1, 1}));
    EXPECT_EQ(Look(kHeader + all + kPlaced + "%%EOF\n").unshown, (Unshown{2, 1, 1, 1}));
    EXPECT_EQ(Look(kHeader + kPlaced + kPaint + "%%EOF\n").unshown, (Unshown{0, 1, 0, 0}));
    EXPECT_EQ(Look("From: me\n\n" + kHeader + kPlaced + all + "%%EOF\n").unshown, (Unshown{2, 1, 1, 1}));
}

struct BetweenCase {
    const char *name;
    std::string body;
    uint64_t count;
    uint64_t calls = 0; // that this takes, where they are not as many
};

const std::string kBegin = "1 1 1 1 0 0 1 79 128 255 Lb (Layer) Ln\n";
const std::string kLayer = kBegin + kPaint + "LB\n";

const std::string kText = "0 To 1 0 0 1 0 0 0 Tp TP /_Helvetica 9 Tf ";

const BetweenCase kBetweenCases[] = {
    {"Nothing", kPaint + kLayer + kLayer, 0},
    {"Colours", kLayer + "1 0 0 0 k 2 w 0 O\n" + kLayer + "q Q u U\n", 0},
    {"Paths", kLayer + kPaint + kDraw + kLayer + "0 0 m 9 0 L 9 9 L b\n", 3, 4},
    {"OnOneLine", kBegin + kPaint + "LB " + kPaint + "1 1 1 1 0 0 1 79 128 255 Lb " + kPaint + "LB " + kDraw,
     2},
    {"PathsThatAreNotPainted", kLayer + "0 0 m 9 0 L n 0 0 m 9 0 L (N) * f S\n", 0},
    {"APathOverLines", kLayer + "0 0\nm\n9 0 L\nf\n", 1},
    {"ACompoundPath", kLayer + "*u 0 0 m 9 0 L 9 9 L f 1 1 m 2 1 L 2 2 L f *U\n*u 0 0 m 9 0 L n *U\n", 1},
    {"Texts",
     kLayer + kText + "0 Tr (ab) Tx (cd) Tx TO\n" + kText + "2 Tr (ab) Tx () Tx TO\n" + kText +
         "0 Tr () Tx TO\n" + kText + "3 Tr (ab) Tx TO\n" + kText + "7 Tr (ab) Tx TO\n" + kText +
         "(ab) Tx TO\n",
     2, 6},
    {"BehindTheLastLayer", kLayer + kPaint + "%%PageTrailer\n" + kPaint, 1},
    {"BehindAnInnerLayer", kBegin + kPaint + kLayer + kPaint + "LB\n", 1},
    {"InASectionThatIsPassedOver", kLayer + "%VX5_BeginPlace\n" + kPaint + "%VX5_EndPlace\n" + kDraw, 1},
    {"OfALineThatIsCut", kLayer + std::string(480, ' ') + "0 0 m 9 0 L f 0 0 m 9 0 L f\n", 2},
    {"BehindAnEndOfNoLayer", "LB\n" + kPaint, 1},
    {"InTheOutermostLayer", kBegin + kPaint + kBegin + kPaint + "LB LB\n" + kLayer, 0},
};

TEST_F(UnshownReading, TellsWhatIsBetweenLayers)
{
    const std::string start = kHeader + "0 g 0 G\n";
    for (const auto &[name, body, count, calls] : kBetweenCases) {
        const Outcome outcome = Look(start + body + "%%EOF\n");
        EXPECT_EQ(outcome.result, kVXOk) << name;
        EXPECT_EQ(outcome.unshown, (Unshown{0, outcome.unshown.placedPictures, 0, 0, count})) << name;
        // That much more is painted where no layer ends.
        std::string open = body;
        for (size_t at = open.find("LB"); at != std::string::npos; at = open.find("LB"))
            open.replace(at, 2, "q Q");
        const Counts whole = Look(start + open + "%%EOF\n").counts, &drawn = outcome.counts;
        EXPECT_EQ(whole.fills + whole.strokes + whole.shows - drawn.fills - drawn.strokes - drawn.shows,
                  calls == 0 ? count : calls)
            << name;
    }
}

TEST_F(UnshownReading, TellsOfNothingBetweenLayersThatIsLeftOutOrNotRead)
{
    const std::string faulty =
        kHeader + "0 g 0 G\n" + kLayer + kPaint + "0 0 m 9 0 L 1 f\n" + kPaint + kLayer + kPaint + "%%EOF\n";
    EXPECT_EQ(Look(faulty).unshown.betweenLayers, 1U);
    EXPECT_EQ(Look(faulty, true).unshown.betweenLayers, 3U);
    EXPECT_EQ(Look("From: me\n\n" + faulty, true).unshown.betweenLayers, 3U);
}

// The fill and the picture behind the fault are not read.
TEST_F(UnshownReading, GoesNoFurtherThanItIsRead)
{
    const std::string faulty = "From: me\n\n" + kHeader + kPlaced + "(a) p " + kPaint + "1 S\n" + kPlaced +
                               "(b) p " + kPaint + "%%EOF\n";
    const Outcome outcome = Look(faulty);
    EXPECT_NE(outcome.result, kVXOk);
    EXPECT_EQ(outcome.unshown, (Unshown{1, 1, 0, 0}));
    EXPECT_EQ(Look(faulty, true).unshown, (Unshown{2, 2, 0, 0}));

    std::string cut = kHeader + kPlaced; // more faults than are left out: the drawing ends at one
    for (int i = 0; i < 101; ++i)
        cut += "1 S\n";
    const Outcome salvaged = Look(cut + kPlaced + "(b) p " + kPaint + "%%EOF\n", true);
    EXPECT_TRUE(salvaged.salvage.isCut);
    EXPECT_EQ(salvaged.unshown, (Unshown{0, 1, 0, 0}));
}

} // namespace
} // namespace vxhost
