// The tokens of a line: as the interpreter cuts them, so that the two agree on what is an operator.
#include "host/reading/LineTokens.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace vxhost
{
namespace
{

// Each token as a letter for its kind and its text.
std::string Cut(std::string_view line, bool isInHex = false, bool showsHidden = false)
{
    constexpr std::string_view kLetters = "IFSNO[]{<X>%!";
    LineTokens tokens(line, isInHex, showsHidden);
    std::string cut;
    for (Token token = tokens.Next(); token.kind != TokenKind::End; token = tokens.Next()) {
        cut += cut.empty() ? "" : " ";
        cut += kLetters[static_cast<size_t>(token.kind)];
        cut += line.substr(token.begin, token.end - token.begin);
    }
    return cut;
}

TEST(LineTokens, AreCutAtSpaceAndDelimiters)
{
    EXPECT_EQ(Cut("1 -2.5 .5 +7 u\r"), "I1 F-2.5 F.5 I+7 Ou");
    EXPECT_EQ(Cut("(a)Ln[1]0 d/f//g{x}U%u"), "S(a) OLn [[ I1 ]] I0 Od N/f N//g {{ Ox {} OU %%u");
    EXPECT_EQ(Cut("1.2.3 - . 1e5 2u *u"), "O1.2.3 O- O. O1e5 O2u O*u");
    EXPECT_EQ(Cut("a\tb\vc\fd"), "Oa Ob Oc Od");
    EXPECT_EQ(Cut(std::string_view("a\0b", 3)), std::string("Oa\0b", 4)); // NUL is no white space
    EXPECT_EQ(Cut(""), "");
}

TEST(LineTokens, StringsEndWhereTheirParenthesesDo)
{
    EXPECT_EQ(Cut("(a(b)c)x"), "S(a(b)c) Ox");
    EXPECT_EQ(Cut("(a\\)b)x"), "S(a\\)b) Ox");
    EXPECT_EQ(Cut("(a\\\\)x"), "S(a\\\\) Ox");
    EXPECT_EQ(Cut("1 (a\\"), "I1 !(a\\");
    EXPECT_EQ(Cut("(a\\\r) x"), "!(a\\\r) x"); // a line end cannot be escaped
    EXPECT_EQ(Cut("(a"), "!(a");
    EXPECT_EQ(Cut("u )x"), "Ou !)x");
}

TEST(LineTokens, HexGoesOverLines)
{
    EXPECT_EQ(Cut("<41 42>x"), "<< X41 42 >> Ox");
    LineTokens tokens("<41");
    EXPECT_EQ(tokens.Next().kind, TokenKind::HexBegin);
    EXPECT_EQ(tokens.Next().kind, TokenKind::HexData);
    EXPECT_TRUE(tokens.IsInHex());
    EXPECT_EQ(Cut("42 % u\r", true), "X42  %% u\r");
    EXPECT_EQ(Cut("4> u", true), "!4> u"); // both digits of a byte stand on a line
    EXPECT_EQ(Cut("u>", true), "!u>");
    EXPECT_EQ(Cut("<<", false), "<< !<");
    EXPECT_EQ(Cut(">", false), "!>");
}

TEST(LineTokens, HiddenOperatorsHaveTwoBytes)
{
    EXPECT_EQ(Cut("1 %_Bs and more", false, true), "I1 OBs");
    EXPECT_EQ(Cut("%_u\r", false, true), "Ou\r");
    EXPECT_EQ(Cut("%_u", false, true), "%%_u");
    EXPECT_EQ(Cut("%_Bs", false, false), "%%_Bs");
}

TEST(LineTokens, NumbersAreThoseOfTheInterpreter)
{
    EXPECT_EQ(IntegerOfToken("-7"), -7);
    EXPECT_EQ(IntegerOfToken("2147483648"), INT32_MAX);
    EXPECT_EQ(IntegerOfToken("-99999999999"), INT32_MIN);
    EXPECT_EQ(IntegerOfToken("1.0"), std::nullopt);
    EXPECT_EQ(FixedOfToken("1"), 65536);
    EXPECT_EQ(FixedOfToken("32768"), INT32_MIN); // an integer is shifted up, and wraps
    EXPECT_EQ(FixedOfToken("0.25"), 16384);
    EXPECT_EQ(FixedOfToken("-0.1"), -6554); // 6553.6
    EXPECT_EQ(FixedOfToken("1."), 65536);
    EXPECT_EQ(FixedOfToken("99999.5"), INT32_MAX);
    // Ten digits are taken, and the divisor of ten digits wraps: 1234567890 / 1410065408.
    EXPECT_EQ(FixedOfToken("0.12345678901234"), 57379);
    EXPECT_EQ(FixedOfToken("x"), std::nullopt);
    EXPECT_EQ(FixedOfToken("-"), std::nullopt);
    EXPECT_EQ(FixedOfToken(""), std::nullopt);
}

TEST(LineTokens, EscapesAreUndone)
{
    EXPECT_EQ(StringBytes("(a\\(b\\)\\\\\\n\\101\\7)"), "a(b)\\\nA\7");
    EXPECT_EQ(StringBytes("(\\400\\1234)"), std::string("\0S4", 3)); // 256 wraps
    EXPECT_EQ(StringBytes("()"), "");
    EXPECT_EQ(HexBytes("41 4a4B"), "AJK");
}

} // namespace
} // namespace vxhost
