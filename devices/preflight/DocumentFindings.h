// Finds what the reading of a drawing and its plates tell of it, beside what the device sees.
#pragma once

#include "devices/preflight/Findings.h"
#include "devices/raster/InkCoverage.h"
#include "host/Outcome.h"
#include "host/reading/HeaderScan.h"

#include <map>
#include <string>

namespace vxhost
{

// fonts: where each is first used, by the name asked for.
void AddDocumentFindings(const HeaderFacts &header, const Outcome &outcome, const InkCoverage &coverage,
                         const std::map<std::string, FindingPlace> &fonts, Findings *findings);

} // namespace vxhost
