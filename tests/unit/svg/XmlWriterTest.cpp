// Markup into a sink: what is escaped, what is replaced, and that nothing is lost between buffers.
#include "devices/svg/XmlWriter.h"

#include <gtest/gtest.h>

#include <functional>

namespace vxhost::svg
{
namespace
{

std::string Written(const std::function<void(XmlWriter *)> &write)
{
    std::string text;
    XmlWriter xml([&text](std::span<const std::byte> bytes) {
        text.append(reinterpret_cast<const char *>(bytes.data()), bytes.size());
        return Failure{};
    });
    write(&xml);
    EXPECT_FALSE(xml.Finish());
    return text;
}

std::string Escaped(std::string_view utf8)
{
    return Written([&](XmlWriter *xml) { xml->Escaped(utf8); });
}

TEST(XmlWriterTest, EscapesWhatIsMarkup)
{
    EXPECT_EQ(Escaped("a < b && c > \"d\""), "a &lt; b &amp;&amp; c &gt; &quot;d&quot;");
    EXPECT_EQ(Escaped("tab\tline\n"), "tab\tline\n");
    EXPECT_EQ(Escaped("return\r"), "return&#13;");
    EXPECT_EQ(Escaped("\xC3\xA9 \xE7\xB8\xA6 \xF0\x9F\x8E\xB7"), "\xC3\xA9 \xE7\xB8\xA6 \xF0\x9F\x8E\xB7");
}

TEST(XmlWriterTest, ReplacesWhatXmlForbids)
{
    const std::string replaced = "\xEF\xBF\xBD";
    EXPECT_EQ(Escaped(std::string_view("\0\x01\x1F", 3)), replaced + replaced + replaced);
    EXPECT_EQ(Escaped("\xEF\xBF\xBE"), replaced); // U+FFFE
    EXPECT_EQ(Escaped("\xFF"
                      "a"),
              replaced + "a");                                          // no lead byte
    EXPECT_EQ(Escaped("\xC3(\xC3"), replaced + "(" + replaced);         // cut short
    EXPECT_EQ(Escaped("\xC0\x80"), replaced + replaced);                // longer than it need be
    EXPECT_EQ(Escaped("\xE0\x80\xAF"), replaced + replaced + replaced); // the same with three
    EXPECT_EQ(Escaped("\xED\xA0\x80"), replaced);                       // half of a pair
    EXPECT_EQ(Escaped("\xF4\x90\x80\x80"), replaced);                   // beyond the last
    EXPECT_EQ(Written([](XmlWriter *xml) { xml->Character(0xD800); }), replaced);
}

TEST(XmlWriterTest, WritesBase64)
{
    const struct {
        const char *bytes, *text;
    } cases[] = {{"", ""},        {"f", "Zg=="},        {"fo", "Zm8="},
                 {"foo", "Zm9v"}, {"foob", "Zm9vYg=="}, {"\xFB\xFF", "+/8="}};
    for (const auto &row : cases) {
        const std::string_view bytes = row.bytes;
        EXPECT_EQ(Written([&](XmlWriter *xml) { xml->Base64(std::as_bytes(std::span(bytes))); }), row.text);
    }
}

TEST(XmlWriterTest, LosesNothingBetweenBuffers)
{
    std::string expected;
    const std::string text = Written([&](XmlWriter *xml) {
        for (int i = 0; i < 20000; ++i) {
            const std::string piece = "<" + std::to_string(i) + ">";
            expected += piece + std::to_string(i) + " .5";
            xml->Markup(piece);
            xml->Coordinates({static_cast<double>(i), 0.5});
        }
        const std::string longer(200000, 'x');
        expected += longer;
        xml->Markup(longer);
    });
    EXPECT_TRUE(text == expected);
}

TEST(XmlWriterTest, ReportsTheFirstFailureAndWritesNoMore)
{
    int calls = 0;
    XmlWriter xml([&calls](std::span<const std::byte>) {
        return Failure{FailureKind::CannotWrite, "failure " + std::to_string(++calls)};
    });
    xml.Markup(std::string(300000, 'x'));
    EXPECT_EQ(xml.Finish().text, "failure 1");
    EXPECT_EQ(calls, 1);
}

} // namespace
} // namespace vxhost::svg
