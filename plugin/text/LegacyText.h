// Text operators of the older, one-character syntax: a block of lines that lays itself out.
#pragma once

#include "plugin/Result.h"
#include "plugin/input/PostObjs.h"
#include "plugin/text/TextObject.h"

namespace vx
{

// Runs the operator of that character. "Z" and unknown ones do nothing.
Result Parse_88_and_1_1_Text(const char *operatorText, ParseContext *context, TextObject *text);

// The openers of a block, by how it is painted. An array of six numbers may stand on top of the stack: the matrix.
Result Operator88_a(ParseContext *context, TextObject *text);
Result Operator88_e(ParseContext *context, TextObject *text);
Result Operator88_o(ParseContext *context, TextObject *text);
Result Operator88_r(ParseContext *context, TextObject *text);

Result Operator88_z(ParseContext *context, TextObject *text);
Result Operator88_t_TextOut(ParseContext *context, TextObject *text);
Result Operator88_T_EndObj(ParseContext *context, TextObject *text);

// Six numbers in the order popped. What was stored before a failure stays.
Result BuildMatrix(PostScriptObjectList *list, FixedMatrix *matrix);

} // namespace vx
