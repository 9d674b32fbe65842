// Writes what is known of a document as JSON, with the same names wherever it is told.
#pragma once

#include "host/Outcome.h"
#include "host/reading/HeaderScan.h"

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace vxhost
{

constexpr double Millimetres(double points)
{
    return points * (25.4 / 72);
}

// Says whether it is a VX document; if so, what it is, what it uses, what serves its fonts and what was reported.
void AddFacts(const HeaderFacts &header, const Outcome &outcome, nlohmann::ordered_json *json);

// Lists what serves each font and why, and what it showed.
nlohmann::ordered_json FontUsesJson(const std::vector<FontUse> &fonts);

// Makes one line that a terminal shows as it is. Bytes that are not UTF-8 become U+FFFD.
std::string JsonLine(const nlohmann::ordered_json &json);

} // namespace vxhost
