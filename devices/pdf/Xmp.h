// Writes XMP: properties of a file as RDF, in the packet by which programs find it without reading the file around it.
//
// The packet says that it is not to be changed in place, and has no padding for that: whoever changes it in a PDF writes
// the stream anew.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vxhost::pdf
{

class XmpPacket
{
  public:
    XmpPacket();

    // Everything up to End is of this schema, whose prefix is a name of XML.
    // attributes declare more prefixes.
    void BeginSchema(std::string_view prefix, std::string_view uri, std::string_view attributes = {});
    void EndSchema() { Close(); }

    // A property has a name with its prefix, as "dc:title". The texts are UTF-8.
    void Add(std::string_view name, std::string_view text);
    void AddTitle(std::string_view name, std::string_view text); // the one for all languages
    void AddSequence(std::string_view name, std::span<const std::string> items);
    void AddBag(std::string_view name, std::span<const std::string> items);

    // A list whose items have properties of their own, which are added between BeginItem and EndItem.
    void BeginList(std::string_view name, std::string_view kind); // "Bag" or "Seq"
    void BeginItem();
    void EndItem() { Close(); }
    void EndList();

    // Returns the whole packet. Nothing may be added behind it.
    std::string Finish();

  private:
    void Open(std::string_view tag, std::string_view attributes = {});
    void Close();
    void AddItems(std::string_view name, std::string_view kind, std::span<const std::string> items);

    std::string text_;
    std::vector<std::string> open_; // tags
};

} // namespace vxhost::pdf
