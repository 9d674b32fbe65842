#include "devices/pdf/JoinedPdf.h"

#include "devices/pdf/Digest.h"

#include <algorithm>
#include <charconv>

namespace vxhost
{

using namespace pdf;

namespace
{

constexpr size_t kTail = 64; // bytes of a file in which the place of its table stands
constexpr size_t kRow = 20;
constexpr size_t kMostStreams = size_t{1} << 16; // that are known at a time
constexpr std::string_view kStream = "\nstream\n", kEndOfStream = "\nendstream", kEndOfObject = "\nendobj\n";

template <typename Number>
std::optional<Number> TakeNumber(std::string_view *text)
{
    Number number = 0;
    const auto [end, error] = std::from_chars(text->data(), text->data() + text->size(), number);
    if (error != std::errc())
        return std::nullopt;
    text->remove_prefix(static_cast<size_t>(end - text->data()));
    return number;
}

bool TakeWord(std::string_view word, std::string_view *text)
{
    if (!text->starts_with(word))
        return false;
    text->remove_prefix(word.size());
    return true;
}

bool IsList(std::string_view value)
{
    return value.starts_with('[') && value.ends_with(']');
}

std::string_view InsideOf(std::string_view list)
{
    return list.substr(1, list.size() - 2);
}

} // namespace

struct JoinedPdf::Part {
    uint64_t from = 0, size = 0;
    uint64_t table = 0;           // where it lies, in the part
    std::vector<uint64_t> places; // of objects, by number from 1, each behind the one before
    std::string catalog, page;
    uint32_t catalogNumber = 0, treeNumber = 0, pageNumber = 0, information = 0;
};

// The table of places is behind the last object, and its own place is in the last line but one.
bool JoinedPdf::ReadTable(Part *part) const
{
    const uint64_t tailFrom = part->size - std::min<uint64_t>(part->size, kTail);
    const std::string tail = read_(part->from + tailFrom, kTail);
    const size_t start = tail.rfind("startxref\n");
    if (start == std::string::npos)
        return false;
    std::string_view rest = std::string_view(tail).substr(start);
    TakeWord("startxref\n", &rest);
    const std::optional<uint64_t> table = TakeNumber<uint64_t>(&rest);
    if (!table || *table >= part->size)
        return false;
    part->table = *table;
    const std::string whole = read_(part->from + *table, static_cast<size_t>(part->size - *table));
    rest = whole;
    if (!TakeWord("xref\n0 ", &rest))
        return false;
    const std::optional<size_t> count = TakeNumber<size_t>(&rest);
    if (!count || *count < 2 || !TakeWord("\n", &rest) || rest.size() / kRow < *count)
        return false;
    for (size_t i = 1; i < *count; ++i) {
        std::string_view row = rest.substr(i * kRow, kRow);
        const std::optional<uint64_t> place = TakeNumber<uint64_t>(&row);
        const uint64_t before = part->places.empty() ? 0 : part->places.back();
        if (!place || *place <= before || *place >= *table)
            return false;
        part->places.push_back(*place);
    }
    rest.remove_prefix(*count * kRow);
    if (!TakeWord("trailer\n", &rest))
        return false;
    const std::optional<std::string_view> trailer = TakeValue(&rest);
    const std::optional<Entries> entries = trailer ? EntriesOf(*trailer) : std::nullopt;
    if (!entries)
        return false;
    part->catalogNumber = ReferredTo(ValueOf(*entries, "Root"));
    part->information = ReferredTo(ValueOf(*entries, "Info"));
    return true;
}

std::optional<std::string> JoinedPdf::BytesOf(const Part &part, uint32_t number) const
{
    if (number == 0 || number > part.places.size())
        return std::nullopt;
    const uint64_t from = part.places[number - 1];
    const uint64_t end = number < part.places.size() ? part.places[number] : part.table;
    std::string bytes = read_(part.from + from, static_cast<size_t>(end - from));
    const std::string head = std::to_string(number).append(" 0 obj\n");
    if (!bytes.starts_with(head) || !bytes.ends_with(kEndOfObject) ||
        bytes.size() < head.size() + kEndOfObject.size())
        return std::nullopt;
    return bytes.substr(head.size(), bytes.size() - head.size() - kEndOfObject.size());
}

// Finds the catalog, the tree of pages and the only page.
bool JoinedPdf::ReadWayToPage(Part *part) const
{
    const std::optional<std::string> catalog = BytesOf(*part, part->catalogNumber);
    const std::optional<Entries> ofCatalog = catalog ? EntriesOf(*catalog) : std::nullopt;
    if (!ofCatalog)
        return false;
    part->treeNumber = ReferredTo(ValueOf(*ofCatalog, "Pages"));
    const std::optional<std::string> tree = BytesOf(*part, part->treeNumber);
    const std::optional<Entries> ofTree = tree ? EntriesOf(*tree) : std::nullopt;
    const std::string_view kids = ofTree ? ValueOf(*ofTree, "Kids") : std::string_view();
    if (!IsList(kids))
        return false;
    part->pageNumber = ReferredTo(InsideOf(kids));
    std::optional<std::string> page = BytesOf(*part, part->pageNumber);
    if (!page)
        return false;
    part->page = std::move(*page);
    part->catalog = *catalog;
    return true;
}

// The same bytes once more are the same object. They are compared: a digest says only where to look.
Reference JoinedPdf::CopyStream(const std::string &dictionary, std::string_view stream, uint64_t from,
                                bool isShared)
{
    std::string key = dictionary;
    if (isShared) {
        Digest digest;
        digest.Add(stream);
        key += digest.Hex();
        const auto found = streams_.find(key);
        if (found != streams_.end() && found->second.size == stream.size() &&
            read_(found->second.from, stream.size()) == stream)
            return found->second.object;
    }
    const Reference copy = file_->Begin();
    file_->Write(dictionary);
    file_->Write(stream);
    file_->End();
    if (!isShared)
        return copy;
    if (streams_.size() == kMostStreams)
        streams_.clear();
    streams_[key] = {copy, from, stream.size()};
    return copy;
}

std::optional<Reference> JoinedPdf::Copy(const Part &part, uint32_t number, const MapNumber &map,
                                         bool isShared)
{
    const std::optional<std::string> bytes = BytesOf(part, number);
    if (!bytes)
        return std::nullopt;
    if (const std::optional<FontUse> use = ReadFontUse(*bytes))
        return fonts_.Take(*use, &*file_);
    std::string_view rest = *bytes;
    const std::optional<std::string_view> value = TakeValue(&rest);
    const std::optional<std::string> renumbered = value ? Renumbered(*value, map) : std::nullopt;
    if (!renumbered)
        return std::nullopt;
    if (rest.empty()) {
        const std::optional<Entries> entries = EntriesOf(*renumbered);
        const bool isLayer = entries && ValueOf(*entries, "Type") == "/OCG"; // each page has its own
        return isLayer ? file_->Add(*renumbered) : file_->Share(*renumbered);
    }
    if (!rest.starts_with(kStream) || !rest.ends_with(kEndOfStream))
        return std::nullopt;
    const uint64_t end = number < part.places.size() ? part.places[number] : part.table;
    return CopyStream(*renumbered, rest, part.from + end - kEndOfObject.size() - rest.size(), isShared);
}

bool JoinedPdf::Add(uint64_t from, uint64_t size, const std::string &title)
{
    Part part;
    part.from = from;
    part.size = size;
    if (!ReadTable(&part) || !ReadWayToPage(&part))
        return false;
    const std::optional<Entries> ofCatalog = EntriesOf(part.catalog), ofPage = EntriesOf(part.page);
    if (!ofCatalog || !ofPage)
        return false;
    const bool isFirst = !file_;
    if (isFirst) {
        file_.emplace(sink_, LevelOf(compression_), read_(from, static_cast<size_t>(part.places.front())));
        tree_ = file_->Reserve();
    }
    std::vector<Reference> copies(part.places.size() + 1);
    copies[part.treeNumber] = tree_;
    const MapNumber map = [&](uint32_t number) -> std::optional<Reference> {
        if (number >= copies.size() || copies[number] == Reference())
            return std::nullopt;
        return copies[number];
    };
    const uint32_t metadata = ReferredTo(ValueOf(*ofCatalog, "Metadata"));
    const std::string_view contents = ValueOf(*ofPage, "Contents");
    std::vector<bool> isOfPage(
        copies.size()); // a piece of its program: nothing is gained by a look for another like it
    (void)Renumbered(contents, [&](uint32_t number) -> std::optional<Reference> {
        if (number < isOfPage.size())
            isOfPage[number] = true;
        return Reference();
    });
    for (uint32_t number = 1; number < copies.size(); ++number) {
        const bool isOfFirst = number == metadata || number == part.information;
        if (number == part.catalogNumber || number == part.treeNumber || number == part.pageNumber ||
            (isOfFirst && !isFirst))
            continue;
        const std::optional<Reference> copy = Copy(part, number, map, !isOfPage[number]);
        if (!copy)
            return false;
        copies[number] = *copy;
    }
    if (isFirst)
        information_ = map(part.information);
    return AddPage(part, map, title) && AddCatalog(part, map, title);
}

bool JoinedPdf::AddPage(const Part &part, const MapNumber &map, const std::string &title)
{
    const std::optional<std::string> page = Renumbered(part.page, map);
    if (page)
        pages_.push_back({file_->Add(*page), title});
    return page.has_value();
}

bool JoinedPdf::AddCatalog(const Part &part, const MapNumber &map, const std::string &title)
{
    const std::optional<Entries> entries = EntriesOf(part.catalog);
    const bool isFirst = pages_.size() == 1;
    for (const auto &[key, value] : *entries) {
        if (key == "/OCProperties" && !AddLayers(value, map, title))
            return false;
        if (key == "/Version")
            version_ = std::max(version_, std::string(value));
        if (!isFirst || key == "/OCProperties" || key == "/Version" || key == "/Pages")
            continue;
        const std::optional<std::string> renumbered = Renumbered(value, map);
        if (!renumbered)
            return false;
        catalog_.Add(key.substr(1), *renumbered);
    }
    return true;
}

// The lists of layers of all pages follow each other. In their order a page's title stands above those of the page.
bool JoinedPdf::AddLayers(std::string_view properties, const MapNumber &map, const std::string &title)
{
    const std::optional<std::string> renumbered = Renumbered(properties, map);
    const std::optional<Entries> entries = renumbered ? EntriesOf(*renumbered) : std::nullopt;
    const std::optional<Entries> view = entries ? EntriesOf(ValueOf(*entries, "D")) : std::nullopt;
    if (!view || !IsList(ValueOf(*entries, "OCGs")))
        return false;
    groups_.append(InsideOf(ValueOf(*entries, "OCGs"))).append(" ");
    for (const auto &[key, value] : *view) {
        std::string &all = view_[std::string(key.substr(1))];
        if (!IsList(value))
            all = value;
        else if (key == "/Order")
            all += ArrayValue(TextValue(title).append(InsideOf(value)));
        else
            all.append(InsideOf(value)).append(" ");
    }
    return true;
}

// An item names those before and behind it by their numbers, which follow each other.
Reference JoinedPdf::AddBookmarks()
{
    const Reference root = file_->Reserve();
    const auto at = [&](size_t page) { return Reference{root.number + 1 + static_cast<uint32_t>(page)}; };
    for (size_t i = 0; i < pages_.size(); ++i) {
        Dictionary item;
        item.Add("Title", TextValue(pages_[i].title)).Add("Parent", root);
        if (i > 0)
            item.Add("Prev", at(i - 1));
        if (i + 1 < pages_.size())
            item.Add("Next", at(i + 1));
        file_->Add(item.Add("Dest", ArrayValue(ValueOf(pages_[i].page).append("/Fit"))).Value());
    }
    Dictionary outline;
    outline.Add("Type", "/Outlines").Add("First", at(0)).Add("Last", at(pages_.size() - 1));
    file_->AddReserved(root, outline.Add("Count", static_cast<double>(pages_.size())).Value());
    return root;
}

Failure JoinedPdf::Finish()
{
    if (Failure failure = fonts_.AddTo(&*file_))
        return failure;
    std::vector<Reference> kids;
    for (const ListedPage &page : pages_)
        kids.push_back(page.page);
    Dictionary tree;
    tree.Add("Type", "/Pages").Add("Kids", ArrayValue(kids));
    file_->AddReserved(tree_, tree.Add("Count", static_cast<double>(kids.size())).Value());
    catalog_.Add("Pages", tree_).Add("Outlines", AddBookmarks()).Add("PageMode", "/UseOutlines");
    if (!groups_.empty()) {
        Dictionary view;
        for (const auto &[key, value] : view_) {
            const bool isList = key != "Name" && key != "BaseState";
            view.Add(key, isList ? ArrayValue(value) : value);
        }
        Dictionary properties;
        properties.Add("OCGs", ArrayValue(groups_)).Add("D", view.Value());
        catalog_.Add("OCProperties", properties.Value());
    }
    if (!version_.empty())
        catalog_.Add("Version", version_);
    return file_->Finish(catalog_, information_);
}

} // namespace vxhost
