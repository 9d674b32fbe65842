// Outcomes, header facts and findings as JSON, which is how a worker hands them to its parent.
#pragma once

#include "cli/Session.h"
#include "library/OutcomeJson.h"

#include <nlohmann/json.hpp>

namespace vxhost
{

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Box, left, bottom, right, top)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Failure, kind, text, error)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Outcome, result, box, headerAccepted, monochrome, bytesRead, bytesTotal,
                                   peakHeap, memoryLimitHit, failure, lackedFont, undrawnTexts, reports,
                                   fonts, counts)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(HeaderFacts, hasPrefix, recognised, hasBox, version, epsWrapper, lineEnds,
                                   firstLine, title, creator, creationDate, processColours, customColours,
                                   fonts)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Finding, outcome, header, lastOutput, unconfined)

} // namespace vxhost
