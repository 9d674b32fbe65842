#include "plugin/text/LegacyText.h"

#include "plugin/body/ParseContext.h"
#include "plugin/text/TextOperators.h"

#include <initializer_list>

namespace vx
{

namespace
{

// Alignments from here on are the same three down a column.
constexpr int32_t kFirstColumnAlignment = 3;

void SetPainting(TextObject *text, uint32_t renderMode)
{
    text->renderMode = renderMode;
    text->visible = 1;
    text->renderModeState = kRenderModeGiven;
}

Result OpenBlock(ParseContext *context, TextObject *text)
{
    PostScriptObject *top = context->operandStack->head;
    if (top != nullptr && top->type == kObjectArray)
        (void)BuildMatrix(&top->array, &text->textMatrix); // a bad matrix does not stop the block
    text->openState = kTextOpen;
    text->legacyLineCount = 0;
    text->pathMatrix = text->textMatrix;
    text->textMatrix =
        FlipMatrix(text->textMatrix); // without a matrix of its own too: the old one then turns over again
    return kOk;
}

// The line spacing times the count of lines; the product wraps as sums do.
Fixed DistanceOfLine(const TextObject *text)
{
    return static_cast<Fixed>(static_cast<uint32_t>(text->lineSpacing) *
                              static_cast<uint32_t>(text->legacyLineCount));
}

} // namespace

Result Parse_88_and_1_1_Text(const char *operatorText, ParseContext *context, TextObject *text)
{
    switch (*operatorText) {
    case 'T':
        return Operator88_T_EndObj(context, text);
    case 'a':
        return Operator88_a(context, text);
    case 'e':
        return Operator88_e(context, text);
    case 'o':
        return Operator88_o(context, text);
    case 'r':
        return Operator88_r(context, text);
    case 't':
        return Operator88_t_TextOut(context, text);
    case 'z':
        return Operator88_z(context, text);
    default:
        return kOk;
    }
}

Result Operator88_a(ParseContext *context, TextObject *text)
{
    SetPainting(text, kRenderFill | kRenderStroke);
    return OpenBlock(context, text);
}

Result Operator88_e(ParseContext *context, TextObject *text)
{
    SetPainting(text, kRenderFill);
    return OpenBlock(context, text);
}

Result Operator88_o(ParseContext *context, TextObject *text)
{
    text->visible = 0;
    text->renderModeState = kRenderModeGiven;
    return OpenBlock(context, text);
}

Result Operator88_r(ParseContext *context, TextObject *text)
{
    SetPainting(text, kRenderStroke);
    return OpenBlock(context, text);
}

Result Operator88_z(ParseContext *context, TextObject *text)
{
    PostScriptObjectList *stack = context->operandStack;
    if (GetPostScriptObjectListLength(stack) != 5 || !PopInteger(stack, &text->alignment))
        return kParserBadFormat;
    text->vertical = text->alignment >= kFirstColumnAlignment ? 1 : 0;
    if (text->vertical != 0) {
        text->sidewaysRoman = 0;
        text->alignment -= kFirstColumnAlignment;
    }
    Fixed unused;
    if (!PopFixed(stack, &unused) || !PopFixed(stack, &text->lineSpacing))
        return kParserBadFormat;
    text->openState = kTextOpen;
    return Operator_Tf(context, text);
}

Result Operator88_t_TextOut(ParseContext *context, TextObject *text)
{
    // Only the string on top counts, whatever lies below it.
    context->operandStack->count = 1;
    text->newLinePending = 1;
    text->kerningPending = 0;
    if (text->alignment == kCentred)
        text->renderMode |= kAlignCentre;
    else if (text->alignment == kAlignedRight)
        text->renderMode |= kAlignRight;
    if (text->legacyLineCount != 0) {
        const Fixed down = DistanceOfLine(text);
        text->textMatrix.tx = text->pathMatrix.tx;
        text->textMatrix.ty = text->pathMatrix.ty;
        if (text->vertical != 0)
            TranslateZRKMatrix(&text->textMatrix, NegateFixed(down), 0);
        else
            TranslateZRKMatrix(&text->textMatrix, 0, down);
    }
    (void)Operator_Tx(context, text); // a line that cannot be shown still takes its place
    text->legacyLineCount = AddFixed(text->legacyLineCount, 1);
    return kOk;
}

Result Operator88_T_EndObj(ParseContext * /*context*/, TextObject *text)
{
    text->legacySentinel = kLegacySentinel;
    text->legacyLineCount = 0;
    return kOk;
}

Result BuildMatrix(PostScriptObjectList *list, FixedMatrix *matrix)
{
    if (GetPostScriptObjectListLength(list) != 6)
        return kParserBadFormat;
    for (Fixed *value : {&matrix->a, &matrix->b, &matrix->c, &matrix->d, &matrix->tx, &matrix->ty})
        if (!PopFixed(list, value))
            return kParserBadFormat;
    return kOk;
}

} // namespace vx
