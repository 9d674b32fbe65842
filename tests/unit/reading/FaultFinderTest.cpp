// Where the plug-in gave up, as an editor counts, and in words.
#include "host/reading/FaultFinder.h"

#include "tests/unit/reading/PluginReading.h"

#include <gtest/gtest.h>

#include <algorithm>
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

// Six lines: what is added to it begins with the seventh.
const std::string kHeader = "%!PS-Tavro-3.0\n%%BoundingBox: 0 0 100 100\n%VX5_FileFormat 3\n%%EndComments\n"
                            "%%BeginSetup\n%%EndSetup\n";

class FaultFinderTest : public vxtest::PluginReading
{
  protected:
    static Outcome Look(const std::string &bytes)
    {
        std::string error;
        const auto document = Document::FromMemory(std::as_bytes(std::span(bytes)), &error);
        return Reading(installation_, *document, {}).Look();
    }
    static std::string Told(const std::string &bytes)
    {
        const Outcome outcome = Look(bytes);
        EXPECT_EQ(outcome.result == kVXBadFormat, outcome.fault.line > 0) << bytes;
        EXPECT_LE(outcome.fault.text.size(), DocumentFault::kMostText);
        return FaultText(outcome.fault);
    }
};

struct FaultCase {
    const char *name;
    std::string body;
    std::string told; // line 1 is the first of the body
};

const FaultCase kCases[] = {
    {"Nothing", "0 0 m 1 1 l S\n", ""},
    {"TooFew", "0 0 m\n 1 2 3 4 5 c S\n", "line 8, column 12: \"c\" wants 6 numbers, has 5"},
    {"TooMany", "1 0 0 0 0 k", "line 7, column 11: \"k\" wants 4 numbers, has 5"},
    {"None", "g", "line 7, column 1: \"g\" wants 1 number, has none"},
    {"NoneWanted", "1 S", "line 7, column 3: \"S\" wants no operands, has 1"},
    {"AnotherKind", "0 0 0 1 /name 0.5 x",
     "line 7, column 19: \"x\" wants 4 numbers, 1 string and 1 number, but operand 5 is a name"},
    {"AFraction", "1.5 j",
     "line 7, column 5: \"j\" wants 1 whole number, but operand 1 is a number with a fraction"},
    {"TwoChoices", "0 To 1 0 0 1 0 0 0 Tp\n1 2 3 Tf",
     "line 8, column 7: \"Tf\" wants 1 name and 1 number, or 1 name and 3 numbers, has 3"},
    {"AtLeast", "1 2 3 4 5 6 Lb",
     "line 7, column 13: \"Lb\" wants at least 1 whole number and 6 numbers, has 6"},
    {"OperandsOfLinesBefore", "1\n2 % 9 m\n\n3 m", "line 10, column 3: \"m\" wants 2 numbers, has 3"},
    {"TheSecondOfALine", "0 0 m 1 l 2 2 l", "line 7, column 9: \"l\" wants 2 numbers, has 1"},
    {"TokensWithoutBlanks", "[1 2]0 d[1 2](a)d 0 0 m",
     "line 7, column 17: \"d\" wants 1 array and 1 number, but operand 2 is "
     "a string"},
    {"AnOpenArray", "[1 2 m", "line 7, column 6: \"m\" stands behind a \"[\" that no \"]\" ends"},
    {"ABracketTooMany", "0 0 m 1 2] 0 d", "line 7, column 10: \"]\" without \"[\""},
    {"AnOpenString", "0 0 m (abc\n) S", "line 7, column 7: a string without its \")\" on the same line"},
    {"AParenthesisTooMany", "0 0 m ) S", "line 7, column 7: \")\" without \"(\""},
    {"HalfAByte", "<4a 4\n8> S", "line 7, column 2: hex data with half a byte"},
    {"NoHexDigit", "<4a\n 4b xx> S", "line 8, column 5: a character in hex data that is no hex digit"},
    {"HexInHex", "<4a <4b> S", "line 7, column 5: \"<\" inside of hex data"},
    {"AnAngleTooMany", "0 0 m > S", "line 7, column 7: \">\" without \"<\""},
    {"WhatNoTableExplains", "0 0 m (a) Tx", "line 7, column 11: \"Tx\" cannot be carried out"},
    {"AfterWhatIsPassedOver", "%%BeginBinary: 9\n1 S\n%%EndBinary\n1 S",
     "line 10, column 3: \"S\" wants no operands, has 1"},
    {"CarriageReturns", "0 0 m\r1 S\r", "line 8, column 3: \"S\" wants no operands, has 1"},
    {"BothEnds", "0 0 m\r\n\r\n1 S\r\n", "line 9, column 3: \"S\" wants no operands, has 1"},
    {"FarInALine", "%" + std::string(600, 'x') + "\n" + std::string(700, ' ') + "1 S",
     "line 8, column 703: \"S\" wants no operands, has 1"},
    {"AtACut", std::string(498, ' ') + "1 S", "line 7, column 501: \"S\" wants no operands, has 1"},
};

