// Which operators there are, and what becomes of those that there are not.
#include "plugin/body/Operators.h"

#include "tests/unit/body/LineCases.h"
#include "tests/unit/body/ParsingContext.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

namespace
{

using namespace vxtest;

class UnknownLines : public testing::TestWithParam<LineCase>
{
};

TEST_P(UnknownLines, AreReportedOnceAndSkipped)
{
    ExpectCalls(GetParam());
}

const LineCase kUnknownLines[] = {
    {"LargeEDoesNothingWithAnyOperands", "1 2 3 E", "", kVXOk},
    {"UnknownOneLetterOperatorIsReported", "1 2 I 3 4 m", "report 3; moveto 3 4", kVXOk},
    {"UnknownTwoLetterOperatorIsReported", "1 Qx 3 4 m", "report 3; moveto 3 4", kVXOk},
    {"UnknownOperatorsAreReportedOnce", "Qx I Qy", "report 3", kVXOk},
    {"ALoneMinusIsAnUnknownOperator", "-", "report 3", kVXOk},
    {"ALonePointIsAnUnknownOperator", ".", "report 3", kVXOk},
    {"CharactersBelowTheTableAreUnknown", "! 1 2 m", "report 3; moveto 1 2", kVXOk},
    {"BytesAboveTheTableAreUnknown", "\x7F 1 2 m", "report 3; moveto 1 2", kVXOk},
    {"BytesWithTheHighBitAreUnknown", "\xFF \x80 1 2 m", "report 3; moveto 1 2", kVXOk},
    {"TwoHighBytesAreUnknown", "\xFF\xFE 1 2 m", "report 3; moveto 1 2", kVXOk},
    {"ThreeLetterOperatorsAreIgnored", "1 2 abc 3 4 m", "moveto 3 4", kVXOk},
    {"LongerOperatorsAreNotCutToTwo", "Bbx BBx qqq mmm", "", kVXOk},
    {"ExponentsAreOperatorsNotNumbers", "1e5 3 4 m", "moveto 3 4", kVXOk},
    {"OperandsNeverOutliveAnUnknownOperator", "1 Qx 2 m", "report 3", kVXBadFormat},
    {"OperandsNeverOutliveALongOperator", "1 abc 2 m", "", kVXBadFormat},
};
INSTANTIATE_TEST_SUITE_P(Operators, UnknownLines, testing::ValuesIn(kUnknownLines), CaseName());

// Every operator that is known: first those of one character, then those of two.
const char *const kKnown[] = {
    "*",  "A",  "B",  "C",  "D",  "E",  "F",  "G",  "H",  "J",  "K",  "L",  "M",  "N",  "O",  "P",
    "Q",  "R",  "S",  "T",  "U",  "V",  "W",  "X",  "Y",  "Z",  "a",  "b",  "c",  "d",  "e",  "f",
    "g",  "h",  "i",  "j",  "k",  "l",  "m",  "n",  "o",  "p",  "q",  "r",  "s",  "t",  "u",  "v",
    "w",  "x",  "y",  "z",  "`",  "~",  "*U", "*W", "*u", "*w", "Ap", "Ar", "BB", "BD", "Bb", "Bc",
    "Bd", "Bg", "Bh", "Bm", "Bn", "Br", "Bs", "LB", "Lb", "Ln", "MB", "Mb", "Md", "Np", "PB", "Pb",
    "Pc", "Pn", "T*", "T+", "T-", "TA", "TC", "TE", "TG", "TK", "TM", "TO", "TP", "TR", "TS", "TV",
    "TW", "TX", "TY", "TZ", "Ta", "Tc", "Td", "Te", "Tf", "Tg", "Th", "Ti", "Tj", "Tk", "Tl", "Tm",
    "To", "Tp", "Tq", "Tr", "Ts", "Tt", "Tv", "Tw", "Tx", "Ty", "Tz", "T~", "XB", "Xb", "Xe", "_E",
};

bool IsKnown(const std::string &text)
{
    return std::find(std::begin(kKnown), std::end(kKnown), text) != std::end(kKnown);
}

// Words that are not numbers, of one and two bytes.
std::vector<std::string> ShortWords()
{
    std::vector<std::string> letters;
    for (int byte = '!'; byte < 256; ++byte)
        if (!vx::IsDelimiter(static_cast<uint8_t>(byte)))
            letters.emplace_back(1, static_cast<char>(byte));
    std::vector<std::string> words;
    const auto add = [&](const std::string &word) {
        if (word.find_first_of("0123456789") == std::string::npos)
            words.push_back(word);
    };
    for (const std::string &first : letters) {
        add(first);
        for (const std::string &second : letters)
            add(first + second);
    }
    return words;
}

class OperatorTable : public ParsingContext
{
};

TEST_F(OperatorTable, IsComplete)
{
    for (const std::string &word : ShortWords()) {
        host.lines.clear();
        context.warnedOperator = 0;
        stack = {};
        (void)Interpret(word); // what it wants is not the question here
        const bool reported = std::find(host.lines.begin(), host.lines.end(), "report 3") != host.lines.end();
        EXPECT_EQ(reported, !IsKnown(word)) << word;
    }
}

TEST_F(OperatorTable, UnusedOperatorsDoNothingWithAnyOperands)
{
    for (const char *text : {"Ap", "Ar", "Bn", "Br", "E",  "Ln", "Md", "Np", "PB", "Pb",
                             "Pc", "Pn", "TC", "TK", "Th", "Tq", "XB", "Xb", "Xe", "_E"}) {
        EXPECT_EQ(Interpret(text), vx::kOk) << text;
        EXPECT_EQ(Interpret(std::string("1 (a) [2] ") + text), vx::kOk) << text;
        EXPECT_EQ(vx::GetPostScriptObjectListLength(&stack), 0) << text;
    }
    EXPECT_EQ(host.Joined(), "");
}

TEST_F(OperatorTable, GradientOperatorsFailWithoutTheirState)
{
    context.gradientSetup = nullptr;
    for (const char *text : {"Bb", "BB", "Bg", "Bc", "Bd", "BD", "Bh", "Bm", "Bs"})
        EXPECT_EQ(Interpret(text), vx::kParserBadFormat) << text;
    EXPECT_EQ(Interpret("Bbx Bn"), vx::kOk) << "longer words and unused operators are none of them";
}

TEST_F(OperatorTable, WordsOfThreeLettersAreIgnored)
{
    for (const char *text : {"abc", "mmm", "Bdx", "T*x", "LbL", "***", "Qxx"}) {
        EXPECT_EQ(Interpret(std::string("1 2 ") + text), vx::kOk) << text;
        EXPECT_EQ(vx::GetPostScriptObjectListLength(&stack), 0) << text;
    }
    EXPECT_EQ(host.Joined(), "");
}

} // namespace
