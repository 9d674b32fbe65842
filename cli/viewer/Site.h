// Holds the files that a browser gets, by their names: those of the viewer, the drawings, and a list of these. All are read before the
// first is served.
#pragma once

#include "cli/report/Status.h"
#include "host/FileReading.h"

#include <cstddef>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vxhost
{

class Messages;

class Site
{
  public:
    struct Page {
        std::string_view type; // as Content-Type has it
        std::span<const std::byte> bytes;
    };

    // Takes all files of the folder and below it; links are followed to files. Throws EarlyEnd when one cannot be read.
    void AddViewer(const std::string &folder);

    // Takes a drawing, a folder of drawings, or standard input, which is "-". What is no drawing is told, and left out.
    Status AddDrawings(const std::string &input, Messages *messages);
    bool HasDrawings() const { return !names_.empty(); }
    void ListDrawings(); // makes the list, once all are there

    // The name is empty for what is shown first. Null: there is none.
    const Page *Find(std::string_view name) const;

  private:
    Status AddFolder(const std::string &folder, Messages *messages);
    Status AddDrawing(const std::string &input, std::string_view name, Messages *messages);
    void Add(std::string name, std::string_view type, std::unique_ptr<HeldBytes> bytes);

    std::map<std::string, Page, std::less<>> pages_;
    std::vector<std::unique_ptr<HeldBytes>> held_;
    std::vector<std::string> names_; // of drawings, as the viewer shows them
    std::string list_;
    size_t drawingBytes_ = 0;
};

} // namespace vxhost
