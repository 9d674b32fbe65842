// Gradient names: which gradient a name means.
//
// The names form a tree whose links lie in the gradients' own records, so that nothing is allocated for it. A look-up
// takes no more steps than a name can have bits, whatever the gradients are called and however many there are.
#pragma once

#include "plugin/gradients/gradient.h"
#include "plugin/input/BigStrs.h"

namespace vx
{

// Lets the gradient be found by its name, unless that is empty or an earlier gradient has it.
void AddGradientName(GradientState *state, GradientObject *gradient);

// The first of its name, in the order of definition; null if there is none. An empty name names nothing.
GradientObject *GetAutoBlendDefinitionFromLinkList(GradientState *state, const BigString *name);

// True for the same bytes, at least one of them.
bool CompareStrings(const BigString *first, const BigString *second);

} // namespace vx
