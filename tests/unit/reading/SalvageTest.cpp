// What is malformed is left out, and nothing else: the rest makes the calls that it would make alone.
#include "host/reading/Blanks.h"
#include "host/trace/TraceLines.h"
#include "tests/unit/host/RecordingDevice.h"
#include "tests/unit/reading/PluginReading.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vxhost
{
namespace
{

const std::string kHeader = "%!PS-Tavro-3.0\n%%BoundingBox: 0 0 100 100\n%VX5_FileFormat 3\n%%EndComments\n"
                            "%%BeginSetup\n%VX5_BeginGradient: (g)\n";
const std::string kEndSetup = "%%EndSetup\n0 G 0 g\n"; // nothing is painted before a colour
const std::string kEnd = "%%EOF\n";

void AddLine(void *to, std::string_view line)
{
    static_cast<std::string *>(to)->append(line).append("\n");
}

class SalvageTest : public vxtest::PluginReading
{
  protected:
    // Returns the calls that the plug-in makes of the document, with layers and their like between them if asked.
    std::string Trace(const std::string &bytes, bool salvage, double seconds = 0, bool withStructure = false)
    {
        std::string error, calls;
        const auto document = Document::FromMemory(std::as_bytes(std::span(bytes)), &error);
        ReadingOptions options;
        options.salvage = salvage;
        options.salvageSeconds = seconds;
        TraceLines writer({AddLine, &calls});
        outcome_ = Reading(installation_, *document, options).Trace(writer, withStructure);
        return calls;
    }
    Outcome outcome_;
};

struct SalvageCase {
    const char *name;
    std::string body;
    std::string rest; // what it is without its faults
    uint32_t faults;
    std::string setup = {};
    std::string restOfSetup = {};
};

const SalvageCase kCases[] = {
    {"AnOperator", "0 0 m 1 1 l S\n1 S\n5 5 m 6 6 l S\n", "0 0 m 1 1 l S\n5 5 m 6 6 l S\n", 1},
    {"OneOfALine", "0 0 m 1 l 2 2 l S\n", "0 0 m 2 2 l S\n", 1},
    {"OperandsOfOtherLines", "0 0 m\n[1\n2] % 1 w\n\n(a)\nd 1 1 l S\n", "0 0 m\n % 1 w\n\n\n 1 1 l S\n", 1},
    {"AStringWithoutAnEnd", "0 0 m (1 1 l S\n2 2 l S\n", "0 0 m\n2 2 l S\n", 1},
    {"HexData", "0 0 m <4a\n4 > 1 1 l S\n2 2 l S\n", "0 0 m\n2 2 l S\n", 1},
    {"HexDataThatGoesOn", "0 0 m <4a 4\n4b> 2 2 l S\n", "0 0 m\n4b 2 2 l S\n", 2}, // ">" is the second
    {"TooManyOperands",
     "0 0 m\n" +
         [] {
             std::string lines;
             for (int i = 0; i < 51; ++i)
                 lines += "1 2 3 4 5 6 7 8 9 10\n";
             return lines;
         }() +
         "w 2 2 l S\n",
     "0 0 m 2 3 4 5 6 7 8 9 10 w 2 2 l S\n", 1},
    {"Several", "S 1 S ) S\n1 S\n0 0 m 1 1 l S\n", "S S\n0 0 m 1 1 l S\n", 3},
    {"AtTheEnd", "0 0 m 1 1 l S\n1 2", "0 0 m 1 1 l S\n", 0},
    {"WhatNoTableExplains", "0 0 m (a) Tx 1 1 l S\n", "0 0 m 1 1 l S\n", 1},
    {"InALongLine", std::string(490, ' ') + "0 0 m 1 1 l S 1 S" + std::string(490, ' ') + "2 2 m 3 3 l S\n",
     "0 0 m 1 1 l S\n2 2 m 3 3 l S\n", 1},
    {"InTheSetupSection", "Bb 1 (g) 0 0 1 0 1 0 0 1 0 0 Bg 1 0 0 1 0 0 Bm 0 BB\n",
     "Bb 1 (g) 0 0 1 0 1 0 0 1 0 0 Bg 1 0 0 1 0 0 Bm 0 BB\n", 2,
     "(g) 0 2 Bd\n0 0 50 0 Bs\n1 Bs\n2 %_Bs or not (\n1 0 50 100 Bs\nBD\n",
     "(g) 0 2 Bd\n0 0 50 0 Bs\n1 0 50 100 Bs\nBD\n"},
};

TEST_F(SalvageTest, DrawsTheRest)
{
    for (const auto &[name, body, rest, faults, setup, restOfSetup] : kCases) {
        const std::string document = kHeader + setup + kEndSetup + body;
        const std::string expected = Trace(kHeader + restOfSetup + kEndSetup + rest + kEnd, false);
        EXPECT_EQ(outcome_.result, kVXOk) << name;
        EXPECT_EQ(Trace(document + "\n" + kEnd, true), expected) << name;
        EXPECT_EQ(outcome_.result, kVXOk) << name;
        EXPECT_EQ(outcome_.salvage.faults, faults) << name;
        EXPECT_EQ(outcome_.salvage.first.size(), faults) << name;
        EXPECT_FALSE(outcome_.salvage.isCut) << name;
        if (faults > 0) {
            (void)Trace(document + "\n" + kEnd, false);
            EXPECT_EQ(outcome_.result, kVXBadFormat) << name;
            EXPECT_FALSE(outcome_.salvage.IsAny()) << name;
        }
    }
}

const std::string kLayer = "1 1 1 1 0 0 1 79 128 255 Lb\n(Good) Ln\n",
                  kTwoLines = "0 0 m 1 1 l S\n2 2 m 3 3 l S\n";

// Operators that are left out begin nothing and end nothing.
const SalvageCase kStructureCases[] = {
    {"ALayer", "1 Lb (Bad) Ln\n" + kLayer + kTwoLines + "LB\n", "(Bad) Ln\n" + kLayer + kTwoLines + "LB\n",
     1},
    {"TheSecondOfTwoLayers", kLayer + kTwoLines + "LB\n1 Lb\n" + kLayer + kTwoLines + "LB\n",
     kLayer + kTwoLines + "LB\n" + kLayer + kTwoLines + "LB\n", 1},
    {"AGroup", "1 u\n" + kTwoLines + "u\n" + kTwoLines + "U\n", kTwoLines + "u\n" + kTwoLines + "U\n", 1},
    {"TheEndOfAGroup", "u\n0 0 m 1 1 l S 1 U\n" + kTwoLines + "U\n", "u\n0 0 m 1 1 l S\n" + kTwoLines + "U\n",
     1},
    {"AnInk", "0 0 0 1 k 1 (Lake) 0 x 0 0 m 1 1 l f\n", "0 0 0 1 k 0 0 m 1 1 l f\n", 1},
    // The string would go on, and the group's border with it.
    {"AGroupBehindHexData", "<4a 4\nu 0 0 m 1 1 l S\n" + kTwoLines + "U\n",
     "u 0 0 m 1 1 l S\n" + kTwoLines + "U\n", 1},
    // A line may end where the operator was.
    {"AGroupBesideIt", "1 2 S u )" + kTwoLines + "U\n", "u " + kTwoLines + "U\n", 2},
};

TEST_F(SalvageTest, SeesNoLayersAndGroupsInWhatItLeavesOut)
{
    for (const auto &[name, body, rest, faults, setup, restOfSetup] : kStructureCases) {
        const std::string expected = Trace(kHeader + kEndSetup + rest + kEnd, false, 0, true);
        EXPECT_EQ(outcome_.result, kVXOk) << name;
        const auto layers = outcome_.layers;
        EXPECT_EQ(Trace(kHeader + kEndSetup + body + kEnd, true, 0, true), expected) << name;
        EXPECT_EQ(outcome_.salvage.faults, faults) << name;
        EXPECT_EQ(outcome_.layers, layers) << name;
    }
}

TEST_F(SalvageTest, ChoosesAmongTheLayersThatAreLeft)
{
    const std::string bytes = kHeader + kEndSetup + "1 Lb (Bad) Ln\n" + kLayer + kTwoLines + "LB\n" + kEnd;
    std::string error;
    const auto document = Document::FromMemory(std::as_bytes(std::span(bytes)), &error);
    ReadingOptions options;
    options.salvage = true;
    options.layers.shown = {"Bad"};
    EXPECT_EQ(Reading(installation_, *document, options).Look().failure.text,
              "no layer \"Bad\": there are \"Good\"");
    options.layers.shown = {"Good"};
    const Outcome outcome = Reading(installation_, *document, options).Look();
    EXPECT_FALSE(outcome.failure);
    EXPECT_EQ(outcome.counts.strokes, 2U);
}

TEST_F(SalvageTest, LeavesNothingOpenThatItLeavesOut)
{
    for (const bool salvage : {false, true}) {
        const std::string bytes = kHeader + kEndSetup + "u\n1 u\n" + kTwoLines + kEnd;
        std::string error;
        const auto document = Document::FromMemory(std::as_bytes(std::span(bytes)), &error);
        ReadingOptions options;
        options.salvage = salvage;
        EXPECT_EQ(Reading(installation_, *document, options).Look().end.open.groups, salvage ? 1U : 2U);
    }
}

// The file may end in what is malformed, and leave no room for what shows the fault.
TEST_F(SalvageTest, DrawsTheRestOfWhatIsCutShort)
{
    for (const char *const end : {"1 S", "(ab", "[1]0 d[2](a)d", "1 2]0 d", "<4a", "<4", "1[2"}) {
        const std::string body = "0 0 m 1 1 l S\n";
        const std::string calls = Trace(kHeader + kEndSetup + body + end, true);
        EXPECT_EQ(outcome_.result, kVXOk) << end;
        EXPECT_NE(calls.find("stroke"), std::string::npos) << end;
    }
}

TEST_F(SalvageTest, HasItsMostAndCutsTheDrawingThere)
{
    const auto with = [](int faults) {
        std::string body;
        for (int i = 0; i < faults; ++i)
            body += "0 0 m 1 1 l S\n1 S\n";
        return kHeader + kEndSetup + body + "0 0 m 1 1 l S\n" + kEnd;
    };
    const auto strokes = [](const std::string &calls) {
        size_t count = 0;
        for (size_t at = calls.find("stroke\n"); at != std::string::npos; at = calls.find("stroke\n", at + 1))
            ++count;
        return count;
    };
    EXPECT_EQ(strokes(Trace(with(100), true)), 101U);
    EXPECT_FALSE(outcome_.salvage.isCut);
    EXPECT_EQ(strokes(Trace(with(150), true)), 101U);
    EXPECT_EQ(outcome_.result, kVXOk);
    EXPECT_TRUE(outcome_.salvage.isCut);
    EXPECT_EQ(outcome_.salvage.faults, 100U);
    ASSERT_EQ(outcome_.salvage.first.size(), 3U);
    EXPECT_EQ(outcome_.salvage.first[2].line, 14);
    EXPECT_EQ(outcome_.fault.line, 8 + 2 * 101);
}

TEST_F(SalvageTest, CutsTheDrawingWhereTimeIsUp)
{
    constexpr double kNone = 1e-9;
    const std::string document = kHeader + kEndSetup + "0 0 m 1 1 l S\n1 S\n0 0 m 1 1 l S\n" + kEnd;
    EXPECT_NE(Trace(document, true, kNone).find("stroke"), std::string::npos);
    EXPECT_EQ(outcome_.result, kVXOk);
    EXPECT_TRUE(outcome_.salvage.isCut);
    EXPECT_EQ(outcome_.fault.line, 0);
    (void)Trace(kHeader + kEndSetup + "0 0 m 1 1 l S\n" + kEnd, true, kNone);
    EXPECT_FALSE(outcome_.salvage.IsAny()) << "a whole document is whole, however little time there was";
}

TEST_F(SalvageTest, FindsNoDrawingWithoutASetupSection)
{
    (void)Trace(kHeader.substr(0, kHeader.find("%%BeginSetup")) + "0 0 m 1 1 l S\n" + kEnd, true);
    EXPECT_EQ(outcome_.result, kVXBadFormat);
    EXPECT_FALSE(outcome_.salvage.IsAny());
}

// One line more, wherever it is: each line of the drawing is whole.
TEST_F(SalvageTest, LeavesOutAFaultBetweenAnyTwoLines)
{
    const std::vector<std::string> lines = {
        "q",      "0 0 m",   "9 0 l", "9 9 l", "W n",  "0 0 0 1 k",        "*u",   "1 1 m",
        "5 5 l",  "8 1 l f", "*U",    "Q",     "0 To", "1 0 0 1 0 0 0 Tp", "0 Tr", "/_Helvetica 12 Tf",
        "(a) Tx", "TO"};
    const auto with = [&](size_t place, const std::string &line) {
        std::string document = kHeader + kEndSetup;
        for (size_t i = 0; i < lines.size(); ++i)
            document += (i == place ? line : "") + lines[i] + "\n";
        return document + kEnd;
    };
    const std::string expected = Trace(with(lines.size(), ""), false);
    EXPECT_NE(expected.find("show"), std::string::npos);
    for (size_t place = 0; place < lines.size(); ++place) {
        for (const char *const line : {"1 S\n", "(a\n", "1 2]\n", "3 c ", ")\n", "<4\n"}) {
            EXPECT_EQ(Trace(with(place, line), true), expected) << place << line;
            EXPECT_EQ(outcome_.salvage.faults, 1U);
        }
    }
}

TEST(Blanks, AreThoseBytesWhereverAPieceBegins)
{
    Blanks blanks;
    blanks.Add(std::vector<ByteRange>{{2, 4}, {6, 9}});
    blanks.Add(std::vector<ByteRange>{{12, 13}});
    const std::string text = "abcdefg\nijklmn";
    for (size_t cut = 0; cut <= text.size(); ++cut) {
        std::string first = text.substr(0, cut), second = text.substr(cut);
        blanks.Apply(std::as_writable_bytes(std::span(first)), 0);
        blanks.Apply(std::as_writable_bytes(std::span(second)), cut);
        EXPECT_EQ(first + second, "ab  ef \n jkl n") << cut;
    }
}

} // namespace
} // namespace vxhost
