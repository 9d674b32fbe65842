// Finds the words for what is to be told about a document that was read, beside the error that ended it.
#pragma once

#include "host/Outcome.h"

#include <string>
#include <string_view>
#include <vector>

namespace vxhost
{

// Returns a line for each warning. What ended the document is no warning. fontHelp says what to do about a font that is not
// there: "install it". Names are as the document writes them.
std::vector<std::string> ListWarnings(const Outcome &outcome, std::string_view fontHelp);

} // namespace vxhost
