// Fonts that a document re-encodes: how they are recorded, and which one a name finds.
#include "tests/support/CaseName.h"
#include "tests/unit/body/ParsingContext.h"
#include "tests/unit/text/TextDocument.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using namespace vx;
using namespace vxtest;

class ReencodedFonts : public ParsingContext
{
  protected:
    // The full name that the name finds, or "". The script is told in either case.
    std::string Find(const char *name)
    {
        char fullName[kFontNameLimit + 1] = {};
        return FindFontVectorData(name, &encoding, &script, fullName) ? fullName : "";
    }

    int16_t script = -1;
};

TEST_F(ReencodedFonts, KeepWhatIsWritten)
{
    ASSERT_EQ(Interpret("/_Ryumin-Light /Ryumin-Light -1 65539 70000 TZ"), kOk);
    const ReencodedFont *font = encoding.firstFont;
    ASSERT_NE(font, nullptr);
    EXPECT_STREQ(font->key, "Ryumin-Light");
    EXPECT_STREQ(font->fullName, "Ryumin-Light");
    EXPECT_EQ(font->keyLength, 12);
    EXPECT_EQ(font->values[0], -1);
    EXPECT_EQ(font->values[1], 65539);
    EXPECT_EQ(font->values[2], 70000);
    EXPECT_EQ(encoding.fontCount, 1);
    EXPECT_EQ(Find("Ryumin-Light"), "Ryumin-Light");
    EXPECT_EQ(script, 3) << "the low half of 65539";
}

TEST_F(ReencodedFonts, ANameWithoutTheMarkIsFoundWithoutItsFirstCharacter)
{
    ASSERT_EQ(Interpret("/Osaka /X 0 1 0 TZ"), kOk);
    EXPECT_STREQ(encoding.firstFont->key, "saka");
    EXPECT_EQ(Find("saka"), "Osaka");
    EXPECT_EQ(Find("Osaka"), "");
}

TEST_F(ReencodedFonts, TheLaterOneOfANameIsFound)
{
    ASSERT_EQ(Interpret("/_A /X 0 1 0 TZ /_B /X 0 2 0 TZ /_A /X 0 3 0 TZ"), kOk);
    EXPECT_EQ(encoding.fontCount, 3);
    EXPECT_STREQ(encoding.firstFont->key, "A");
    EXPECT_STREQ(encoding.firstFont->next->key, "B");
    EXPECT_EQ(Find("A"), "A");
    EXPECT_EQ(script, 3);
    EXPECT_EQ(Find("B"), "B");
    EXPECT_EQ(script, 2);
}

TEST_F(ReencodedFonts, KeysAreWholeNamesAndCaseMatters)
{
    ASSERT_EQ(Interpret("/_Courier /X 0 1 0 TZ"), kOk);
    for (const char *name : {"Courie", "Courier2", "courier", ""})
        EXPECT_EQ(Find(name), "") << name;
}

TEST_F(ReencodedFonts, AnUnknownNameHasTheSystemsScript)
{
    host.toolbox.systemScript = 2;
    EXPECT_EQ(Find("Courier"), "");
    EXPECT_EQ(script, 2);
    EXPECT_FALSE(FindFontVectorData("Courier", nullptr, &script, nullptr)) << "and so without an object";
    EXPECT_EQ(script, 2);
}

TEST_F(ReencodedFonts, MayBeMany)
{
    for (int i = 0; i < 1000; ++i)
        ASSERT_EQ(Interpret("/_F" + std::to_string(i) + " /X 0 " + std::to_string(i) + " 0 TZ"), kOk);
    for (int i = 0; i < 1000; ++i) {
        EXPECT_NE(Find(("F" + std::to_string(i)).c_str()), "");
        EXPECT_EQ(script, i);
    }
}

TEST_F(ReencodedFonts, TfTakesTheFullNameAndSoDoesTheShow)
{
    ASSERT_EQ(Interpret("/Osaka /X 0 1 0 TZ 0 To 1 0 0 1 0 0 0 Tp /Osaka 12 Tf"), kOk);
    EXPECT_STREQ(context.text.fontName, "Osaka");
    ASSERT_EQ(Interpret("/_Osaka 12 Tf"), kOk);
    EXPECT_STREQ(context.text.fontName, "Osaka") << "not found, but the same";
}

TEST_F(ReencodedFonts, AFullNameIsCutTo80Bytes)
{
    const std::string name(81, 'n');
    ASSERT_EQ(Interpret("/" + name + " /X 0 1 0 TZ"), kOk);
    EXPECT_EQ(Find(name.substr(1).c_str()), std::string(80, 'n'));
}

TEST_F(ReencodedFonts, ANulByteEndsAName)
{
    ASSERT_EQ(Interpret(std::string("/_A\0B /X 0 1 0 TZ", 17)), kOk);
    EXPECT_STREQ(encoding.firstFont->key, "A");
    EXPECT_EQ(encoding.firstFont->keyLength, 1);
}

TEST_F(ReencodedFonts, TheLongestNameHas255Bytes)
{
    EXPECT_EQ(Interpret("/" + std::string(255, 'n') + " /X 0 1 0 TZ"), kOk);
    EXPECT_EQ(encoding.firstFont->keyLength, 254);
    EXPECT_EQ(Interpret("/" + std::string(256, 'n') + " /X 0 1 0 TZ"), kParserBadFormat);
}

struct OperandCase {
    const char *name, *line;
    Result result;
};

class ReencodedOperands : public ReencodedFonts, public testing::WithParamInterface<OperandCase>
{
};

TEST_P(ReencodedOperands, AreTakenFromTheTop)
{
    EXPECT_EQ(Interpret(GetParam().line), GetParam().result);
    EXPECT_EQ(encoding.fontCount, 1) << "the entry comes first, and stays";
    if (GetParam().result == kOk) {
        EXPECT_EQ(Find("A"), "A");
        EXPECT_EQ(script, 1);
    }
}

const OperandCase kOperands[] = {
    {"Five", "/_A /X 0 1 2 TZ", kOk},
    {"AnArrayOnTop", "/_A /X 0 1 2 [1 2 3] TZ", kOk},
    {"WhatLiesBelowDoesNotCount", "39/quotesingle (x) /_A /X 0 1 2 TZ", kOk},
    {"Four", "/_A 0 1 2 TZ", kParserBadFormat},
    {"None", "TZ", kParserBadFormat},
    {"AnArrayAmongFive", "/X 0 1 2 [1] TZ", kParserBadFormat},
    {"AStringOnTop", "/_A /X 0 1 2 (x) TZ", kParserBadFormat},
    {"AFraction", "/_A /X 0 1.0 2 TZ", kParserBadFormat},
    {"AStringForAName", "(A) /X 0 1 2 TZ", kParserBadFormat},
};
INSTANTIATE_TEST_SUITE_P(ReencodedFonts, ReencodedOperands, testing::ValuesIn(kOperands), CaseName());

TEST_F(ReencodedFonts, NeedTheObjectAndMemory)
{
    host.failAllocation = 1;
    EXPECT_EQ(Interpret("/_A /X 0 1 2 TZ"), kParserBadFormat);
    EXPECT_EQ(encoding.fontCount, 0);
    context.encodingSetup = nullptr;
    EXPECT_EQ(Interpret("/_A /X 0 1 2 TZ"), kParserBadFormat);
}

} // namespace
