#include "plugin/body/PathOperators.h"

#include "plugin/body/HostTable.h"
#include "plugin/body/Paint.h"

namespace vx
{

namespace
{

// A text object keeps its path for what follows, so painting must not use it up.
void PaintKeepingTextPath(ParseContext *context, PaintProc paint)
{
    const bool keep = IsTextObjectOpen(context);
    if (keep)
        CallGSave(context);
    SendPathComment(context);
    paint(context);
    if (keep)
        CallGRestore(context);
}

} // namespace

Result Operator_m(ParseContext *context)
{
    FixedPoint to;
    if (!PopFixedPoints(context->operandStack, &to, 1))
        return kParserBadFormat;
    CallMoveTo(context, &to);
    return kOk;
}

Result Operator_l(ParseContext *context)
{
    FixedPoint to;
    if (!PopFixedPoints(context->operandStack, &to, 1))
        return kParserBadFormat;
    CallLineTo(context, &to);
    return kOk;
}

Result Operator_c(ParseContext *context)
{
    FixedPoint points[3];
    if (!PopFixedPoints(context->operandStack, points, 3))
        return kParserBadFormat;
    CallCurveTo(context, &points[0], &points[1], &points[2]);
    return kOk;
}

Result Operator_v(ParseContext *context)
{
    FixedPoint points[2];
    if (!PopFixedPoints(context->operandStack, points, 2))
        return kParserBadFormat;
    CallCurveToFromCurrent(context, &points[0], &points[1]);
    return kOk;
}

Result Operator_y(ParseContext *context)
{
    FixedPoint points[2];
    if (!PopFixedPoints(context->operandStack, points, 2))
        return kParserBadFormat;
    CallCurveTo(context, &points[0], &points[1], &points[1]);
    return kOk;
}

Result Operator_h(ParseContext *context)
{
    CallClosePath(context);
    return kOk;
}

Result Operator_n(ParseContext *context)
{
    SendPathComment(context);
    NullPath(context);
    return kOk;
}

Result Operator_f(ParseContext *context)
{
    // Inside a gradient instance the gradient paints the path, whatever operands are left over.
    if (IsInGradientInstance(context->gradientSetup))
        return kOk;
    if (GetPostScriptObjectListLength(context->operandStack) != 0)
        return kParserBadFormat;
    CallClosePath(context);
    PaintKeepingTextPath(context, ParserFillPath);
    return kOk;
}

Result Operator_F(ParseContext *context)
{
    if (IsInGradientInstance(context->gradientSetup))
        return kOk;
    SendPathComment(context);
    ParserFillPath(context);
    return kOk;
}

Result Operator_s(ParseContext *context)
{
    CallClosePath(context);
    PaintKeepingTextPath(context, ParserStrokePath);
    return kOk;
}

Result Operator_S(ParseContext *context)
{
    SendPathComment(context);
    ParserStrokePath(context);
    return kOk;
}

Result Operator_b(ParseContext *context)
{
    CallClosePath(context);
    return Operator_B(context);
}

Result Operator_B(ParseContext *context)
{
    const bool keepsPath =
        IsInGradientInstance(context->gradientSetup) || context->text.object.pathState == kTextPathBegun;
    if (context->gradientSetup == nullptr) {
        FillAndStrokePath(context);
    } else if (keepsPath) {
        CallGSave(context);
        FillAndStrokePath(context);
        CallGRestore(context);
    } else {
        SendPathComment(context);
        FillAndStrokePath(context);
    }
    return kOk;
}

Result Operator_W(ParseContext *context)
{
    context->clipPending = 1;
    return kOk;
}

Result Operator_asterisk(ParseContext *context)
{
    if (IsOutsideGroup(context))
        CallNewPath(context);
    return kOk;
}

Result Operator_asterisk_u(ParseContext *context)
{
    context->groupDepth = static_cast<int16_t>(context->groupDepth + 1);
    return kOk;
}

Result Operator_asterisk_U(ParseContext *context)
{
    // An unmatched end makes the depth negative, and painting stays put off: nothing is tested, on purpose.
    context->groupDepth = static_cast<int16_t>(context->groupDepth - 1);
    SendPathComment(context);
    if (IsOutsideGroup(context))
        context->pendingPaint(context);
    return kOk;
}

} // namespace vx
