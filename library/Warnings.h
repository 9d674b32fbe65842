// Finds the words for what is to be told about a document that was read, beside the error that ended it.
#pragma once

#include "library/Result.h"

#include <string>
#include <string_view>
#include <vector>

namespace vxhost
{

// Returns a line for each warning. What ended the document is no warning. fontHelp says what to do about a font that is not
// there: "install it". Names are as the document writes them.
std::vector<std::string> ListWarnings(const Outcome &outcome, std::string_view fontHelp);

// How many more there were than an answer could list.
std::vector<std::string> ListOmitted(const Omitted &omitted);

// Says where a document is malformed, and how: goes behind "malformed". Bytes are of those that came out of a packed one.
std::string MalformedPlace(const Outcome &outcome);
// Returns whether there is a drawing left when what is malformed is left out.
inline bool CanSalvage(const Outcome &outcome)
{
    return outcome.fault.column > 0;
}

// Says what a worker was not kept from; empty: it was kept from all.
std::string UnconfinedText(const Confinement &confinement);

} // namespace vxhost
