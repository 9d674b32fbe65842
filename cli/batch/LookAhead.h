// Looks through all that a batch is to do before anything is drawn: how much it is, and that no two documents would be written
// to one place.
//
// Folders are looked through to their end, of manifests so many lines. What cannot be read twice, as a pipe, is left for later.
#pragma once

#include "cli/batch/Planner.h"
#include "cli/report/Messages.h"

#include <cstddef>
#include <optional>

namespace vxhost
{

constexpr size_t kMostLinesAhead = 100000;

// Returns how many documents there are; none: nobody can tell yet. Tells of links in folders. Throws UsageError for two
// documents that would be written to one place.
std::optional<size_t> LookAhead(const BatchOptions &options, const Planner &planner, Messages *messages);

} // namespace vxhost
