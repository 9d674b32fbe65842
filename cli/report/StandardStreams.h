// Looks after standard input, output and error, as the program finds them.
#pragma once

#include "cli/report/Messages.h"

#include <string_view>

namespace vxhost
{

// Puts something that can neither be read nor written in the place of those that are closed: whatever is opened next
// would get their number, and messages would be written into a document's output. From then on a reader that leaves, and a file that
// may not grow, make a write fail and do not end the program. Call it first. Returns false when it cannot be done.
bool PrepareStreams();

// Prints a result on standard output. Returns false when it cannot be written, which it has told then; it tells nothing of a
// reader that left early, as head does.
bool PrintResult(std::string_view text, Messages *messages);

} // namespace vxhost
