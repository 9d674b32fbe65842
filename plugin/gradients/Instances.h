// Gradient instances: the operators of the body, from binding a gradient by its name to painting it.
#pragma once

#include "plugin/Result.h"

namespace vx
{

struct ParseContext;

// Bb, with whatever operands: saves the state and clips to the path that the gradient is to fill.
Result Operator_Bb_Instance_Begin(ParseContext *context);

// flag (name) 4 numbers, a b c d tx ty Bg: the gradient to paint with. A name that is not defined is an error.
Result Operator_Bg_Instance_Bind(ParseContext *context);

// a b c d tx ty Bc and Bm: where the two caps and the segments lie. Ignored until a gradient is bound.
Result Operator_Bc_Clip_Matrix(ParseContext *context);
Result Operator_Bm_Segment_Matrix(ParseContext *context);

// 4 numbers Bh: the highlight of radial gradients, which holds until the next one.
Result Operator_Bh_Highlight(ParseContext *context);

// mode BB: paints the gradient, gives the state back, and discards (0), strokes (1, 2) or keeps the path.
Result Operator_BB_Instance_End(ParseContext *context);

} // namespace vx
