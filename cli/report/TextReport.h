// Prints the texts of a drawing, as lines or as JSON.
#pragma once

#include "devices/words/FoundText.h"

#include <string>
#include <string_view>

namespace vxhost
{

// Returns its lines, each with a line end behind it and that prefix before it.
std::string TextLines(const FoundText &text, std::string_view prefix);

// Returns one JSON object, a line.
std::string TextJson(const FoundText &text, const std::string &input);

} // namespace vxhost
