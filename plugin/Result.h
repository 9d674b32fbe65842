// The one result code of the plug-in. Everything that can fail returns it; nothing is thrown.
#pragma once

#include <vx/HostCall.h>

namespace vx
{

enum [[nodiscard]] Result : int16_t{
    kOk = kVXOk,
    kStoppedByUser = kVXStoppedByUser,   // the answer to a problem report asked to stop
    kProcsUnusable = kVXProcsUnusable,   // the body found a hole in the procedure table
    kOutOfMemory = kVXOutOfMemory,       // a block that the parse cannot do without
    kParserBadSelector = kVXBadSelector, // unknown selector, or no procedure table or drawing
    kParserBadFormat = kVXBadFormat,     // not a VX document, or a malformed one
    kParserBadProcs = kVXBadProcs,       // the procedure table is refused before reading
};

} // namespace vx
