// Writes a Result as JSON, with the same members wherever one is printed.
#pragma once

#include "library/Result.h"

#include <nlohmann/json.hpp>

namespace vxhost
{

// Adds what is known of the document, how much of that was left out, and what confined its worker.
void AddResult(const Result &result, nlohmann::ordered_json *json);

// Adds what confined its worker alone.
void AddConfinement(const Result &result, nlohmann::ordered_json *json);

} // namespace vxhost
