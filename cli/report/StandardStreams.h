// Standard input, output and error, as the program found them.
#pragma once

#include "cli/report/Messages.h"

#include <string_view>

namespace vxhost
{

// Puts something that can neither be read nor written in the place of those that are closed: whatever is opened next
// would get their number, and messages would be written into a document's output. Call it first. False when that
// cannot be done.
bool HoldClosedStreams();

// A result, on standard output. False when it cannot be written, which has been told then; a reader that left
// early, as head does, has what it wanted.
bool PrintResult(std::string_view text, Messages *messages);

} // namespace vxhost
