// Writes the fonts of a document, or of the machine, as vx fonts prints them: aligned lines, or lines of JSON.
#pragma once

#include "cli/report/Summary.h"

#include <string>

namespace vxhost
{

// Says what serves the font and why, and what it showed: "substitute NimbusSans-Bold; 1 string, 4 characters, 1 missing".
std::string FontUseText(const FontUse &font);

// error is what was told of the document; it is empty where nothing was.
std::string FontsText(const std::string &input, const Result &result, const std::string &error);
std::string FontsJson(const std::string &input, const Result &result, const std::string &error);

std::string FontListText(const FontList &fonts);
std::string FontListJson(const FontList &fonts);

} // namespace vxhost
