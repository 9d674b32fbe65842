#include "plugin/body/StateOperators.h"

#include "plugin/body/HostTable.h"
#include "plugin/body/Layers.h"
#include "plugin/body/Paint.h"
#include "plugin/body/Problems.h"

namespace vx
{

namespace
{

// A layer record ends in its printing flag and six more numbers.
constexpr int32_t kLayerOperands = 7;
constexpr int16_t kNumbersAfterPrinting = 6;

void SetFill(ParseContext *context, PaintProc colour)
{
    context->fillColour = colour;
    context->fillPaint = NormalPF;
    context->loadedColour = kNoColour;
}

void SetStroke(ParseContext *context, PaintProc colour)
{
    context->strokeColour = colour;
    context->strokePaint = NormalPS;
    context->loadedColour = kNoColour;
}

// A custom colour: its process equivalent, its name, and how far it is lightened.
bool PopCustomColour(PostScriptObjectList *stack, CMYKColour *colour)
{
    Fixed tint;
    BigString name;
    if (!PopFixed(stack, &tint) || !PopString(stack, &name) || !PopCMYK(stack, colour))
        return false;
    LightenCMYK(colour, tint);
    return true;
}

Result SetOverprintFlag(ParseContext *context, int32_t *overprint)
{
    int32_t value;
    if (!PopInteger(context->operandStack, &value))
        return kParserBadFormat;
    *overprint = value != 0 ? 1 : 0;
    context->loadedColour = kNoColour;
    return kOk;
}

Result SendFixed(ParseContext *context, void (*call)(const ParseContext *, Fixed))
{
    Fixed value;
    if (!PopFixed(context->operandStack, &value))
        return kParserBadFormat;
    call(context, value);
    return kOk;
}

Result SendInteger(ParseContext *context, void (*call)(const ParseContext *, int32_t))
{
    int32_t value;
    if (!PopInteger(context->operandStack, &value))
        return kParserBadFormat;
    call(context, value);
    return kOk;
}

} // namespace

Result Operator_g(ParseContext *context)
{
    if (!PopFixed(context->operandStack, &context->fillGray))
        return kParserBadFormat;
    SetFill(context, GrayFC);
    return kOk;
}

Result Operator_G(ParseContext *context)
{
    if (!PopFixed(context->operandStack, &context->strokeGray))
        return kParserBadFormat;
    SetStroke(context, GraySC);
    return kOk;
}

Result Operator_k(ParseContext *context)
{
    if (!PopCMYK(context->operandStack, &context->fillCMYK))
        return kParserBadFormat;
    SetFill(context, ColorFC);
    return kOk;
}

Result Operator_K(ParseContext *context)
{
    if (!PopCMYK(context->operandStack, &context->strokeCMYK))
        return kParserBadFormat;
    SetStroke(context, ColorSC);
    return kOk;
}

Result Operator_x(ParseContext *context)
{
    if (!PopCustomColour(context->operandStack, &context->fillCMYK))
        return kParserBadFormat;
    SetFill(context, ColorFC);
    return kOk;
}

Result Operator_X(ParseContext *context)
{
    if (!PopCustomColour(context->operandStack, &context->strokeCMYK))
        return kParserBadFormat;
    SetStroke(context, ColorSC);
    return kOk;
}

Result Operator_p(ParseContext *context)
{
    SetFill(context, PatternFC);
    return kOk;
}

Result Operator_P(ParseContext *context)
{
    SetStroke(context, PatternFC);
    return kOk;
}

Result Operator_O(ParseContext *context)
{
    return SetOverprintFlag(context, &context->fillOverprint);
}

Result Operator_R(ParseContext *context)
{
    return SetOverprintFlag(context, &context->strokeOverprint);
}

Result Operator_w(ParseContext *context)
{
    if (GetPostScriptObjectListLength(context->operandStack) != 1)
        return kOk;
    return SendFixed(context, CallSetLineWidth);
}

Result Operator_j(ParseContext *context)
{
    return SendInteger(context, CallSetLineJoin);
}

Result Operator_J(ParseContext *context)
{
    return SendInteger(context, CallSetLineCap);
}

Result Operator_M(ParseContext *context)
{
    return SendFixed(context, CallSetMiterLimit);
}

Result Operator_d(ParseContext *context)
{
    return SetLineDash(context);
}

Result Operator_q(ParseContext *context)
{
    if (IsOutsideGroup(context))
        CallGSave(context);
    return kOk;
}

Result Operator_Q(ParseContext *context)
{
    if (IsOutsideGroup(context)) {
        CallGRestore(context);
        context->loadedColour = kNoColour;
    }
    return kOk;
}

Result Operator_Mb(ParseContext *context)
{
    return Operator_q(context);
}

Result Operator_MB(ParseContext *context)
{
    // Unlike "Q", the loaded colour is left as it was, on purpose.
    if (IsOutsideGroup(context))
        CallGRestore(context);
    return kOk;
}

Result Operator_grave(ParseContext *context)
{
    ReportProblemOnce(context, kProblemPostScript, &context->warnedPostScript);
    CallGSave(context);
    return kOk;
}

Result Operator_tilde(ParseContext *context)
{
    ReportProblemOnce(context, kProblemPostScript, &context->warnedPostScript);
    CallGRestore(context);
    context->loadedColour = kNoColour;
    return kOk;
}

Result Operator_Lb(ParseContext *context)
{
    PostScriptObjectList *stack = context->operandStack;
    Fixed unused[kNumbersAfterPrinting];
    int32_t printing;
    if (GetPostScriptObjectListLength(stack) < kLayerOperands ||
        !PopMultipleFixeds(stack, unused, kNumbersAfterPrinting) || !PopInteger(stack, &printing))
        return kParserBadFormat;
    return DoLayers(context, printing != 0 ? 1 : 0);
}

Result Operator_LB(ParseContext *context)
{
    return DoLayers(context, 0);
}

} // namespace vx
