// Text operators: which routine each of them runs.
#pragma once

#include "plugin/Result.h"
#include "plugin/text/LegacyText.h"
#include "plugin/text/TextObject.h"

namespace vx
{

// Runs a two-character text operator; operatorText is what follows the "T". Unknown ones do nothing.
Result ParseText(const char *operatorText, ParseContext *context, TextObject *text);

} // namespace vx
