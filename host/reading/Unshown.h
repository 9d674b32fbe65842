// Counts what a drawing shows and the interpreter does not.
#pragma once

#include "host/Document.h"
#include "host/reading/Blanks.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vxhost
{

struct Unshown {
    static constexpr size_t kMostPatterns = 10000; // that are told apart

    uint64_t patterns = 0;       // that something is painted in, by their names: one without a name is one
    uint64_t placedPictures = 0; // sections of them
    uint64_t postscript = 0;     // fragments that stand in none
    uint64_t binary = 0;         // sections of binary data
    uint64_t betweenLayers = 0;  // paths and texts behind the end of a layer and before the next begins

    bool operator==(const Unshown &) const = default;
};

// Returns whether a placed picture may be there, which the interpreter passes over without a word. The drawing is the document without
// what is around it.
bool MayHoldPlacedPicture(const Document &document, std::string_view drawing);

// Counts in the body, as the interpreter reads it: with the blanks, and no further than the drawing's end. What is between layers
// is not among it.
Unshown CountUnshown(const Document &document, std::string_view drawing, int version, const Blanks &blanks);

// Returns whether a problem that the plug-in reports, kVXProblemPattern or its like, is told with its number.
bool IsCounted(const Unshown &unshown, int problem);

// One line for a person each, "2 patterns are painted in half gray".
std::vector<std::string> UnshownTexts(const Unshown &unshown);

} // namespace vxhost
