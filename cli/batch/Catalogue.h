// Makes a catalogue of what a batch drew: a page that works from a file system, with a small picture of each drawing, and the same as
// CSV. Each document has a file of its own until the page is made of them, so that any number of documents takes no memory, and a run that goes on
// has what earlier ones found.
#pragma once

#include <cstddef>
#include <nlohmann/json.hpp>
#include <string>

namespace vxhost
{

class Catalogue
{
  public:
    // Throws UsageError when the folder is none, or holds anything else.
    explicit Catalogue(std::string folder);

    // These throw EarlyEnd when something cannot be written.

    // Makes the folder. Unless a run goes on, the entries that are there are removed.
    void Begin(bool goesOn);
    // result: what the batch prints of the document.
    void Add(size_t number, const nlohmann::ordered_json &result, bool hasThumbnail);
    // Makes the page and the CSV of what is there, of documents up to that number.
    void Write(size_t lastNumber);

    std::string ThumbnailOf(size_t number) const; // its path
    // Returns whether the document of that number is there, with its thumbnail.
    bool Has(size_t number, const std::string &input) const;

  private:
    std::string PathOf(const char *kind, size_t number, const char *extension) const;
    std::string FromFolder(const std::string &path) const;
    nlohmann::ordered_json Read(size_t number) const;
    void WriteFile(const std::string &name, std::string_view text) const;
    [[noreturn]] void Fail(int error) const;

    std::string folder_;
};

} // namespace vxhost
