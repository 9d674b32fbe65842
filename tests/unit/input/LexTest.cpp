// One line cut into tokens.
#include "plugin/input/Lex.h"

#include "plugin/body/ParseContext.h"
#include "tests/support/CaseName.h"
#include "tests/unit/input/HeapForTests.h"
#include "tests/unit/input/Views.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace
{

using namespace vx;
using namespace vxtest;

constexpr int32_t kArena = 64;

// A tokenizer on lines of its own, in the setup section until EndSetup.
class Tokenizer
{
  public:
    explicit Tokenizer(int32_t capacity = kArena)
    {
        EXPECT_TRUE(InitializeStringBuffer(&buffer_, capacity, &heap_.procs));
    }
    ~Tokenizer() { TerminateStringBuffer(&buffer_); }
    Tokenizer(const Tokenizer &) = delete;
    Tokenizer &operator=(const Tokenizer &) = delete;

    void EndSetup() { context_.setupEnded = 1; }
    void SetLine(std::string_view line) { line_ = View(line); }
    std::string_view Rest() const { return Text(line_); }
    int16_t HexState() const { return hexState_; }
    const TokenValue &Value() const { return value_; }
    bool IsBuilt() const
    {
        const BigString string = {value_.text, value_.length};
        return BufferContainsString(&buffer_, &string);
    }

    TokenKind Next() { return LexOneToken(&line_, &hexState_, &value_, &buffer_, &context_); }

    // The next token as kind, colon, value: "7:abc", "5:12", "3".
    std::string Describe()
    {
        const TokenKind kind = Next();
        std::string text = std::to_string(kind);
        switch (kind) {
        case kTokenComment:
        case kTokenString:
        case kTokenLiteralName:
        case kTokenImmediateName:
        case kTokenExecutableName:
        case kTokenHexData:
            return text + ":" + std::string(Text(value_.text, value_.length));
        case kTokenInteger:
        case kTokenFixed:
            return text + ":" + std::to_string(value_.number);
        default:
            return text;
        }
    }

    // All tokens up to the end of the line or an error, which is the last one told.
    std::string DescribeLine(std::string_view line)
    {
        SetLine(line);
        std::string all;
        for (;;) {
            const std::string token = Describe();
            all += (all.empty() ? "" : " ") + token;
            if (token == "1" || token == "2" || token == "3")
                return all;
        }
    }

  private:
    HeapForTests heap_;
    StringBuffer buffer_ = {};
    ParseContext context_ = {};
    int16_t hexState_ = kOutsideHexString;
    TokenValue value_ = {};
    BigString line_ = {};
};

struct LineCase {
    const char *name;
    std::string line;
    std::string tokens; // each as its kind and, after a colon, its value
};

class Tokens : public testing::TestWithParam<LineCase>
{
};

TEST_P(Tokens, AreCutFromALine)
{
    Tokenizer tokenizer;
    tokenizer.EndSetup();
    EXPECT_EQ(tokenizer.DescribeLine(GetParam().line), GetParam().tokens);
}

const LineCase kBlankLines[] = {
    {"AnEmptyLineIsAtItsEnd", "", "3"},
    {"BlanksAloneAreTheEnd", "  \t\v\f\r\n", "3"},
    {"TheLineEndAloneIsTheEnd", "\n", "3"},
};
INSTANTIATE_TEST_SUITE_P(Blank, Tokens, testing::ValuesIn(kBlankLines), CaseName());

const LineCase kNumberLines[] = {
    {"AnInteger", "12\n", "5:12 3"},
    {"ASignedInteger", "-12 +7\n", "5:-12 5:7 3"},
    {"AFraction", "12.5\n", "6:819200 3"},
    {"AFractionWithoutInteger", ".5 -.5\n", "6:32768 6:-32768 3"},
    {"AnIntegerWithAPointIsAFixed", "5.\n", "6:327680 3"},
    {"AnOverlongIntegerStaysAnInteger", "99999999999 -99999999999\n", "5:2147483647 5:-2147483648 3"},
    {"AnIntegerBeyondFixedStaysAnInteger", "40000\n", "5:40000 3"},
    {"AFixedBeyondItsRangeSaturates", "40000.0 -40000.0\n", "6:2147483647 6:-2147483648 3"},
    {"AnExponentIsAWord", "1e5\n", "10:1e5 3"},
    {"ALoneMinusIsAWord", "-\n", "10:- 3"},
    {"ALonePlusIsAWord", "+ 1\n", "10:+ 5:1 3"},
    {"TwoSignsAreAWord", "+-1\n", "10:+-1 3"},
    {"ALonePointIsAWord", ". -.\n", "10:. 10:-. 3"},
    {"TwoPointsAreAWord", "1.2.3\n", "10:1.2.3 3"},
    {"ANumberGoesUpToADelimiter", "1[2/a3(b)4%c\n", "5:1 13 5:2 8:a3 7:b 5:4 4:%c\n 3"},
    {"ANumberMayEndTheText", "12", "5:12 3"},
    {"ANulByteIsPartOfAWord", std::string("1\0", 2), std::string("10:1\0 3", 7)},
};
INSTANTIATE_TEST_SUITE_P(Numbers, Tokens, testing::ValuesIn(kNumberLines), CaseName());

const LineCase kWordLines[] = {
    {"AWord", "moveto\n", "10:moveto 3"},
    {"SignsAreLettersOfWords", "*u T* `~ _E\n", "10:*u 10:T* 10:`~ 10:_E 3"},
    {"HighBytesAreLettersOfWords", "\x80\xFF\n", "10:\x80\xFF 3"},
    {"WordsEndAtDelimiters", "a{b}c]d\n", "10:a 15 10:b 16 10:c 14 10:d 3"},
    {"ALiteralName", "/Name 1\n", "8:Name 5:1 3"},
    {"AnImmediateName", "//Name\n", "9:Name 3"},
    {"NamesMayBeNumbers", "/12 //1.5\n", "8:12 9:1.5 3"},
    {"NamesFollowOneAnother", "/a/b//c\n", "8:a 8:b 9:c 3"},
    {"ThreeSlashesAreTwoNames", "///a\n", "9: 8:a 3"},
    {"AnEmptyNameBeforeABrace", "/{\n", "8: 15 3"},
    {"AnEmptyNameBeforeABlank", "/ a\n", "8: 10:a 3"},
    {"AnEmptyNameBeforeTheLineEnd", "/\n", "8: 3"},
    {"ASlashAtTheVeryEndIsAnError", "/", "1"},
    {"TwoSlashesAtTheVeryEndAreAnEmptyName", "//", "9: 3"},
};
INSTANTIATE_TEST_SUITE_P(Words, Tokens, testing::ValuesIn(kWordLines), CaseName());

const LineCase kMarkLines[] = {
    {"Brackets", "[]\n", "13 14 3"},
    {"Braces", "{ }\n", "15 16 3"},
    {"AClosingParenthesisAloneIsAnError", ")\n", "1"},
    {"AHexEndAloneIsAnError", ">\n", "1"},
    {"AComment", "1 % two (three\n", "5:1 4:% two (three\n 3"},
    {"ACommentAfterAWord", "a%b\n", "10:a 4:%b\n 3"},
    {"AnEmptyComment", "%", "4:% 3"},
    {"AHiddenOperatorAfterTheSetupIsAComment", "%_Bd more\n", "4:%_Bd more\n 3"},
};
INSTANTIATE_TEST_SUITE_P(Marks, Tokens, testing::ValuesIn(kMarkLines), CaseName());

const LineCase kStringLines[] = {
    {"AString", "(abc)\n", "7:abc 3"},
    {"AnEmptyString", "()1\n", "7: 5:1 3"},
    {"ParenthesesBalance", "(a(b(c))d)e\n", "7:a(b(c))d 10:e 3"},
    {"OtherDelimitersAreText", "(a%b/<>[]{})\n", "7:a%b/<>[]{} 3"},
    {"BlanksAreKept", "( a  b )\n", "7: a  b  3"},
    {"AnEscapedParenthesis", "(a\\)b)\n", "7:a)b 3"},
    {"AnEscapedOpeningParenthesis", "(a\\(b)\n", "7:a(b 3"},
    {"AnEscapedBackslash", "(\\\\)\n", "7:\\ 3"},
    {"EscapedLetters", "(\\n\\r\\t\\b\\f)\n", "7:\n\r\t\b\f 3"},
    {"AnyOtherEscapedByteStandsForItself", "(\\a\\%\\8)\n", "7:a%8 3"},
    {"OctalOfThreeDigits", "(\\101)\n", "7:A 3"},
    {"OctalOfTwoDigits", "(\\53x)\n", "7:+x 3"},
    {"OctalOfOneDigit", "(\\7)\n", "7:\a 3"},
    {"OctalTakesThreeDigitsAtMost", "(\\1011)\n", "7:A1 3"},
    {"OctalStopsAtEight", "(\\128)\n", "7:\n8 3"},
    {"OctalWrapsAtOneByte", "(\\777\\501)\n", "7:\xFF\x41 3"},
    {"OctalMayBeNul", "(a\\0b)\n", std::string("7:a\0b 3", 7)},
    {"EscapesKeepTheDepth", "(a(\\)b)c)\n", "7:a()b)c 3"},
    {"EscapesFollowOneAnother", "(\\101\\102\\103)\n", "7:ABC 3"},
    {"AnEscapeMayComeLast", "(ab\\()\n", "7:ab( 3"},
    {"AStringOpenAtTheLineEndIsAnError", "(abc\n", "1"},
    {"ADeeperStringOpenAtTheLineEndIsAnError", "(a(bc)\n", "1"},
    {"AnEscapedLineEndIsAnError", "(abc\\\n", "1"},
    {"ABackslashAtTheVeryEndIsAnError", "(abc\\", "1"},
    {"AStringWithEscapesOpenAtTheLineEndIsAnError", "(a\\101b\n", "1"},
};
INSTANTIATE_TEST_SUITE_P(Strings, Tokens, testing::ValuesIn(kStringLines), CaseName());

const LineCase kHexLines[] = {
    {"Pairs", "<4865>\n", "17 18:He 19 3"},
    {"ABlankMayStandBetweenPairs", "<48 65>\n", "17 18:He 19 3"},
    {"ABlankMayStandInsideAPair", "<4 8\t6 5 >\n", "17 18:He 19 3"},
    {"BothCasesOfLetters", "<6a6B>\n", "17 18:jk 19 3"},
    {"AnEmptyHexString", "<>\n", "17 19 3"},
    {"AnEmptyHexStringWithBlanks", "< >\n", "17 19 3"},
    {"HexBytesMayBeNul", "<00>\n", std::string("17 18:\0 19 3", 12)},
    {"AWordAfterAHexString", "<48>x\n", "17 18:H 19 10:x 3"},
    {"AnOddDigitIsAnError", "<486>\n", "17 1"},
    {"ALoneDigitAtTheLineEndIsAnError", "<4\n", "17 1"},
    {"AnotherByteIsAnError", "<48g\n", "17 18:H 1"},
    {"AnotherByteAtTheStartIsAnError", "<g\n", "17 1"},
    {"AnotherByteInsideAPairIsAnError", "<4g\n", "17 1"},
    {"TwoHexStartsAreAnError", "<<\n", "17 1"},
    {"ASecondHexStartIsAnError", "<48<\n", "17 18:H 1"},
    {"AStringInAHexStringIsAnError", "<(a)>\n", "17 1"},
    {"ACommentMayFollowInAHexString", "<48 % a>\n", "17 18:H 4:% a>\n 3"},
    {"AnOpenHexStringMayEndItsLine", "<48\n", "17 18:H 3"},
};
INSTANTIATE_TEST_SUITE_P(HexStrings, Tokens, testing::ValuesIn(kHexLines), CaseName());

TEST(HexStringsTest, GoOnOverLines)
{
    Tokenizer tokenizer;
    EXPECT_EQ(tokenizer.DescribeLine("<48\n"), "17 18:H 3");
    EXPECT_EQ(tokenizer.HexState(), kInsideHexString);
    EXPECT_EQ(tokenizer.DescribeLine(" 65 6C\n"), "18:el 3");
    EXPECT_EQ(tokenizer.DescribeLine("\n"), "3");
    EXPECT_EQ(tokenizer.DescribeLine("> 65\n"), "19 5:65 3");
    EXPECT_EQ(tokenizer.HexState(), kOutsideHexString);
}

TEST(HexStringsTest, APairMayNotBeSplitOverLines)
{
    Tokenizer tokenizer;
    EXPECT_EQ(tokenizer.DescribeLine("<4\n"), "17 1");
    EXPECT_EQ(tokenizer.DescribeLine("8>\n"), "1") << "the state is still inside: 8 wants a second digit";
}

const LineCase kHiddenLines[] = {
    {"TwoBytesAreTheWord", "%_Bd (A) 1 2\n", "10:Bd 3"},
    {"OfALongerWordTwoBytesAreTaken", "%_Bdx\n", "10:Bd 3"},
    {"ABlankIsOneOfTheTwo", "%_m x\n", "10:m  3"},
    {"TheLineEndIsOneOfTheTwo", "%_m\n", "10:m\n 3"},
    {"OperandsComeBefore", "1 %_Bm\n", "5:1 10:Bm 3"},
    {"ExactlyTwoBytesMayBeLeft", "%_Bm", "10:Bm 3"},
    {"OneByteLeftMakesAComment", "%_B", "4:%_B 3"},
    {"OnlyTheLineEndLeftMakesAComment", "%_\n", "4:%_\n 3"},
    {"NothingLeftMakesAComment", "%_", "4:%_ 3"},
    {"AnotherByteMakesAComment", "%-Bd\n", "4:%-Bd\n 3"},
    {"ABlankBeforeTheSignMakesAComment", "% _Bd\n", "4:% _Bd\n 3"},
    {"TwoPercentSignsMakeAComment", "%%_Bd\n", "4:%%_Bd\n 3"},
};

class HiddenOperators : public testing::TestWithParam<LineCase>
{
};

TEST_P(HiddenOperators, AreWordsUntilTheSetupEnds)
{
    Tokenizer tokenizer;
    EXPECT_EQ(tokenizer.DescribeLine(GetParam().line), GetParam().tokens);
}
INSTANTIATE_TEST_SUITE_P(Lex, HiddenOperators, testing::ValuesIn(kHiddenLines), CaseName());

TEST(Copies, AreMadeOnlyOfEscapesAndHexData)
{
    const std::string line = "(a(b)c) /n /w % c";
    Tokenizer tokenizer;
    tokenizer.SetLine(line);
    ASSERT_EQ(tokenizer.Next(), kTokenString);
    EXPECT_EQ(tokenizer.Value().text, reinterpret_cast<const uint8_t *>(line.data() + 1));
    ASSERT_EQ(tokenizer.Next(), kTokenLiteralName);
    EXPECT_EQ(tokenizer.Value().text, reinterpret_cast<const uint8_t *>(line.data() + 9));

    tokenizer.SetLine("(a\\)b) <48>");
    ASSERT_EQ(tokenizer.Next(), kTokenString);
    EXPECT_TRUE(tokenizer.IsBuilt());
    ASSERT_EQ(tokenizer.Next(), kTokenHexStart);
    ASSERT_EQ(tokenizer.Next(), kTokenHexData);
    EXPECT_TRUE(tokenizer.IsBuilt());
}

TEST(Copies, KeepTheirPlaceBesideOneAnother)
{
    Tokenizer tokenizer;
    tokenizer.SetLine("(\\101) (\\102\\103)");
    ASSERT_EQ(tokenizer.Next(), kTokenString);
    const TokenValue first = tokenizer.Value();
    ASSERT_EQ(tokenizer.Next(), kTokenString);
    EXPECT_EQ(Text(first.text, first.length), "A");
    EXPECT_EQ(Text(tokenizer.Value().text, tokenizer.Value().length), "BC");
}

struct OverflowCase {
    const char *name, *line, *tokens;
};

class Overflows : public testing::TestWithParam<OverflowCase>
{
};

TEST_P(Overflows, OfTheStringBufferAreAKindOfTheirOwn)
{
    Tokenizer tokenizer(4);
    EXPECT_EQ(tokenizer.DescribeLine(GetParam().line), GetParam().tokens);
}

const OverflowCase kOverflows[] = {
    {"AStringThatFits", "(ab\\143d)\n", "7:abcd 3"},
    {"AStringOneByteTooLong", "(ab\\143de)\n", "2"},
    {"AnEscapeTooMany", "(abcd\\145)\n", "2"},
    {"ALongStringWithoutEscapesNeedsNoRoom", "(abcdefghij)\n", "7:abcdefghij 3"},
    {"AnErrorComesBeforeAnOverflow", "(abcdef\\147\n", "1"},
    {"HexDataThatFits", "<61626364>\n", "17 18:abcd 19 3"},
    {"HexDataOneByteTooLong", "<6162636465>\n", "17 2"},
    {"AnOverflowStays", "<616263646566\n", "17 2"},
};
INSTANTIATE_TEST_SUITE_P(Lex, Overflows, testing::ValuesIn(kOverflows), CaseName());

TEST(Digits, AreToldByTheByte)
{
    const std::string hex = "0123456789ABCDEFabcdef";
    const std::string delimiters = "/{}[]()<>%";
    for (int byte = 0; byte < 256; ++byte) {
        const auto b = static_cast<uint8_t>(byte);
        const auto c = static_cast<char>(b);
        const size_t digit = hex.find(c);
        EXPECT_EQ(IsHexChar(b), byte != 0 && digit != std::string::npos) << byte;
        const size_t value = digit == std::string::npos ? 0 : digit < 16 ? digit : digit - 6;
        EXPECT_EQ(HexValue(b), value) << byte;
        EXPECT_EQ(IsOctalChar(b), byte >= '0' && byte <= '7') << byte;
        EXPECT_EQ(IsDelimiter(b), IsWhiteSpace(b) || delimiters.find(c) != std::string::npos) << byte;
    }
}

struct EscapeCase {
    const char *name;
    std::string text;
    bool read;
    int byte;
    std::string rest;
};

class Escapes : public testing::TestWithParam<EscapeCase>
{
};

TEST_P(Escapes, ConsumeWhatTheyRead)
{
    BigString text = View(GetParam().text);
    uint8_t byte = 0;
    ASSERT_EQ(LexEscapedCharacter(&text, &byte), GetParam().read);
    EXPECT_EQ(byte, GetParam().byte);
    EXPECT_EQ(Text(text), GetParam().rest);
}

const EscapeCase kEscapes[] = {
    {"NothingIsNoEscape", "", false, 0, ""},
    {"AnotherByteIsLeft", "ab", false, 0, "ab"},
    {"ABackslashAloneIsConsumed", "\\", false, 0, ""},
    {"ALineFeedIsDroppedWithItsBackslash", "\\\nab", false, 0, "ab"},
    {"ACarriageReturnIsDroppedWithItsBackslash", "\\\rab", false, 0, "ab"},
    {"AnOctalEscapeMayBeCutByTheEnd", "\\12", true, 10, ""},
    {"ThreeOctalDigitsAreTaken", "\\1234", true, 83, "4"},
    {"FourHundredWrapsToZero", "\\400", true, 0, ""},
    {"NIsALineFeed", "\\n)", true, 10, ")"},
    {"LargeNIsItself", "\\N", true, 'N', ""},
};
INSTANTIATE_TEST_SUITE_P(Lex, Escapes, testing::ValuesIn(kEscapes), CaseName());

struct PieceCase {
    const char *name, *text;
    int32_t depth;
    const char *piece;
    int32_t depthAfter;
    const char *rest;
};

class Pieces : public testing::TestWithParam<PieceCase>
{
};

TEST_P(Pieces, StopAtABackslashOrTheClosingParenthesis)
{
    BigString text = View(GetParam().text);
    int32_t depth = GetParam().depth;
    BigString piece = {};
    LexPartialString(&text, &depth, &piece);
    EXPECT_EQ(Text(piece), GetParam().piece);
    EXPECT_EQ(depth, GetParam().depthAfter);
    EXPECT_EQ(Text(text), GetParam().rest);
}

const PieceCase kPieces[] = {
    {"TheClosingParenthesisIsNotCounted", "ab)c", 1, "ab", 0, "c"},
    {"InnerParenthesesAreCounted", "a(b)c)d", 1, "a(b)c", 0, "d"},
    {"ABackslashIsLeft", "ab\\)c", 1, "ab", 1, "\\)c"},
    {"ABackslashAtOnceLeavesNothing", "\\)c", 1, "", 1, "\\)c"},
    {"TheEndOfTheTextStops", "a(b", 1, "a(b", 2, ""},
    {"DepthGoesOn", "a)b)c", 2, "a)b", 0, "c"},
    {"DepthZeroTakesNothing", "ab", 0, "", 0, "ab"},
};
INSTANTIATE_TEST_SUITE_P(Lex, Pieces, testing::ValuesIn(kPieces), CaseName());

// LexPartialString, byte by byte.
void LexPartialStringPlainly(BigString *text, int32_t *depth, BigString *piece)
{
    *piece = {text->text, 0};
    while (*depth > 0 && text->length > 0 && *text->text != '\\') {
        *depth += *text->text == '(' ? 1 : *text->text == ')' ? -1 : 0;
        piece->length += *depth > 0 ? 1 : 0;
        TrimFirstCharacter(text);
    }
}

TEST(LexPartialStringTest, TakesWhatAWalkByBytesTakes)
{
    std::mt19937 random(12);
    for (int i = 0; i < 200000; ++i) {
        std::string bytes;
        for (size_t length = random() % 60, plain = random() % 12; bytes.size() < length;)
            bytes += random() % 12 < plain ? static_cast<char>('a' + random() % 26)
                     : random() % 4 == 0   ? static_cast<char>(random())
                                           : "()\\'*]\xA8\xA9\xDC"[random() % 9];
        const BigString whole = View(bytes);
        BigString quickText = whole, plainText = whole, quickPiece, plainPiece;
        int32_t quickDepth = static_cast<int32_t>(random() % 4), plainDepth = quickDepth;
        LexPartialString(&quickText, &quickDepth, &quickPiece);
        LexPartialStringPlainly(&plainText, &plainDepth, &plainPiece);
        ASSERT_EQ(quickDepth, plainDepth) << bytes;
        ASSERT_EQ(Text(quickPiece), Text(plainPiece)) << bytes;
        ASSERT_EQ(quickPiece.text, plainPiece.text) << bytes;
        ASSERT_EQ(quickText.text, plainText.text) << bytes;
        ASSERT_EQ(quickText.length, plainText.length) << bytes;
    }
}

} // namespace
