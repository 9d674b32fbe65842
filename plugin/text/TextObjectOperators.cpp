#include "plugin/text/TextObjectOperators.h"

#include "plugin/body/HostTable.h"
#include "plugin/text/TextRecords.h"

namespace vx
{

Result Operator_To_Begin(ParseContext *context, TextObject *text)
{
    // The reset comes first, even when the operands are wrong.
    const Result result = InitializeTextObj(context, text);
    int32_t type;
    if (GetPostScriptObjectListLength(context->operandStack) != 1 ||
        !PopInteger(context->operandStack, &type))
        return kParserBadFormat;
    if (type == kPointText || type == kPathText || type == kAreaText)
        text->type = type;
    return result;
}

Result Operator_TO_End(ParseContext *context, TextObject *text)
{
    if (text->recordsPending != 0 && text->firstClip != nullptr)
        CallShow(context, text->firstClip, kZRKShowClip);
    ReleaseClipRecords(context, text);
    const int32_t type = text->type;
    if (type == kPointText || type == kPathText || type == kAreaText)
        text->type = kNoTextObject;
    // The colour that this restore brings back is not looked after, on purpose: the loaded colour is left as it was.
    if (type == kPathText)
        CallGRestore(context);
    CallNewPath(context);
    context->text.pathMark = 0;
    text->scaleState = kScaleAfterObject;
    text->fontSet[2] = kFontNotSet;
    text->pathState = kNoTextPath;
    text->legacySentinel = kLegacySentinel;
    // The object stays open and its font set: text may follow it, and is painted.
    return kOk;
}

Result Operator_Tp_Begin(ParseContext *context, TextObject *text)
{
    PostScriptObjectList *stack = context->operandStack;
    if (!PopFixed(stack, &text->pathStart) || !PopAndBuildFixedMatrix(stack, &text->pathMatrix))
        return kParserBadFormat;
    if (text->pathState == kTextPathBegun && text->type == kPathText) {
        // The path before it ended with a save.
        CallGRestore(context);
        CallNewPath(context);
    }
    text->lineMatrix = text->pathMatrix;
    text->textMatrix = FlipMatrix(text->pathMatrix);
    text->openState = kTextOpen;
    text->pathState = kTextPathBegun;
    return kOk;
}

Result Operator_TP_End(ParseContext *context, TextObject *text)
{
    switch (text->type) {
    case kPathText:
        CallGSave(context);
        return kOk;
    case kPointText:
    case kAreaText:
        return kOk;
    default:
        return kParserBadFormat;
    }
}

} // namespace vx
