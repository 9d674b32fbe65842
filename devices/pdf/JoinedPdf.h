// Joins files of one page, as the device writes them, to one of many pages: with bookmarks, the layers of each page apart, and each
// object once that is the same on several, as profiles are, and each font once with the glyphs that any page uses.
//
// The whole says about itself, and about the press, what the first file says. An object is in memory at a time; of
// each page only its place is kept, with its title and its layers.
#pragma once

#include "devices/pdf/JoinedFonts.h"
#include "devices/pdf/PdfDevice.h"
#include "devices/pdf/PdfFile.h"
#include "devices/pdf/PdfText.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vxhost
{

class JoinedPdf
{
  public:
    // Reads bytes of the files that are joined, which lie one behind the other; less than were asked for: that is where they end.
    using ReadBytes = std::function<std::string(uint64_t from, size_t count)>;

    JoinedPdf(ByteSink sink, ReadBytes read, Compression compression)
        : sink_(std::move(sink)), read_(std::move(read)), compression_(compression)
    {
    }

    // Adds the page of the file that lies there. False: it is none of the device's, and nothing more may be added.
    bool Add(uint64_t from, uint64_t size, const std::string &title);

    // Completes the file. There has to be a page.
    Failure Finish();

  private:
    struct Part; // one of the files
    struct Stream {
        pdf::Reference object;
        uint64_t from = 0;
        size_t size = 0;
    };
    struct ListedPage {
        pdf::Reference page;
        std::string title;
    };

    bool ReadTable(Part *part) const;
    std::optional<std::string> BytesOf(const Part &part, uint32_t number) const;
    bool ReadWayToPage(Part *part) const;
    std::optional<pdf::Reference> Copy(const Part &part, uint32_t number, const pdf::MapNumber &map,
                                       bool isShared);
    pdf::Reference CopyStream(const std::string &dictionary, std::string_view stream, uint64_t from,
                              bool isShared);
    bool AddPage(const Part &part, const pdf::MapNumber &map, const std::string &title);
    bool AddCatalog(const Part &part, const pdf::MapNumber &map, const std::string &title);
    bool AddLayers(std::string_view properties, const pdf::MapNumber &map, const std::string &title);
    pdf::Reference AddBookmarks();

    ByteSink sink_;
    ReadBytes read_;
    Compression compression_;          // of what is not copied
    std::optional<pdf::PdfFile> file_; // from the first page on
    pdf::Reference tree_;              // of pages
    std::vector<ListedPage> pages_;
    pdf::Dictionary catalog_;
    std::optional<pdf::Reference> information_;
    pdf::JoinedFonts fonts_;
    std::string version_; // the highest that a catalog says
    std::string groups_;  // of layers
    std::map<std::string, std::string>
        view_; // what is said of all of them, by key; lists without their brackets
    std::map<std::string, Stream> streams_; // by what is in them
};

} // namespace vxhost
