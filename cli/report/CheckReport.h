// Prints what a check found of a drawing.
#pragma once

#include "devices/preflight/Findings.h"

#include <nlohmann/json.hpp>

#include <string>

namespace vxhost
{

// Holds what is told of a drawing: its name, what was looked at, and what was found there.
struct CheckedDrawing {
    std::string input;
    std::string title;
    Box box; // the page
    const Findings &findings;
};

// Says a finding in words, without its name.
std::string FindingText(FindingKind kind, const Finding &finding, const PreflightLimits &limits);

// The worst come first. What is ignored is left out.
std::string CheckText(const CheckedDrawing &drawing);
nlohmann::ordered_json CheckJson(const CheckedDrawing &drawing);

} // namespace vxhost
