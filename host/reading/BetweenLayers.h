// Counts what is painted between the end of a layer and the beginning of the next, where the interpreter prints nothing.
#pragma once

#include "host/Document.h"
#include "host/reading/Blanks.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vxhost
{

// A part of the drawing's body, from behind an operator up to another or to the end.
struct BodyPart {
    size_t begin = 0;
    size_t lineEnd = 0; // of the line that it begins in
    size_t end = 0;
};

// Returns how many paths, compound paths and texts would show there. The drawing is the document without what is around it; it is
// read with the blanks.
uint64_t CountPainted(const Document &document, std::string_view drawing, const BodyPart &part, int version,
                      const Blanks &blanks);

} // namespace vxhost
