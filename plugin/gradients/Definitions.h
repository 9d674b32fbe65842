// Gradient definitions: the operators of the setup section, which build the list of gradients and their stops.
#pragma once

#include "plugin/Result.h"

namespace vx
{

struct ParseContext;

// (name) type stops Bd: adds a gradient, to which the stops that follow belong.
Result Operator_Bd_Define_Begin(ParseContext *context);

// colour... kind midpoint ramppoint Bs: adds a stop. The colour is one number for gray, c m y k for process,
// c m y k (name) tint for custom, and nothing for other kinds; operands that do not suit the kind are forgiven.
Result Operator_Bs_Define_Stop(ParseContext *context);

// BD, with any operands: ends the definition.
Result Operator_BD_Define_End(ParseContext *context);

} // namespace vx
