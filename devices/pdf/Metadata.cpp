#include "devices/pdf/Metadata.h"

#include "devices/pdf/Dates.h"
#include "devices/pdf/Xmp.h"
#include "devices/vector/XmlText.h"

#include <ctime>
#include <set>
#include <vector>

namespace vxhost::pdf
{

namespace
{

constexpr std::string_view kProducer = "vx";
constexpr std::string_view kPressUri = "http://www.npes.org/pdfx/ns/id/";
constexpr std::string_view kPdfUri = "http://ns.adobe.com/pdf/1.3/";
constexpr std::string_view kOwnUri = "urn:vx:xmp:1.0:";

// A date in both ways of writing it; empty: there is none.
struct DateTexts {
    std::string pdf, xmp;
};

template <typename Date>
DateTexts TextsOf(const Date &date)
{
    return {PdfDate(date), XmpDate(date)};
}

DateTexts DateOf(const PdfOptions &options, const Page &page)
{
    switch (FindDateOrigin(options, page)) {
    case DateOrigin::User:
        return TextsOf(*options.date);
    case DateOrigin::Drawing:
        return TextsOf(*page.date);
    case DateOrigin::File:
        return TextsOf(*page.fileDate);
    case DateOrigin::Clock:
        return TextsOf(int64_t{std::time(nullptr)});
    default:
        return {};
    }
}

// A property that the standard of archives does not know has to be described in the file.
struct OwnProperty {
    std::string_view schema, uri, prefix, name, type, meaning;
};

constexpr OwnProperty kPressVersion = {
    "Identification of PDF/X", kPressUri, "pdfxid",
    "GTS_PDFXVersion",         "Text",    "the level of PDF/X that the file keeps to"};
constexpr OwnProperty kTrapped = {"PDF", kPdfUri, "pdf", "Trapped", "Text", "whether the page was trapped"};
constexpr OwnProperty kFontMap = {
    "Drawings", kOwnUri,    "vx",
    "FontMap",  "bag Text", "fonts that the drawing asks for, each with the one that serves it"};

void Describe(const std::vector<OwnProperty> &properties, XmpPacket *xmp)
{
    xmp->BeginSchema("pdfaExtension", "http://www.aiim.org/pdfa/ns/extension/",
                     "xmlns:pdfaSchema=\"http://www.aiim.org/pdfa/ns/schema#\" "
                     "xmlns:pdfaProperty=\"http://www.aiim.org/pdfa/ns/property#\"");
    xmp->BeginList("pdfaExtension:schemas", "Bag");
    for (const OwnProperty &property : properties) {
        xmp->BeginItem();
        xmp->Add("pdfaSchema:schema", property.schema);
        xmp->Add("pdfaSchema:namespaceURI", property.uri);
        xmp->Add("pdfaSchema:prefix", property.prefix);
        xmp->BeginList("pdfaSchema:property", "Seq");
        xmp->BeginItem();
        xmp->Add("pdfaProperty:name", property.name);
        xmp->Add("pdfaProperty:valueType", property.type);
        xmp->Add("pdfaProperty:category", "internal");
        xmp->Add("pdfaProperty:description", property.meaning);
        xmp->EndItem();
        xmp->EndList();
        xmp->EndItem();
    }
    xmp->EndList();
    xmp->EndSchema();
}

// Lines as a font map has them, for fonts that go by another name in the drawing.
std::vector<std::string> FontMapOf(std::span<const ServedFont> fonts)
{
    std::set<std::string> lines;
    for (const ServedFont &font : fonts) {
        if (font.asked != font.own)
            lines.insert(font.asked + " = " + font.own);
    }
    return {lines.begin(), lines.end()};
}

// The same bytes have the same name: sixteen of them, divided by custom.
std::string NameOf(std::string digest)
{
    for (const size_t place : {8U, 13U, 18U, 23U})
        digest.insert(place, 1, '-');
    return std::string("uuid:").append(digest);
}

struct Facts {
    std::string title;
    std::string creator;
    DateTexts date;
};

std::string PacketOf(const Facts &facts, const Demands &demands, const Page &page,
                     std::span<const ServedFont> fonts, const std::string &name)
{
    XmpPacket xmp;
    xmp.BeginSchema("dc", "http://purl.org/dc/elements/1.1/");
    xmp.Add("dc:format", "application/pdf");
    xmp.AddTitle("dc:title", facts.title);
    if (page.date)
        xmp.AddSequence("dc:date", std::vector{XmpDate(*page.date)});
    xmp.EndSchema();

    xmp.BeginSchema("xmp", "http://ns.adobe.com/xap/1.0/");
    if (!facts.creator.empty())
        xmp.Add("xmp:CreatorTool", facts.creator);
    for (const char *key : {"xmp:CreateDate", "xmp:ModifyDate", "xmp:MetadataDate"})
        xmp.Add(key, facts.date.xmp);
    xmp.EndSchema();

    xmp.BeginSchema("xmpMM", "http://ns.adobe.com/xap/1.0/mm/");
    xmp.Add("xmpMM:DocumentID", name);
    xmp.Add("xmpMM:InstanceID", name);
    xmp.Add("xmpMM:VersionID", "1");
    xmp.Add("xmpMM:RenditionClass", "default");
    xmp.EndSchema();

    std::vector<OwnProperty> own;
    xmp.BeginSchema("pdf", kPdfUri);
    xmp.Add("pdf:Producer", kProducer);
    if (demands.isForPress) {
        xmp.Add("pdf:Trapped", "False");
        own.push_back(kTrapped);
    }
    xmp.EndSchema();

    if (!demands.xmpVersion.empty()) {
        xmp.BeginSchema(kPressVersion.prefix, kPressVersion.uri);
        xmp.Add("pdfxid:GTS_PDFXVersion", demands.xmpVersion);
        xmp.EndSchema();
        own.push_back(kPressVersion);
    }
    if (const std::vector<std::string> lines = FontMapOf(fonts); !lines.empty()) {
        xmp.BeginSchema(kFontMap.prefix, kFontMap.uri);
        xmp.AddBag("vx:FontMap", lines);
        xmp.EndSchema();
        own.push_back(kFontMap);
    }
    if (demands.isForArchive) {
        xmp.BeginSchema("pdfaid", "http://www.aiim.org/pdfa/ns/id/");
        xmp.Add("pdfaid:part", "2");
        xmp.Add("pdfaid:conformance", demands.conformance);
        xmp.EndSchema();
        if (!own.empty())
            Describe(own, &xmp);
    }
    return xmp.Finish();
}

} // namespace

// The standards ask for both dates and a title, those for the press also for whether the page was trapped: it was not.
Reference AddMetadata(const PdfOptions &options, const Page &page, std::span<const ServedFont> fonts,
                      PdfFile *file, Dictionary *catalog)
{
    const Demands demands = DemandsOf(options);
    Facts facts = {page.title, page.creator, DateOf(options, page)};
    if (demands.IsAny()) {
        facts.title = facts.title.empty() ? "Untitled" : FitForXml(facts.title);
        facts.creator = FitForXml(facts.creator);
    }
    Dictionary info;
    const auto add = [&](const char *key, std::string_view text) {
        if (!text.empty())
            info.Add(key, TextValue(text));
    };
    add("Title", facts.title);
    add("Creator", facts.creator);
    add("Producer", kProducer);
    add("CreationDate", facts.date.pdf);
    if (facts.date.pdf.empty())
        add("DocumentDate", page.created);
    if (demands.IsAny())
        add("ModDate", facts.date.pdf);
    add("GTS_PDFXVersion", demands.infoVersion);
    if (demands.isForPress)
        info.Add("Trapped", "/False");
    const Reference information = file->Add(info.Value());
    if (demands.IsAny()) {
        Dictionary stream;
        stream.Add("Type", "/Metadata").Add("Subtype", "/XML");
        catalog->Add("Metadata", file->AddPlainStream(stream, PacketOf(facts, demands, page, fonts,
                                                                       NameOf(file->DigestSoFar()))));
    }
    return information;
}

} // namespace vxhost::pdf
