// The work of commands that look at a document and draw nothing.
#pragma once

#include "cli/Session.h"

namespace vxhost
{

// What drawing it counts and uses.
void Inspect(const Plugin &plugin, const Document &document, const ParseOptions &parse, Finding *finding);

} // namespace vxhost
