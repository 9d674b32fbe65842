// A Result as JSON: the same members wherever one is printed.
#pragma once

#include "library/Result.h"

#include <nlohmann/json.hpp>

namespace vxhost
{

// What is known of the document, what confined its worker, and how much of that was left out.
void AddResult(const Result &result, nlohmann::ordered_json *json);

// What confined its worker, as AddResult says it.
void AddConfinement(const Result &result, nlohmann::ordered_json *json);

} // namespace vxhost
