#include "plugin/body/Paint.h"

#include "plugin/body/HostTable.h"
#include "plugin/body/Problems.h"

namespace vx
{

namespace
{

constexpr Fixed kPatternGray = kFixedOne / 2;
constexpr int32_t kMaxDashes = 256;

// Inside a group: keeps the paint procedure for the group's end and returns true.
bool PutOffInGroup(ParseContext *context, PaintProc paint)
{
    if (IsOutsideGroup(context))
        return false;
    context->pendingPaint = paint;
    return true;
}

// The path becomes the clip and is forgotten. The restore before it brought back a colour that is not tracked, so
// the colour is sent again.
void ClipAndReload(ParseContext *context, PaintProc colour)
{
    CallClip(context);
    CallNewPath(context);
    context->loadedColour = kNoColour;
    colour(context);
    context->clipPending = 0;
}

void PaintPath(ParseContext *context, PaintProc paint, PaintProc colour)
{
    if (context->clipPending == 0) {
        paint(context);
        return;
    }
    CallGSave(context);
    paint(context);
    CallGRestore(context);
    ClipAndReload(context, colour);
}

} // namespace

void NullOperator(ParseContext * /*context*/) {}

void GrayFC(ParseContext *context)
{
    if (context->loadedColour == kFillColour)
        return;
    CallSetOverprint(context, context->fillOverprint);
    CallSetGray(context, context->fillGray);
    context->loadedColour = kFillColour;
}

void ColorFC(ParseContext *context)
{
    if (context->loadedColour == kFillColour)
        return;
    CallSetOverprint(context, context->fillOverprint);
    CallSetCMYKColor(context, &context->fillCMYK);
    context->loadedColour = kFillColour;
}

void GraySC(ParseContext *context)
{
    if (context->loadedColour == kStrokeColour)
        return;
    CallSetOverprint(context, context->strokeOverprint);
    CallSetGray(context, context->strokeGray);
    context->loadedColour = kStrokeColour;
}

void ColorSC(ParseContext *context)
{
    if (context->loadedColour == kStrokeColour)
        return;
    CallSetOverprint(context, context->strokeOverprint);
    CallSetCMYKColor(context, &context->strokeCMYK);
    context->loadedColour = kStrokeColour;
}

void PatternFC(ParseContext *context)
{
    ReportProblemOnce(context, kProblemPattern, &context->warnedPattern);
    CallSetOverprint(context, 0);
    CallSetGray(context, kPatternGray);
    context->loadedColour = kNoColour;
}

void NormalPF(ParseContext *context)
{
    context->fillColour(context);
    CallFill(context);
}

void NormalPS(ParseContext *context)
{
    context->strokeColour(context);
    CallStroke(context);
}

void NullPath(ParseContext *context)
{
    if (PutOffInGroup(context, NullPath))
        return;
    if (context->text.object.type == kPathText)
        return;
    if (context->clipPending != 0) {
        CallClip(context);
        context->clipPending = 0;
    }
    CallNewPath(context);
}

void ParserFillPath(ParseContext *context)
{
    if (!PutOffInGroup(context, ParserFillPath))
        PaintPath(context, context->fillPaint, context->fillColour);
}

void ParserStrokePath(ParseContext *context)
{
    if (!PutOffInGroup(context, ParserStrokePath))
        PaintPath(context, context->strokePaint, context->strokeColour);
}

void FillAndStrokePath(ParseContext *context)
{
    if (PutOffInGroup(context, FillAndStrokePath))
        return;
    const bool clips = context->clipPending != 0;
    CallGSave(context);
    ParserFillPath(context);
    CallGRestore(context);
    context->loadedColour = kNoColour;
    if (!clips) {
        ParserStrokePath(context);
        return;
    }
    CallGSave(context);
    ParserStrokePath(context);
    CallGRestore(context);
    ClipAndReload(context, context->strokeColour);
}

void SendPathComment(ParseContext *context)
{
    if (IsOutsideGroup(context))
        CallPathComment(context);
}

Result SetLineDash(ParseContext *context)
{
    PostScriptObjectList *stack = context->operandStack;
    Fixed phase;
    if (!PopFixed(stack, &phase) || GetPostScriptObjectListLength(stack) != 1)
        return kParserBadFormat;
    PostScriptObject *object = PopPostScriptObject(stack);
    if (object->type != kObjectArray)
        return kParserBadFormat;
    PostScriptObjectList *dashes = &object->array;
    const int32_t count = GetPostScriptObjectListLength(dashes);
    if (count > kMaxDashes)
        return kParserBadFormat;
    Fixed values[kMaxDashes];
    for (int32_t i = 0; i < count; ++i)
        if (!PopFixed(dashes, &values[i]))
            return kParserBadFormat;
    CallSetDash(context, phase, count, values);
    return kOk;
}

} // namespace vx
