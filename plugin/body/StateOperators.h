// Operators that set the graphics state: colours, line attributes, save and restore, layers. The table has checked
// their operand counts.
#pragma once

#include "plugin/Result.h"
#include "plugin/body/ParseContext.h"

namespace vx
{

Result Operator_g(ParseContext *context);
Result Operator_G(ParseContext *context);
Result Operator_k(ParseContext *context);
Result Operator_K(ParseContext *context);
Result Operator_x(ParseContext *context);
Result Operator_X(ParseContext *context);
Result Operator_p(ParseContext *context);
Result Operator_P(ParseContext *context);
Result Operator_O(ParseContext *context);
Result Operator_R(ParseContext *context);

Result Operator_w(ParseContext *context); // checks its count itself
Result Operator_j(ParseContext *context);
Result Operator_J(ParseContext *context);
Result Operator_M(ParseContext *context);
Result Operator_d(ParseContext *context);

Result Operator_q(ParseContext *context);
Result Operator_Q(ParseContext *context);
Result Operator_Mb(ParseContext *context);
Result Operator_MB(ParseContext *context);
Result Operator_grave(ParseContext *context);
Result Operator_tilde(ParseContext *context);

Result Operator_Lb(ParseContext *context); // checks its count itself
Result Operator_LB(ParseContext *context);

} // namespace vx
