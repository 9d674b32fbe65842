#include "devices/pdf/Xmp.h"

#include "devices/vector/XmlText.h"
#include "host/reading/Utf8.h"

#include <array>

namespace vxhost::pdf
{

namespace
{

// The mark of byte order tells readers that the packet is UTF-8.
constexpr std::string_view kBegin = "<?xpacket begin=\"\xEF\xBB\xBF\" id=\"W5M0MpCehiHzreSzNTczkc9d\"?>\n";
constexpr std::string_view kEnd = "<?xpacket end=\"r\"?>";
constexpr std::string_view kRdf = "xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\"";

std::string Escaped(std::string_view utf8)
{
    std::string text;
    std::array<char, kMaxXmlCharacter> bytes;
    while (!utf8.empty())
        text.append(bytes.data(), WriteXmlCharacter(TakeCharacter(&utf8), bytes.data()));
    return text;
}

} // namespace

XmpPacket::XmpPacket() : text_(kBegin)
{
    Open("x:xmpmeta", "xmlns:x=\"adobe:ns:meta/\"");
    Open("rdf:RDF", kRdf);
}

void XmpPacket::Open(std::string_view tag, std::string_view attributes)
{
    text_.append("<").append(tag).append(attributes.empty() ? "" : " ").append(attributes).append(">\n");
    open_.emplace_back(tag);
}

void XmpPacket::Close()
{
    text_.append("</").append(open_.back()).append(">\n");
    open_.pop_back();
}

void XmpPacket::BeginSchema(std::string_view prefix, std::string_view uri, std::string_view attributes)
{
    std::string all = "rdf:about=\"\" xmlns:";
    all.append(prefix).append("=\"").append(uri).append("\"");
    all.append(attributes.empty() ? "" : " ").append(attributes);
    Open("rdf:Description", all);
}

void XmpPacket::Add(std::string_view name, std::string_view text)
{
    text_.append("<").append(name).append(">").append(Escaped(text));
    text_.append("</").append(name).append(">\n");
}

void XmpPacket::AddTitle(std::string_view name, std::string_view text)
{
    BeginList(name, "Alt");
    text_.append("<rdf:li xml:lang=\"x-default\">").append(Escaped(text)).append("</rdf:li>\n");
    EndList();
}

void XmpPacket::AddItems(std::string_view name, std::string_view kind, std::span<const std::string> items)
{
    BeginList(name, kind);
    for (const std::string &item : items)
        Add("rdf:li", item);
    EndList();
}

void XmpPacket::AddSequence(std::string_view name, std::span<const std::string> items)
{
    AddItems(name, "Seq", items);
}

void XmpPacket::AddBag(std::string_view name, std::span<const std::string> items)
{
    AddItems(name, "Bag", items);
}

void XmpPacket::BeginList(std::string_view name, std::string_view kind)
{
    Open(name);
    Open(std::string("rdf:").append(kind));
}

void XmpPacket::BeginItem()
{
    Open("rdf:li", "rdf:parseType=\"Resource\"");
}

void XmpPacket::EndList()
{
    Close();
    Close();
}

std::string XmpPacket::Finish()
{
    while (!open_.empty())
        Close();
    return text_.append(kEnd);
}

} // namespace vxhost::pdf
