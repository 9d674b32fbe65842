// Operators: which there are, how many operands each takes, and what each does.
#pragma once

#include "plugin/Result.h"
#include "plugin/body/ParseContext.h"

namespace vx
{

// Runs the operator of that text. One that is not known is reported once a parse and skipped; words of more than two
// characters are passed over in silence.
Result RunOperator(const uint8_t *text, int32_t length, ParseContext *context);

} // namespace vx
