// Painting: which colour the host is given and when, and how fill, stroke and clip go together.
//
// A colour is sent only when a path is painted with it and the host does not hold it already: loadedColour says what
// the host holds. Inside a compound-path group painting is put off to the end of the group.
#pragma once

#include "plugin/Result.h"
#include "plugin/body/ParseContext.h"

namespace vx
{

// Colour procedures: load a colour into the host.
void GrayFC(ParseContext *context);
void ColorFC(ParseContext *context);
void GraySC(ParseContext *context);
void ColorSC(ParseContext *context);
// Patterns are painted in 50% gray. Serves fills and strokes, on purpose.
void PatternFC(ParseContext *context);

// Paint procedures: load the colour and paint the path.
void NormalPF(ParseContext *context);
void NormalPS(ParseContext *context);

// What the paint and colour variables hold before the first colour operator.
void NullOperator(ParseContext *context);

// What the painting operators do with the path. Inside a group each is only remembered.
void NullPath(ParseContext *context);
void ParserFillPath(ParseContext *context);
void ParserStrokePath(ParseContext *context);
void FillAndStrokePath(ParseContext *context);

// Tells the host that a path is about to be painted.
void SendPathComment(ParseContext *context);

// The operator "d": an array of at most 256 lengths and a phase.
Result SetLineDash(ParseContext *context);

} // namespace vx
