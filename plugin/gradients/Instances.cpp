#include "plugin/gradients/Instances.h"

#include "plugin/body/HostTable.h"
#include "plugin/body/Paint.h"
#include "plugin/gradients/BlendPreview.h"
#include "plugin/gradients/GradientNames.h"

namespace vx
{

namespace
{

constexpr int32_t kBindOperands = 12;
constexpr int32_t kMatrixOperands = 6;

enum PaintMode : int32_t { kDiscardPath = 0, kStrokePath = 1, kStrokePathToo = 2 };

// True while the outlines of text lie in a path that outlives the instance.
bool IsInTextPath(const ParseContext *context)
{
    return context->text.object.pathState == kTextPathBegun && context->text.object.type == kPathText;
}

void PaintInstance(ParseContext *context)
{
    const GradientState *state = context->gradientSetup;
    if (state->clipMatrixCount > 0 || state->segmentMatrixCount > 0)
        (void)AutoBlendPreview(context); // a gradient that cannot be painted leaves the path to its mode
    CallGRestore(context);
}

void UsePath(ParseContext *context, int32_t mode)
{
    switch (mode) {
    case kDiscardPath:
        CallNewPath(context);
        break;
    case kStrokePath:
    case kStrokePathToo:
        ParserStrokePath(context);
        break;
    default:
        break;
    }
}

Result EndInstance(ParseContext *context)
{
    GradientState *state = context->gradientSetup;
    int32_t mode;
    if (GetPostScriptObjectListLength(context->operandStack) != 1 ||
        !PopInteger(context->operandStack, &mode))
        return kParserBadFormat;
    if (state->instancePhase == kInstanceBound)
        PaintInstance(context);
    context->loadedColour = kNoColour;
    CallClosePath(context);
    CallPathComment(context);
    UsePath(context, mode);
    state->instanceClosed = kClosed;
    state->instancePhase = kInstanceUnbound;
    return kOk;
}

// Takes the one operand of an operator, a matrix, and calls add(state, matrix) if an instance is bound. If none is, six
// operands of any kind pass for a matrix.
template <class Add>
Result TakeMatrix(ParseContext *context, Add add)
{
    PostScriptObjectList *stack = context->operandStack;
    GradientState *state = context->gradientSetup;
    if (GetPostScriptObjectListLength(stack) != kMatrixOperands)
        return kParserBadFormat;
    if (state->instancePhase != kInstanceBound)
        return kOk;
    FixedMatrix matrix;
    return PopAndBuildFixedMatrix(stack, &matrix) ? add(state, matrix) : kParserBadFormat;
}

} // namespace

Result Operator_Bb_Instance_Begin(ParseContext *context)
{
    CallGSave(context);
    if (IsInTextPath(context))
        CallGSave(context);
    CallClip(context);
    context->gradientSetup->instanceClosed = kOpen;
    context->gradientSetup->instancePhase = kInstanceUnbound;
    return kOk;
}

Result Operator_Bg_Instance_Bind(ParseContext *context)
{
    GradientState *state = context->gradientSetup;
    PostScriptObjectList *stack = context->operandStack;
    BigString name;
    if (GetPostScriptObjectListLength(stack) != kBindOperands ||
        !PopAndBuildFixedMatrix(stack, &state->instanceMatrix) ||
        !PopMultipleFixeds(stack, state->instanceGeometry, kGeometryValues) || !PopString(stack, &name))
        return kParserBadFormat;
    state->instanceGradient = GetAutoBlendDefinitionFromLinkList(state, &name);
    if (state->instanceGradient == nullptr || !PopInteger(stack, &state->instanceFlag))
        return kParserBadFormat;
    state->segmentMatrixCount = 0;
    state->clipMatrixCount = 0;
    state->instanceType = state->instanceGradient->gradientType;
    state->instancePhase = kInstanceBound;
    return kOk;
}

Result Operator_Bc_Clip_Matrix(ParseContext *context)
{
    // The count stays at 1, so that every later matrix is the second. Binding does not clear that one: an instance
    // that gives no second matrix has that of an earlier instance, or all zeros.
    return TakeMatrix(context, [](GradientState *state, const FixedMatrix &matrix) {
        state->clipMatrix[state->clipMatrixCount] = matrix;
        state->clipMatrixCount = 1;
        return kOk;
    });
}

Result Operator_Bm_Segment_Matrix(ParseContext *context)
{
    return TakeMatrix(context, [](GradientState *state, const FixedMatrix &matrix) {
        if (state->segmentMatrixCount == kMaxSegmentMatrices)
            return kParserBadFormat;
        state->segmentMatrix[state->segmentMatrixCount++] = matrix;
        return kOk;
    });
}

Result Operator_Bh_Highlight(ParseContext *context)
{
    PostScriptObjectList *stack = context->operandStack;
    Fixed values[kHighlightValues];
    if (GetPostScriptObjectListLength(stack) != kHighlightValues ||
        !PopMultipleFixeds(stack, values, kHighlightValues))
        return kParserBadFormat;
    // The numbers change places, on purpose.
    Fixed *highlight = context->gradientSetup->highlight;
    highlight[2] = values[0];
    highlight[3] = values[1];
    highlight[1] = values[2];
    highlight[0] = values[3];
    return kOk;
}

Result Operator_BB_Instance_End(ParseContext *context)
{
    const Result result = EndInstance(context);
    // Balances the second save of "Bb", whatever became of the instance.
    if (IsInTextPath(context))
        CallGRestore(context);
    return result;
}

} // namespace vx
