// Line interpreter: tokens become operands, and operators act on them.
#pragma once

#include "plugin/Result.h"
#include "plugin/body/ParseContext.h"

namespace vx
{

// Interprets one line, consuming it. Operands never outlive their operator, but may stand on lines before it.
Result ParseLine(BigString *line, ParseContext *context);

} // namespace vx
