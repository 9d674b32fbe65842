// How a document ends: with a line that says so, or somewhere, as a file does of which a part is lost.
#pragma once

#include "host/Document.h"
#include "host/reading/Blanks.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace vxhost
{

// Counts how many times more often each was begun than ended.
struct OpenThings {
    uint64_t groups = 0, compoundPaths = 0, saves = 0, layers = 0, gradients = 0, texts = 0;
    bool isSetup = false; // the setup section, before all that is drawn

    bool operator==(const OpenThings &) const = default;
};

// Counts the bytes behind a line "%%EOF" that is within a placed or binary section: the interpreter ends there all the same.
struct Undrawn {
    uint64_t line = 0;  // that line, as an editor counts: CR LF is one end; 0: there is none
    uint64_t bytes = 0; // from the section's end to the document's

    bool operator==(const Undrawn &) const = default;
};

struct DocumentEnd {
    bool isSaid = true; // by a line "%%PageTrailer", "%%Trailer" or "%%EOF"; else the document is cut short
    bool isInLine = false; // the last line of a document that is cut has no end
    OpenThings open;       // there, whether it is said or not
    Undrawn undrawn;       // only where that is more than comments

    bool operator==(const DocumentEnd &) const = default;
};

// Lines are those of the interpreter: CR or LF ends one, each by itself, and a longer one is several of 499 bytes. Sections that
// it passes over do not count. What is open is looked for only if it is asked for, or if the document is cut: that takes
// a look at every word, with the blanks.
DocumentEnd FindEnd(const Document &document, bool looksForOpenThings, const Blanks &blanks);

// Counts the ends of lines before a place, as an editor does.
uint64_t CountLineEnds(std::span<const std::byte> bytes, size_t before);

// Returns "2 groups and a layer"; empty: nothing is open.
std::string OpenText(const OpenThings &open);

} // namespace vxhost
