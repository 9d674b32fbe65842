// Turns the bytes of one manifest into entries, line by line as they come.
//
// A line is a JSON object, or the name of a document as it is. A list whose names end in NUL has names alone: whatever
// stands in a name, it is never an object. What is wrong with a line is an entry too, so that it is told in its turn.
// Nothing is kept of what has been handed out.
#pragma once

#include "cli/options/OutputOptions.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace vxhost
{

struct ManifestEntry {
    std::string manifest; // its name; empty: the command line named the document
    size_t line = 0;      // from 1; 0: it is about the whole manifest
    std::string id;       // JSON as it was written, to be handed on; empty: the line has none
    std::string input;    // empty: the line names none
    std::string relative; // its folder below the one that was named; empty: none was
    std::string output;   // pattern; empty: the line says nothing of it
    OutputOptions outputOptions;
    std::string error; // not empty: why nothing can be done
};

enum class LineEnd : char { Newline = '\n', Nul = '\0' };

class ManifestLines
{
  public:
    // The name is for messages; "-" is standard input.
    explicit ManifestLines(std::string name = "", LineEnd end = LineEnd::Newline)
        : name_(std::move(name)), end_(end)
    {
    }

    void Add(std::string_view bytes);
    void End() { isWhole_ = true; } // no more bytes come

    // Takes the next entry of what has come; none: no whole line is left.
    std::optional<ManifestEntry> Next();

    // Returns whether it turned out to be no manifest. An entry has told so, and no further byte is looked at.
    bool IsGivenUp() const { return isGivenUp_; }

  private:
    std::optional<ManifestEntry> TakeLine(std::string line);
    std::optional<ManifestEntry> TakeName(std::string name);
    ManifestEntry MakeEntry() const; // for the line at hand
    ManifestEntry Refuse(std::string error) const;
    ManifestEntry GiveUp(size_t line, std::string error);

    std::string name_;
    LineEnd end_;
    std::string bytes_;
    size_t at_ = 0; // where the next line begins in bytes_
    size_t line_ = 0;
    bool isWhole_ = false;
    bool isSkipping_ = false; // passes over the rest of a line that is too long
    bool isGivenUp_ = false;
};

} // namespace vxhost
