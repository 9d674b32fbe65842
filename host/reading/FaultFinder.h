// Finds what is malformed in a document, by the plug-in itself: it says before each line that it takes one, and so where it
// gave up.
#pragma once

#include "host/Document.h"
#include "host/Outcome.h"
#include "host/StreamCompanion.h"
#include "host/reading/Blanks.h"
#include "host/reading/DocumentFault.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

namespace vxhost
{

// Reads the document once, with its blanks and with the companion beside the plug-in, and draws nothing.
using SilentPass = std::function<Outcome(StreamCompanion *companion)>;

struct FoundFault {
    size_t offset = 0;     // in the document: of the token, or of the line
    bool isInBody = false; // something may be drawn before it
    DocumentFault told;    // without its place
    // The token and the operands before it, which cost no other; empty: it is the fault of no token.
    std::vector<ByteRange> places;
};

// None: the document is not malformed, or it is before the plug-in takes a line.
std::optional<FoundFault> FindFault(const Document &document, int version, const Blanks &blanks,
                                    const SilentPass &pass);

// Sets the line and the column of an offset of the file.
void PlaceFault(const Document &file, size_t offset, DocumentFault *fault);

} // namespace vxhost
