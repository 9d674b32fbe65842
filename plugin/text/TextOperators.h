// Operators that set the text state, and those that show a string. The table has checked their operand counts.
#pragma once

#include "plugin/Result.h"
#include "plugin/text/TextObject.h"

namespace vx
{

// Font, with the size and optionally the ascent and descent that columns are set with.
Result Operator_Tf(ParseContext *context, TextObject *text); // checks its count itself

Result Operator_Tx(ParseContext *context, TextObject *text); // checks its count itself
Result Operator_T_hyphen(ParseContext *context, TextObject *text);

Result Operator_Tc(ParseContext *context, TextObject *text);
Result Operator_Tw(ParseContext *context, TextObject *text);
Result Operator_Ts(ParseContext *context, TextObject *text);
Result Operator_Tk(ParseContext *context, TextObject *text);
Result Operator_Tt(ParseContext *context, TextObject *text);
Result Operator_Tz(ParseContext *context, TextObject *text); // checks its count itself
Result Operator_Tl(ParseContext *context, TextObject *text);
Result Operator_Ta_define(ParseContext *context, TextObject *text);
Result Operator_TA(ParseContext *context, TextObject *text);
Result Operator_Tr(ParseContext *context, TextObject *text);
Result Operator_Tm(ParseContext *context, TextObject *text);
Result Operator_Td(ParseContext *context, TextObject *text);
Result Operator_Tasteric(ParseContext *context, TextObject *text);
Result Operator_TR_define(ParseContext *context, TextObject *text);
Result Operator_Tv(ParseContext *context, TextObject *text);
Result Operator_TV(ParseContext *context, TextObject *text);
Result Operator_Ty(ParseContext *context, TextObject *text);
Result Operator_TM(ParseContext *context, TextObject *text);
Result Operator_Te(ParseContext *context, TextObject *text);

} // namespace vx
