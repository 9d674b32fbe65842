// Operators that build, paint and clip paths. The table has checked their operand counts.
#pragma once

#include "plugin/Result.h"
#include "plugin/body/ParseContext.h"

namespace vx
{

Result Operator_m(ParseContext *context);
Result Operator_l(ParseContext *context);
Result Operator_c(ParseContext *context);
Result Operator_v(ParseContext *context);
Result Operator_y(ParseContext *context);
Result Operator_h(ParseContext *context);

Result Operator_n(ParseContext *context);
Result Operator_f(ParseContext *context); // checks its count itself
Result Operator_F(ParseContext *context);
Result Operator_s(ParseContext *context);
Result Operator_S(ParseContext *context);
Result Operator_b(ParseContext *context);
Result Operator_B(ParseContext *context);
Result Operator_W(ParseContext *context);

Result Operator_asterisk(ParseContext *context);
Result Operator_asterisk_u(ParseContext *context);
Result Operator_asterisk_U(ParseContext *context);

} // namespace vx
