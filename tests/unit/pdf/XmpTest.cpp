// Packets of XMP as another program reads them.
#include "devices/pdf/Xmp.h"
#include "tests/unit/pdf/DrawnPage.h"

#include <exempi/xmp.h>
#include <gtest/gtest.h>

#include <memory>

using namespace vxhost;
using namespace vxhost::pdf;
using namespace vxtest;

namespace
{

constexpr const char *kDc = "http://purl.org/dc/elements/1.1/";

class Parsed
{
  public:
    explicit Parsed(const std::string &packet)
    {
        xmp_init();
        xmp_.reset(xmp_new_empty());
        isWhole = xmp_parse(xmp_.get(), packet.data(), packet.size());
    }

    bool isWhole = false;

    std::string Get(const char *uri, const char *name) const
    {
        return Taken([&](XmpStringPtr to) { return xmp_get_property(xmp_.get(), uri, name, to, nullptr); });
    }
    std::string Item(const char *uri, const char *name, int item) const
    {
        return Taken(
            [&](XmpStringPtr to) { return xmp_get_array_item(xmp_.get(), uri, name, item, to, nullptr); });
    }
    std::string Title() const
    {
        return Taken([&](XmpStringPtr to) {
            return xmp_get_localized_text(xmp_.get(), kDc, "title", "", "x-default", nullptr, to, nullptr);
        });
    }
    bool HasItems(const char *uri, const char *name, uint32_t kind) const
    {
        uint32_t bits = 0;
        (void)xmp_get_property(xmp_.get(), uri, name, nullptr, &bits);
        return (bits & XMP_PROP_ARRAY_FORM_MASK) == kind;
    }

  private:
    template <typename Take>
    static std::string Taken(const Take &take)
    {
        const std::unique_ptr<_XmpString, decltype(&xmp_string_free)> text(xmp_string_new(), xmp_string_free);
        return take(text.get()) ? xmp_string_cstr(text.get()) : "not there";
    }

    std::unique_ptr<_Xmp, decltype(&xmp_free)> xmp_{nullptr, xmp_free};
};

constexpr uint32_t kBag = XMP_PROP_VALUE_IS_ARRAY, kSequence = kBag | XMP_PROP_ARRAY_IS_ORDERED;

TEST(XmpPacketTest, KeepsTextsAsTheyAre)
{
    for (const char *text : {"plain", "a < b && c > \"d\" 'e'", "Größe, 平成, \U0001F3B7", " spaces ", "]]>",
                             "&amp;", "tab\tline\nreturn\rend"}) {
        XmpPacket packet;
        packet.BeginSchema("dc", kDc);
        packet.Add("dc:source", text);
        packet.AddTitle("dc:title", text);
        packet.AddSequence("dc:date", std::vector<std::string>{"1994", text});
        packet.AddBag("dc:subject", std::vector<std::string>{text});
        packet.EndSchema();
        const Parsed parsed(packet.Finish());
        ASSERT_TRUE(parsed.isWhole) << text;
        EXPECT_EQ(parsed.Get(kDc, "source"), text);
        EXPECT_EQ(parsed.Title(), text);
        EXPECT_EQ(parsed.Item(kDc, "date", 2), text);
        EXPECT_TRUE(parsed.HasItems(kDc, "date", kSequence));
        EXPECT_EQ(parsed.Item(kDc, "subject", 1), text);
        EXPECT_TRUE(parsed.HasItems(kDc, "subject", kBag));
    }
}

TEST(XmpPacketTest, ReplacesWhatXmlForbids)
{
    XmpPacket packet;
    packet.BeginSchema("dc", kDc);
    packet.Add("dc:source", "a\x01\xFF z");
    const Parsed parsed(packet.Finish());
    ASSERT_TRUE(parsed.isWhole);
    EXPECT_EQ(parsed.Get(kDc, "source"), "a\uFFFD\uFFFD z");
}

TEST(XmpPacketTest, NestsItems)
{
    XmpPacket packet;
    packet.BeginSchema("dc", kDc, "xmlns:p=\"urn:parts:\"");
    packet.BeginList("dc:relation", "Bag");
    packet.BeginItem();
    packet.Add("p:name", "one");
    packet.EndItem();
    packet.EndList();
    const Parsed parsed(packet.Finish());
    ASSERT_TRUE(parsed.isWhole);
    EXPECT_EQ(parsed.Get(kDc, "relation[1]/p:name"), "one");
}

// A whole packet has a beginning by which programs find it, and says that nobody changes it in place.
TEST(XmpPacketTest, IsAPacket)
{
    EXPECT_EQ(XmpPacket().Finish(), "<?xpacket begin=\"\uFEFF\" id=\"W5M0MpCehiHzreSzNTczkc9d\"?>\n"
                                    "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\">\n"
                                    "<rdf:RDF xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\">\n"
                                    "</rdf:RDF>\n</x:xmpmeta>\n<?xpacket end=\"r\"?>");
}

TEST(PdfMetadata, IsReadByOtherPrograms)
{
    PdfOptions options;
    options.standard = PdfX::X4;
    options.archive = PdfA::A2u;
    vxhost::Page page;
    page.title = "Größe & \x02";
    page.date = CalendarDate{1994, 3, 25};
    DrawnPage drawn([](Device &) {}, options, page);
    const Parsed parsed(StreamText(drawn.File().getRoot().getKey("/Metadata")));
    ASSERT_TRUE(parsed.isWhole);
    EXPECT_EQ(parsed.Title(), "Größe & \uFFFD");
    EXPECT_EQ(parsed.Item(kDc, "date", 1), "1994-03-25");
    EXPECT_EQ(parsed.Get("http://ns.adobe.com/xap/1.0/", "CreateDate"), "1994-03-25");
    EXPECT_EQ(parsed.Get("http://www.aiim.org/pdfa/ns/id/", "part"), "2");
    EXPECT_EQ(parsed.Get("http://www.aiim.org/pdfa/ns/id/", "conformance"), "U");
    EXPECT_EQ(parsed.Get("http://www.npes.org/pdfx/ns/id/", "GTS_PDFXVersion"), "PDF/X-4");
    EXPECT_EQ(parsed.Get("http://ns.adobe.com/pdf/1.3/", "Trapped"), "False");
}

} // namespace
