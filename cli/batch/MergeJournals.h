// Makes one journal of several, as of the parts of a batch that were done on several machines.
#pragma once

#include "cli/report/Messages.h"

#include <string>
#include <vector>

namespace vxhost
{

// Adds to the journal what the others have: of each document that is done the last line, of the last journal that has one; what
// was begun and is done nowhere; the lines that begin runs. Throws UsageError for what is no journal, before it writes.
void MergeJournals(const std::vector<std::string> &journals, const std::string &into, Messages *messages);

} // namespace vxhost
