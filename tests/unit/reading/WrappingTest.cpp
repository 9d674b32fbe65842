// Drawings inside of what archives, mails and editors put around them.
#include "host/reading/Wrapping.h"

#include "tests/support/Wrapped.h"

#include <gtest/gtest.h>

#include <span>
#include <string>
#include <string_view>

namespace vxhost
{
namespace
{

using namespace std::string_literals;
using vxtest::AppleRecord;
using vxtest::Big;
using vxtest::MacBinary;

const std::string kDrawing = "%!PS-Tavro-3.0\n%%EOF\n";

Wrapping Find(const std::string &file)
{
    return FindDrawing(std::as_bytes(std::span(file)));
}

void ExpectFound(const std::string &file, std::string_view names)
{
    const Wrapping found = Find(file);
    EXPECT_EQ(found.names, names);
    EXPECT_EQ(file.substr(found.offset, found.size), kDrawing);
}

void ExpectNothing(const std::string &file)
{
    const Wrapping found = Find(file);
    EXPECT_EQ(found.names, "");
    EXPECT_EQ(found.offset, 0U);
    EXPECT_EQ(found.size, file.size());
}

TEST(Wrapping, IsNotThereAsARule)
{
    ExpectFound(kDrawing, "");
    ExpectNothing("");
    ExpectNothing("GIF89a");
    ExpectNothing(std::string(300, '\0'));
    ExpectNothing("\xC5\xD0\xD3\xC6 and so on\0\0"s);
}

TEST(Wrapping, IsOpened)
{
    ExpectFound("\xEF\xBB\xBF" + kDrawing, "a byte-order mark");
    ExpectFound("\r\n \t\n" + kDrawing, "blank lines");
    ExpectFound("From: somebody\r\nSubject: Gr\xFC\xDF"
                "e\r\n\r\n" +
                    kDrawing,
                "other lines before it");
    ExpectFound(kDrawing + "\0\0\0"s, "NULs at its end");
    ExpectFound(MacBinary(kDrawing), "MacBinary");
    ExpectFound(AppleRecord(0x00051600, kDrawing), "AppleSingle");
    ExpectFound(AppleRecord(0x00051607, kDrawing), "AppleDouble");
    ExpectFound(MacBinary("\xEF\xBB\xBF\n" + kDrawing + "\0"s),
                "MacBinary, a byte-order mark, blank lines, NULs at its end");
    ExpectFound(AppleRecord(0x00051600, MacBinary(kDrawing)), "AppleSingle, MacBinary");
}

TEST(Wrapping, OfAnEpsFileIsOpened)
{
    const std::string file = MacBinary("\xC5\xD0\xD3\xC6 and so on");
    EXPECT_EQ(Find(file).offset, 128U);
    EXPECT_EQ(Find(file).names, "MacBinary");
}

TEST(Wrapping, OfAnEpsFileMayBeLinesToo)
{
    EXPECT_EQ(Find("Content-Type: image/x-eps\r\n\r\n\xC5\xD0\xD3\xC6 and so on").offset, 29U);
}

TEST(Wrapping, OfTextEndsSomewhere)
{
    const size_t most = 64 << 10;
    ExpectFound(std::string(most - 1, 'x') + "\n" + kDrawing, "other lines before it");
    ExpectNothing(std::string(most, 'x') + "\n" + kDrawing);
    ExpectNothing("a\0b\n"s + kDrawing); // this is no text
    ExpectNothing("text " + kDrawing);   // and the drawing begins no line
    ExpectNothing("text\n%!PS-Adobe-3.0\n");
}

TEST(Wrapping, ThatIsDamagedIsNone)
{
    const std::string mac = MacBinary(kDrawing);
    for (const size_t zero : {0, 74, 82}) {
        std::string damaged = mac;
        damaged[zero] = 1;
        ExpectNothing(damaged);
    }
    for (const char length : {'\0', '\x40', '\xFF'}) {
        std::string damaged = mac;
        damaged[1] = length;
        ExpectNothing(damaged);
    }
    for (size_t length = 0; length < 128; ++length)
        ExpectNothing(mac.substr(0, length));
    const std::string single = AppleRecord(0x00051600, kDrawing);
    for (size_t length = 0; length < 82 + 11; ++length)
        EXPECT_EQ(Find(single.substr(0, length)).offset, 0U) << length;
    std::string beyond = single;
    beyond.replace(42, 4, Big(0xFFFFFFFF)); // where the data lie
    ExpectNothing(beyond);
    // A size beyond the file is that of the file.
    std::string longer = single;
    longer.replace(46, 4, Big(0xFFFFFFFF));
    ExpectFound(longer, "AppleSingle");
}

} // namespace
} // namespace vxhost