TEST_F(FaultFinderTest, TellsThePlaceAndTheReason)
{
    for (const auto &[name, body, told] : kCases) {
        EXPECT_EQ(Told(kHeader + body), told) << name;
        EXPECT_EQ(Told(kHeader + body + "\n0 0 m 1 1 l S\n%%EOF\n"), told) << name << ", more follows";
    }
}

TEST_F(FaultFinderTest, CountsLinesOfTheWholeFile)
{
    EXPECT_EQ(Told("From: a\n\n" + kHeader + "1 S\n"), "line 9, column 3: \"S\" wants no operands, has 1");
}

// The file ends behind the drawing, which leaves no room for the tokens of its last line.
TEST_F(FaultFinderTest, FindsFaultsInABinaryWrapper)
{
    const std::string drawing = kHeader + "0 0 m\n[1](a)d";
    std::string file = {"\xC5\xD0\xD3\xC6", 4};
    for (const size_t number : {size_t{30}, drawing.size(), size_t{0}, size_t{0}, size_t{0}, size_t{0}}) {
        for (int shift = 0; shift < 32; shift += 8)
            file += static_cast<char>(number >> shift & 0xFF);
    }
    file += "\xFF\xFF" + drawing;
    EXPECT_EQ(Told(file + "(\n1 S\n"),
              "line 8, column 7: \"d\" wants 1 array and 1 number, but operand 2 is a string");
}

TEST_F(FaultFinderTest, TellsOfTooManyOperands)
{
    std::string body;
    for (int i = 0; i < 60; ++i)
        body += "1 2 3 4 5 6 7 8 9 10\n";
    EXPECT_EQ(Told(kHeader + body + "m\n"), "line 57, column 1: more than 500 operands");
}

TEST_F(FaultFinderTest, TellsOfTooLongStrings)
{
    std::string body;
    for (int i = 0; i < 20; ++i)
        body += "(\\1" + std::string(470, 'x') + ")\n"; // an escape makes the interpreter keep it
    // Each is of 471 bytes: 17 are 8007.
    EXPECT_EQ(Told(kHeader + body + "x\n"),
              "line 24, column 1: more strings before an operator than the interpreter keeps, 8192 bytes");
}

TEST_F(FaultFinderTest, TellsOfGradientsInTheSetupSection)
{
    const size_t end = kHeader.find("%%EndSetup");
    const auto with = [&](const std::string &setup) {
        return kHeader.substr(0, end) + "%VX5_BeginGradient: (g)\n" + setup + kHeader.substr(end);
    };
    EXPECT_EQ(Told(with("(g) 0 2 Bd\n1 Bs\n")),
              "line 8, column 3: \"Bs\" wants at least 1 whole number and 2 numbers, has 1");
    EXPECT_EQ(Told(with("(g) 0 %_Bd\n")),
              "line 7, column 9: \"Bd\" wants 1 string and 2 whole numbers, has 2");
    // The "[" that stand in definitions are dropped there, and nothing can be said of what follows.
    EXPECT_EQ(Told(with("(g) 0 2 Bd\n[1 2 (a) Bs\n")), "line 8, column 10: \"Bs\" cannot be carried out");
}

TEST_F(FaultFinderTest, TellsOfASetupSectionThatIsNotThere)
{
    std::string bytes = kHeader + "1 S\n%%EOF\n";
    bytes.replace(bytes.find("%%BeginSetup"), 12, "%%Begin");
    EXPECT_EQ(Told(bytes), "line 8: the document ends here, without a line \"%%BeginSetup\"");
}

// However its lines are set, a fault is the same token.
TEST_F(FaultFinderTest, FindsTheSameTokenOnLinesOfEachLength)
{
    const std::string words = "0 0 m 1 0 0 1 k (a) [1 2] 0 d 5 5 l S 1 2 3 m 7 7 l S";
    for (size_t period = 1; period < 12; ++period) {
        std::string body = words;
        size_t blank = 0;
        for (char &character : body)
            character = character == ' ' && ++blank % period == 0 ? '\n' : character;
        body.erase(body.find("(a)"), 3); // which would be one operand too many
        const size_t at = body.find("m", body.find('S'));
        const std::string told = Told(kHeader + body);
        const auto line = 7 + std::ranges::count(body.substr(0, at), '\n');
        const size_t column = at - (body.rfind('\n', at) + 1) + 1;
        EXPECT_EQ(told, "line " + std::to_string(line) + ", column " + std::to_string(column) +
                            ": \"m\" wants 2 numbers, has 3")
            << body;
    }
}

} // namespace
} // namespace vxhost
