// Text operators: which routine each of them runs.
#pragma once

#include "plugin/Result.h"
#include "plugin/text/LegacyText.h"
#include "plugin/text/TextObject.h"

#include <string_view>

namespace vx
{

// What follows the "T" of each text operator, in character order. This table's rows and those of the table of all
// operators are checked against it.
inline constexpr std::string_view kTextOperatorNames = "*-AMOPRSVZacdefjklmoprstvwxyz~";

// Runs a two-character text operator; operatorText is what follows the "T". Unknown ones do nothing.
Result ParseText(const char *operatorText, ParseContext *context, TextObject *text);

} // namespace vx
