// What a line leaves on the operand stack, and which state changes what it means.
#include "plugin/body/ParseLine.h"

#include "tests/support/CaseName.h"
#include "tests/unit/body/LineCases.h"
#include "tests/unit/body/ParsingContext.h"
#include "tests/unit/input/TestReader.h"
#include "tests/unit/input/Views.h"

#include <gtest/gtest.h>

#include <cstring>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace
{

using namespace vx;
using namespace vxtest;

// Describes a list from its head: each object as its type and, after a colon, its value; arrays in brackets.
std::string Describe(const PostScriptObjectList *list)
{
    std::string all;
    for (const PostScriptObject *object = list->head; object != nullptr; object = object->link) {
        if (!all.empty())
            all += ' ';
        switch (object->type) {
        case kTokenInteger:
        case kTokenFixed:
            all += std::to_string(object->type) + ":" + std::to_string(object->value.number);
            break;
        case kObjectArray:
            all += "[" + Describe(&object->array) + "]";
            break;
        case kTokenArrayStart:
        case kTokenHexStart:
            all += std::to_string(object->type);
            break;
        default:
            all += std::to_string(object->type) + ":" + std::string(Text(object->string));
            break;
        }
    }
    return all;
}

struct StackCase {
    const char *name;
    std::vector<std::string> lines;
    std::string stack; // from the top
};

class Stacks : public ParsingContext, public testing::WithParamInterface<StackCase>
{
};

TEST_P(Stacks, HoldTheOperands)
{
    for (const std::string &line : GetParam().lines) {
        BigString view = View(line);
        ASSERT_EQ(ParseLine(&view, &context), kOk);
        EXPECT_EQ(view.length, 0) << "the line is consumed";
    }
    EXPECT_EQ(Describe(&stack), GetParam().stack);
}

const StackCase kStacks[] = {
    {"TheLastIsOnTop", {"1 2.5 (a) /b //c\n"}, "9:c 8:b 7:a 6:163840 5:1"},
    {"LinesAdd", {"1\n", "2\n"}, "5:2 5:1"},
    {"AnArraysFirstElementIsAtItsHead", {"[1 2 3]\n"}, "[5:1 5:2 5:3]"},
    {"ArraysNest", {"[1 [2 3] (a)] 4\n"}, "5:4 [5:1 [5:2 5:3] 7:a]"},
    {"AnEmptyArray", {"[]\n"}, "[]"},
    {"AnArrayOverLines", {"[1\n", "2\n", "]\n"}, "[5:1 5:2]"},
    {"AnOpenArrayLeavesItsMark", {"[1\n"}, "5:1 13"},
    {"AHexString", {"<48 65>\n"}, "7:He"},
    {"AHexStringOverLinesIsJoinedInOrder", {"<48\n", "656C\n", "\n", " 6C >\n"}, "7:Hell"},
    {"AnEmptyHexString", {"<>\n"}, "7:"},
    {"TwoHexStrings", {"<48> <65>\n"}, "7:e 7:H"},
    {"AHexStringInAnArray", {"[<48>\n", "<65 66>]\n"}, "[7:H 7:ef]"},
    {"AnOpenHexStringLeavesItsPieces", {"<48\n", "65\n"}, "18:e 18:H 17"},
    {"BracesAndCommentsLeaveNothing", {"{ 1 } % 2\n"}, "5:1"},
    {"AnOperatorLeavesNothing", {"1 2 3 E\n"}, ""},
    {"AnIgnoredOperatorLeavesNothing", {"1 2 3 abcd\n"}, ""},
    {"AnUnknownOperatorLeavesNothing", {"1 2 3 Qx\n"}, ""},
    {"OperandsAfterAnOperatorStay", {"1 2 m 3\n"}, "5:3"},
};
INSTANTIATE_TEST_SUITE_P(ParseLine, Stacks, testing::ValuesIn(kStacks), CaseName());

class TokenLines : public testing::TestWithParam<LineCase>
{
};

TEST_P(TokenLines, MakeTheseCalls)
{
    ExpectCalls(GetParam());
}

const LineCase kTokenLines[] = {
    {"AnArrayEndWithoutStartFails", "1 2 ]", "", kVXBadFormat},
    {"AnArrayEndAloneFails", "]", "", kVXBadFormat},
    {"AnOpenArrayCountsAsAnOperand", "[ 1 2 m", "", kVXBadFormat},
    {"AStringOpenAtLineEndFails", "0 0 0 1 (Spot\n) 0 x", "", kVXBadFormat},
    {"AClosingParenthesisAloneFails", ")", "", kVXBadFormat},
    {"AHexEndAloneFails", ">", "", kVXBadFormat},
    {"TwoHexStartsFail", "<<", "", kVXBadFormat},
    {"AHexStringSpansLines", "0 0 0 1 <53\n70\n> 0 x F",
     "comment path; setoverprint 0; setcmykcolor 0 0 0 1; fill", kVXOk},
    {"ACommentMayStandInAHexString", "0 0 0 1 <53 % note\n70> 0 x F",
     "comment path; setoverprint 0; setcmykcolor 0 0 0 1; fill", kVXOk},
    {"AnEmptyHexStringIsAString", "0 0 0 1 <> 0 x F",
     "comment path; setoverprint 0; setcmykcolor 0 0 0 1; fill", kVXOk},
    {"AHexPairMayNotSpanLines", "<5\n3>", "", kVXBadFormat},
    {"AnOperatorInAHexStringFails", "<53 m", "", kVXBadFormat},
    {"AnOpenHexStringAtTheEndIsNoFailure", "1 2 m <53", "moveto 1 2", kVXOk},
};
INSTANTIATE_TEST_SUITE_P(ParseLine, TokenLines, testing::ValuesIn(kTokenLines), CaseName());

struct GradientCase {
    const char *name, *line, *calls;
    Result result;
};

// Between "Bb" and "BB".
class InsideAGradient : public ParsingContext, public testing::WithParamInterface<GradientCase>
{
};

TEST_P(InsideAGradient, PaintingIsTheGradients)
{
    ASSERT_EQ(Interpret("0.5 g 0 G"), kOk);
    gradients.instanceClosed = 0;
    EXPECT_EQ(Interpret(GetParam().line), GetParam().result);
    EXPECT_EQ(host.Joined(), GetParam().calls);
}

const GradientCase kGradientLines[] = {
    {"ClosingFillDoesNothing", "f", "", kOk},
    {"ClosingFillDoesNotCount", "1 2 f", "", kOk},
    {"FillDoesNothing", "F", "", kOk},
    {"FillStillCounts", "1 F", "", kParserBadFormat},
    {"StrokeIsAsEver", "S", "comment path; setoverprint 0; setgray 0; stroke", kOk},
    {"FillAndStrokeIsKeptApartWithoutAComment", "B",
     "gsave; gsave; setoverprint 0; setgray 0.5; fill; grestore; setoverprint 0; setgray 0; stroke; grestore",
     kOk},
    {"ClosingFillAndStrokeToo", "b",
     "closepath; gsave; gsave; setoverprint 0; setgray 0.5; fill; grestore; setoverprint 0; setgray 0; "
     "stroke; grestore",
     kOk},
    {"FillAndStrokeStillCounts", "1 B", "", kParserBadFormat},
};
INSTANTIATE_TEST_SUITE_P(ParseLine, InsideAGradient, testing::ValuesIn(kGradientLines), CaseName());

class InterpretationTest : public ParsingContext
{
};

// Between "Bd" and "BD" numbers reach the stack without array marks.
TEST_F(InterpretationTest, AGradientDefinitionDropsItsBrackets)
{
    gradients.definitionClosed = 0;
    EXPECT_EQ(Interpret("[1 2"), kOk);
    EXPECT_EQ(Describe(&stack), "5:2 5:1");
    EXPECT_EQ(Interpret("]"), kParserBadFormat) << "a closing bracket is never dropped";
}

TEST_F(InterpretationTest, ADroppedBracketTakesNoObject)
{
    gradients.definitionClosed = 0;
    for (int i = 0; i < 1000; ++i)
        ASSERT_EQ(Interpret("["), kOk);
    EXPECT_EQ(pool.next, pool.base);
}

TEST_F(InterpretationTest, AnOpenTextObjectSavesAroundClosingPaint)
{
    context.text.object.type = 0;
    EXPECT_EQ(Interpret("0.5 g 0 G f s"), kOk);
    EXPECT_EQ(host.Joined(), "closepath; gsave; comment path; setoverprint 0; setgray 0.5; fill; grestore; "
                             "closepath; gsave; comment path; setoverprint 0; setgray 0; stroke; grestore");
}

TEST_F(InterpretationTest, AnOpenTextObjectDoesNotSaveAroundPlainPaint)
{
    context.text.object.type = 0;
    EXPECT_EQ(Interpret("0.5 g 0 G F S"), kOk);
    EXPECT_EQ(
        host.Joined(),
        "comment path; setoverprint 0; setgray 0.5; fill; comment path; setoverprint 0; setgray 0; stroke");
}

TEST_F(InterpretationTest, ATextPathSavesAroundFillAndStroke)
{
    context.text.object.pathState = 1;
    EXPECT_EQ(Interpret("0.5 g 0 G B"), kOk);
    EXPECT_EQ(host.Joined(), "gsave; gsave; setoverprint 0; setgray 0.5; fill; grestore; setoverprint 0; "
                             "setgray 0; stroke; grestore");
}

TEST_F(InterpretationTest, PathTextKeepsItsPathWhenItIsDiscarded)
{
    context.text.object.type = 1;
    EXPECT_EQ(Interpret("W n"), kOk);
    EXPECT_EQ(host.Joined(), "comment path");
    EXPECT_EQ(context.clipPending, 1);
}

TEST_F(InterpretationTest, AStoppedParseInterpretsNothing)
{
    context.aborted = 1;
    EXPECT_EQ(Interpret("1 2 m"), kStoppedByUser);
    EXPECT_EQ(Interpret(""), kStoppedByUser);
    EXPECT_EQ(host.Joined(), "");
    EXPECT_EQ(GetPostScriptObjectListLength(&stack), 0);
}

TEST_F(InterpretationTest, EveryOperatorClearsPoolAndStringBuffer)
{
    ASSERT_EQ(Interpret("1 (\\101) [2] E"), kOk);
    EXPECT_EQ(pool.next, pool.base);
    EXPECT_EQ(stringBuffer.end, stringBuffer.base);
    EXPECT_EQ(stack.head, nullptr);
    EXPECT_EQ(stack.count, 0);
}

// The flushing procedure.

TEST_F(InterpretationTest, FlushingSavesTheTextOfEveryKindOfOperand)
{
    std::string line = "1 2.5 (string) /literal //immediate [(nested) [/deeper]] <48";
    BigString view = View(line);
    ASSERT_EQ(ParseLine(&view, &context), kOk);
    const std::string before = Describe(&stack);
    const int32_t count = stack.count;

    StackAndBuffer record = {&stack, &stringBuffer};
    FlushStackStringsToBuffer(&record);
    memset(line.data(), '#', line.size());
    EXPECT_EQ(Describe(&stack), before);
    EXPECT_EQ(stack.count, count);
}

TEST_F(InterpretationTest, FlushingCopiesNothingTwice)
{
    const std::string line = "(string) (\\101)";
    BigString view = View(line);
    ASSERT_EQ(ParseLine(&view, &context), kOk);
    StackAndBuffer record = {&stack, &stringBuffer};
    FlushStackStringsToBuffer(&record);
    const uint8_t *end = stringBuffer.end;
    EXPECT_EQ(end - stringBuffer.base, 7) << "one byte was built, six were saved";
    FlushStackStringsToBuffer(&record);
    EXPECT_EQ(stringBuffer.end, end);
}

TEST_F(InterpretationTest, OperandsKeepTheirTextOverRefills)
{
    const std::string filler = "%" + std::string(98, 'x') + "\n";
    std::string bytes = "(kept) /name [(inner)] <6869\n";
    for (int i = 0; i < 20; ++i)
        bytes += filler;
    TestReader reader(bytes + "6A>\n");
    LineStream lines;
    InitializeLineStream(&lines, &reader.reader, static_cast<int32_t>(reader.bytes.size()), nullptr);
    StackAndBuffer record = {&stack, &stringBuffer};
    SetLineStreamFlushingProc(&lines, FlushStackStringsToBuffer, &record);
    context.lineStream = &lines;
    encoding.fileVersion = 2; // every line of that version is interpreted
    EXPECT_EQ(DoParsing(&context), kOk);
    EXPECT_EQ(Describe(&stack), "7:hij [7:inner] 8:name 7:kept");
}

TEST_F(InterpretationTest, AReaderThatClaimsTooMuchEndsTheBody)
{
    TestReader reader(std::string(600, 'x'));
    reader.claimed = 500;
    LineStream lines;
    InitializeLineStream(&lines, &reader.reader, static_cast<int32_t>(reader.bytes.size()), nullptr);
    context.lineStream = &lines;
    EXPECT_EQ(DoParsing(&context), kParserBadFormat);
}

TEST_F(InterpretationTest, FlushingAnEmptyStackDoesNothing)
{
    StackAndBuffer record = {&stack, &stringBuffer};
    FlushStackStringsToBuffer(&record);
    EXPECT_EQ(stringBuffer.end, stringBuffer.base);
}

TEST_F(InterpretationTest, FlushingTooMuchIsFoundAtTheNextOperand)
{
    const std::string line = "(" + std::string(450, 'a') + ")";
    std::vector<std::string> lines(20, line);
    StackAndBuffer record = {&stack, &stringBuffer};
    for (const std::string &text : lines) {
        BigString view = View(text);
        ASSERT_EQ(ParseLine(&view, &context), kOk);
    }
    FlushStackStringsToBuffer(&record);
    EXPECT_TRUE(OverflowedStringBuffer(&stringBuffer));
    EXPECT_EQ(Interpret("1"), kParserBadFormat);
}

TEST_F(InterpretationTest, AnOverflowIsFoundAtAnOperatorToo)
{
    stringBuffer.overflowed = true;
    EXPECT_EQ(Interpret("E"), kParserBadFormat);
}

// A parse of lines as they come out of a stream. Where it is hidden from the interpreter, each word goes through the
// tokenizer.
class StreamedParse final : public ParsingContext
{
  public:
    // All that can be seen after each line.
    std::vector<std::string> Trace(const std::string &text, int32_t mostAtOnce, bool isStreamSeen)
    {
        TextStream stream(text);
        stream.reader.mostAtOnce = mostAtOnce;
        StackAndBuffer record = {&stack, &stringBuffer};
        SetLineStreamFlushingProc(&stream.lines, FlushStackStringsToBuffer, &record);
        context.lineStream = isStreamSeen ? &stream.lines : nullptr;
        std::vector<std::string> trace;
        while (RefillLineStreamText(&stream.lines) && Text(stream.lines.text) != "%%EOF\n") {
            const Result result = ParseLine(&stream.lines.text, &context);
            trace.push_back(std::to_string(result) + " " + Describe(&stack) + " of " +
                            std::to_string(stack.count) + ", " + std::to_string(pool.next - pool.base) +
                            " taken, hex " + std::to_string(context.inHexString) + ": " + host.Joined());
            host.lines.clear();
        }
        context.lineStream = nullptr;
        return trace;
    }

  private:
    void TestBody() override {}
};

void ExpectTwins(const std::string &text, int32_t mostAtOnce)
{
    const std::vector<std::string> plain = StreamedParse().Trace(text, mostAtOnce, false);
    const std::vector<std::string> quick = StreamedParse().Trace(text, mostAtOnce, true);
    ASSERT_EQ(quick.size(), plain.size());
    for (size_t i = 0; i < plain.size(); ++i)
        ASSERT_EQ(quick[i], plain[i]) << "line " << i + 1 << " of " << text;
}

constexpr const char *kWords[] = {
    "0",        "1",     "-1",      "+1",       "12.5",     "-.5",        "5.",         ".",
    "-",        "+",     "-.",      "1.2.3",    "1e3",      "12345678",   "123456789",  "1234567.8",
    "32767.99", "32768", "32768.5", "-32768.5", "-99999.9", "2147483648", "0.00000001", "0.0000000001",
    "1,5",      "1/2",   "3(a)4",   "5<41>6",   "7%8",      "9[1]2",      "{1}",        "(a (b) \\) c)",
    "<4 1",     "4>",    "[",       "]",        "/n",       "//n",        "m",          "l",
    "c",        "w",     "k",       "h",        "n",        "f",          "W",          "ab",
    "abc",      "1a",    "\x80",    "1\x01",    "1\xA0"};

TEST(StreamedParseTest, ReadsNumbersAsTheTokenizerDoes)
{
    std::mt19937 random(8);
    for (int document = 0; document < 300; ++document) {
        std::string text;
        const bool isTame = document % 3 == 0; // nothing but numbers and operators
        while (text.size() < 3000) {
            switch (random() % 3) {
            case 0:
                text += kWords[random() % (isTame ? 6 : std::size(kWords))];
                break;
            case 1:
                text += std::to_string(random() % 2000) + "." + std::to_string(random() % 100);
                break;
            default:
                text += std::to_string(static_cast<int>(random() % 2000) - 1000);
                break;
            }
            const auto space = random() % 24;
            text += space == 0   ? "\n"
                    : space == 1 ? " m\r\n"
                    : space == 2 ? "  "
                    : space == 3 ? "\t"
                    : space == 4 ? " c\r"
                                 : " ";
        }
        ASSERT_NO_FATAL_FAILURE(ExpectTwins(text, document % 5 == 0 ? 1 + document : INT32_MAX));
    }
}

// A line that the stream breaks at every place of a number, and a pool that runs out within it.
TEST(StreamedParseTest, BreaksNumbersAsTheTokenizerDoes)
{
    for (size_t blanks = 0; blanks < 40; ++blanks)
        for (const char *word : kWords) {
            std::string text(470 + blanks, ' ');
            text += std::string("1 2.25 -3.125 ") + word + " 17.0625 " + word + " m\n1 2 m\n";
            ASSERT_NO_FATAL_FAILURE(ExpectTwins(text, INT32_MAX));
        }
    std::string text;
    while (text.size() < 2500)
        text += text.size() % 3 == 0 ? "1\n" : "2 ";
    ASSERT_NO_FATAL_FAILURE(ExpectTwins(text, INT32_MAX));
}

TEST(StreamedParseTest, ReadsAnyBytesAsTheTokenizerDoes)
{
    std::mt19937 random(9);
    for (int document = 0; document < 300; ++document) {
        constexpr std::string_view kBytes = "0123456789.-+ \n\rmc(";
        std::string text;
        for (int i = 0; i < 1500; ++i)
            text += random() % 16 == 0
                        ? static_cast<char>(random())
                        : kBytes[random() % (kBytes.size() - static_cast<size_t>(document % 2))];
        ASSERT_NO_FATAL_FAILURE(ExpectTwins(text, INT32_MAX));
    }
}

} // namespace
