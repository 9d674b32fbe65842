// Hostile bytes on their way to a terminal or into JSON.
#include "host/reading/Utf8.h"

#include <gtest/gtest.h>

#include <string>

namespace vxhost
{

namespace
{

struct TextCase {
    const char *name;
    std::string bytes;
    const char *printable;
    const char *utf8;
};

// U+FFFD, which stands for each byte that is no part of a well-formed sequence.
#define BAD "\xEF\xBF\xBD"

const TextCase kTexts[] = {
    {"Plain", "harp.vx", "harp.vx", "harp.vx"},
    {"Accents", "caf\xC3\xA9", "caf\xC3\xA9", "caf\xC3\xA9"},
    {"Controls", "a\nb\x1B[2J\x7F", "a\\x0Ab\\x1B[2J\\x7F", "a\nb\x1B[2J\x7F"},
    {"C1Controls", "\xC2\x9B", "\\xC2\\x9B", "\xC2\x9B"},
    {"NulByte", std::string("a\0b", 3), "a\\x00b", nullptr},
    {"LoneContinuation", "\x80", "\\x80", BAD},
    {"LoneLead", "\xC3", "\\xC3", BAD},
    {"LeadThenLetter", "\xC3x", "\\xC3x", BAD "x"},
    {"Overlong", "\xC0\xAF", "\\xC0\\xAF", BAD BAD},
    {"OverlongOfThree", "\xE0\x80\xAF", "\\xE0\\x80\\xAF", BAD BAD BAD},
    {"Surrogate", "\xED\xA0\x80", "\\xED\\xA0\\x80", BAD BAD BAD},
    {"PastTheEnd", "\xF4\x90\x80\x80", "\\xF4\\x90\\x80\\x80", BAD BAD BAD BAD},
    {"FourBytes", "\xF0\x9F\x8E\xB5", "\xF0\x9F\x8E\xB5", "\xF0\x9F\x8E\xB5"},
    // Written byte by byte: as a literal it would turn this line round in an editor.
    {"DirectionOverride", std::string{'\xE2', '\x80', '\xAE'} + "vx", "\\xE2\\x80\\xAEvx", nullptr},
};

TEST(PrintableTest, EscapesWhatATerminalWouldObey)
{
    for (const TextCase &text : kTexts)
        EXPECT_EQ(Printable(text.bytes), text.printable) << text.name;
}

TEST(PrintableTest, CutsWithoutSplittingACharacter)
{
    EXPECT_EQ(Printable("abcdef", 6), "abcdef");
    EXPECT_EQ(Printable("abcdefg", 6), "abcdef...");
    EXPECT_EQ(Printable("abcde\xC3\xA9", 6), "abcde...");
    EXPECT_EQ(Printable("abc\x01", 6), "abc...");
}

TEST(ToUtf8Test, ReplacesWhatIsMalformed)
{
    for (const TextCase &text : kTexts) {
        if (text.utf8 != nullptr) {
            EXPECT_EQ(ToUtf8(text.bytes), text.utf8) << text.name;
        }
    }
}

TEST(IsUtf8Test, IsTrueOfWholeSequencesAlone)
{
    EXPECT_TRUE(IsUtf8(""));
    EXPECT_TRUE(IsUtf8("a\n\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80"));
    // Sequences that are cut, lack a lead byte, are overlong, are half of a pair, or lie past the last character.
    for (const char *bytes : {"\xC3", "\xC3(", "a\x80", "\xC0\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80"})
        EXPECT_FALSE(IsUtf8(bytes)) << bytes;
}

} // namespace

} // namespace vxhost
