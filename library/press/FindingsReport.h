// Tells what a check found of a drawing, in lines for a person and as JSON.
#pragma once

#include "devices/preflight/Findings.h"

#include <nlohmann/json.hpp>

#include <string>

namespace vxhost
{

// Says a finding in words, without its name.
std::string FindingText(FindingKind kind, const Finding &finding, const PreflightLimits &limits);

// Returns a line a finding. The worst come first; what is ignored is left out.
std::string FindingLines(const Findings &findings);

// Adds the same to what is told of a page with that title and that box.
void AddFindings(const std::string &title, const Box &box, const Findings &findings,
                 nlohmann::ordered_json *json);

} // namespace vxhost
