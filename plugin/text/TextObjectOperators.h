// Operators that open and close a text object and its path.
#pragma once

#include "plugin/Result.h"
#include "plugin/text/TextObject.h"

namespace vx
{

Result Operator_To_Begin(ParseContext *context, TextObject *text); // checks its count itself
Result Operator_TO_End(ParseContext *context, TextObject *text);
Result Operator_Tp_Begin(ParseContext *context, TextObject *text);
Result Operator_TP_End(ParseContext *context, TextObject *text);

} // namespace vx
