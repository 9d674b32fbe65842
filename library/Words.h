// Reads the words of a drawing, and writes them as lines or as JSON.
#pragma once

#include "devices/words/WordsDevice.h"
#include "host/reading/Reading.h"

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace vxhost
{

// Finds the texts of the drawing, and paints nothing. Words are the same whatever serves their fonts and whatever prints them, so
// nothing is told of either. The reading is one that reads texts.
Outcome ReadWords(Reading &reading, const WordsDevice::TextSink &sink);

// Returns the text's lines, each with a line end behind it and that prefix before it.
std::string TextLines(const FoundText &text, std::string_view prefix);

void AddText(const FoundText &text, nlohmann::ordered_json *json);

} // namespace vxhost
