// The fonts of a document, or of the machine, as vx fonts prints them: aligned lines, or lines of JSON.
#pragma once

#include "cli/report/Summary.h"

#include <string>

namespace vxhost
{

// What serves it and why, and what it showed: "substitute NimbusSans-Bold; 1 string, 4 characters, 1 missing".
std::string FontUseText(const FontUse &font);

std::string FontsText(const std::string &input, const Result &result);
// error: what is told of the document; empty: nothing.
std::string FontsJson(const std::string &input, const Result &result, const std::string &error);

std::string FontListText(const FontList &fonts);
std::string FontListJson(const FontList &fonts);

} // namespace vxhost
