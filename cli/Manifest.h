// What a batch is to do: the lines of manifests, and documents that are named in their stead.
//
// A line is a JSON object, or the name of a document as it is. What is wrong with a line is an entry too, so that it
// is told in its turn. Nothing is kept of what has been handed out.
#pragma once

#include "cli/RenderWords.h"

#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace vxhost
{

struct ManifestEntry {
    std::string manifest; // empty: the document was named in its stead
    size_t line = 0;      // from 1; 0: it is about the whole manifest
    std::string id;       // as JSON, to be handed on; empty: none
    std::string input;    // empty: the line names none
    std::string output;   // pattern; empty: the line says nothing of it
    RenderWords words;
    std::string error; // not empty: why nothing can be done
};

class ManifestReader
{
  public:
    // "-" is standard input. A name whose file begins as a VX document does stands for that document.
    explicit ManifestReader(const std::vector<std::string> &names) : names_(names.begin(), names.end()) {}
    ManifestReader(const ManifestReader &) = delete;
    ManifestReader &operator=(const ManifestReader &) = delete;
    ~ManifestReader() { Close(); }

    // The next of what has been read; none: it was the end, or there is more to read.
    std::optional<ManifestEntry> Next();
    bool AtEnd() const { return names_.empty() && descriptor_ < 0; }

    // Reads on, after Next has given none. Waits unless Descriptor is ready, or -1.
    void Read();
    int Descriptor() const { return descriptor_; }

  private:
    void OpenNext();
    void Close();
    void TakeLine(std::string line);
    void LookAtStart();
    ManifestEntry &AddEntry(); // of the line at hand
    void Refuse(std::string error);

    std::deque<std::string> names_; // still to come
    std::string name_;              // of the one being read
    int descriptor_ = -1;
    bool isNew_ = false;      // nothing of it has been looked at
    bool isSkipping_ = false; // the rest of a line that is too long
    size_t line_ = 0;
    std::string bytes_;
    size_t at_ = 0; // in bytes_: the next line
    std::deque<ManifestEntry> found_;
};

} // namespace vxhost
