#include "plugin/text/TextOperators.h"

#include "plugin/body/ParseContext.h"
#include "plugin/text/ShowText.h"

#include <cstring>
#include <iterator>

namespace vx
{

namespace
{

constexpr Fixed kHundred = IntegerToFixed(100);
constexpr Fixed kThousand = IntegerToFixed(1000);
constexpr uint8_t kHyphenText[] = {'-'};
constexpr BigString kHyphen = {kHyphenText, sizeof kHyphenText};

struct RenderModeRow {
    uint32_t mode;
    uint8_t visible;
};

// Indexed by the number that "Tr" writes.
constexpr RenderModeRow kRenderModes[] = {
    {kRenderFill, 1},
    {kRenderStroke, 1},
    {kRenderFill | kRenderStroke, 1},
    {0, 0},
    {kRenderFill | kRenderClip, 1},
    {kRenderStroke | kRenderClip, 1},
    {kRenderFill | kRenderStroke | kRenderClip, 1},
    {kRenderClip, 0},
};

Result SetFixed(ParseContext *context, Fixed *value)
{
    return PopFixed(context->operandStack, value) ? kOk : kParserBadFormat;
}

// True for a flag of 1 and false for every other.
bool PopFlag(ParseContext *context, bool *flag)
{
    int32_t value;
    if (!PopInteger(context->operandStack, &value))
        return false;
    *flag = value == 1;
    return true;
}

Result SetFlag(ParseContext *context, uint8_t *field)
{
    bool flag;
    if (!PopFlag(context, &flag))
        return kParserBadFormat;
    *field = flag ? 1 : 0;
    return kOk;
}

// Moves the start of the line by (dx, dy) along the line matrix; text goes on there.
void MoveLineStart(TextObject *text, Fixed dx, Fixed dy)
{
    FixedMatrix moved = text->lineMatrix;
    moved.tx = text->pathMatrix.tx;
    moved.ty = text->pathMatrix.ty;
    TranslateZRKMatrix(&moved, dx, dy);
    text->pathMatrix.tx = text->textMatrix.tx = moved.tx;
    text->pathMatrix.ty = text->textMatrix.ty = moved.ty;
    text->newLinePending = 1;
}

// Pops the size, and of four operands the ascent and the descent as well.
bool PopFontSize(ParseContext *context)
{
    TextAndFontState *state = &context->text;
    PostScriptObjectList *stack = context->operandStack;
    const bool full = GetPostScriptObjectListLength(stack) == 4;
    state->ascent = 0;
    state->descent = 0;
    if (full && !(PopFixed(stack, &state->descent) && PopFixed(stack, &state->ascent)))
        return false;
    if (!PopFixed(stack, &state->fontSize) || state->fontSize <= 0)
        return false;
    if (full && !IsMacDocument(context->encodingSetup))
        state->descent = SubtractFixed(state->ascent, state->fontSize);
    if (state->ascent == 0) {
        state->descent = -state->fontSize / 8;
        state->ascent = state->fontSize + state->descent;
    }
    return true;
}

// A document writes a font's name with a mark in front, "_" where the font is re-encoded.
void SetFontName(ParseContext *context, BigString name)
{
    char *fontName = context->text.fontName;
    TrimFirstCharacter(&name);
    if (name.length > kFontNameLimit)
        name.length = kFontNameLimit;
    memcpy(fontName, name.text, static_cast<size_t>(name.length));
    fontName[name.length] = 0;
    int16_t script;
    FindFontVectorData(fontName, context->encodingSetup, &script, fontName);
}

} // namespace

Result Operator_Tf(ParseContext *context, TextObject *text)
{
    const int32_t count = GetPostScriptObjectListLength(context->operandStack);
    BigString name;
    if ((count != 2 && count != 4) || text->openState != kTextOpen || !PopFontSize(context) ||
        !PopLiteral(context->operandStack, &name))
        return kParserBadFormat;
    SetFontName(context, name);
    for (int32_t &flag : text->fontSet)
        flag = kFontSet;
    return kOk;
}

Result Operator_Tx(ParseContext *context, TextObject *text)
{
    PostScriptObjectList *stack = context->operandStack;
    const int32_t count = GetPostScriptObjectListLength(stack);
    Fixed unused;
    BigString string;
    if ((count != 1 && count != 2) || (count == 2 && !PopFixed(stack, &unused)) || !PopString(stack, &string))
        return kParserBadFormat;
    return CallZRKShowCorrectly(context, text, &string);
}

Result Operator_T_hyphen(ParseContext *context, TextObject *text)
{
    return CallZRKShowCorrectly(context, text, &kHyphen);
}

Result Operator_Tc(ParseContext *context, TextObject *text)
{
    return SetFixed(context, &text->characterSpacing);
}

Result Operator_Tw(ParseContext *context, TextObject *text)
{
    return SetFixed(context, &text->wordSpacing);
}

Result Operator_Ts(ParseContext *context, TextObject *text)
{
    if (!PopFixed(context->operandStack, &text->rise))
        return kParserBadFormat;
    text->negatedRise = NegateFixed(text->rise);
    return kOk;
}

Result Operator_Tk(ParseContext *context, TextObject *text)
{
    Fixed kern;
    int32_t automatic;
    if (!PopFixed(context->operandStack, &kern) || !PopInteger(context->operandStack, &automatic))
        return kParserBadFormat;
    if (automatic == 0) {
        text->kerningPending = 1;
        text->kerning = FixedDiv(NegateFixed(kern), kThousand);
    }
    return kOk;
}

Result Operator_Tt(ParseContext *context, TextObject *text)
{
    Fixed tracking;
    if (!PopFixed(context->operandStack, &tracking))
        return kParserBadFormat;
    text->tracking = tracking / 1000;
    return kOk;
}

Result Operator_Tz(ParseContext *context, TextObject *text)
{
    PostScriptObjectList *stack = context->operandStack;
    const int32_t count = GetPostScriptObjectListLength(stack);
    Fixed horizontal;
    Fixed vertical = kHundred;
    if ((count != 1 && count != 2) || (count == 2 && !PopFixed(stack, &vertical)) ||
        !PopFixed(stack, &horizontal))
        return kParserBadFormat;
    text->horizontalScale = FixedDiv(horizontal, kHundred);
    text->verticalScale = FixedDiv(vertical, kHundred);
    text->writingScale = text->vertical != 0 ? text->verticalScale : text->horizontalScale;
    text->scaleGiven = 1;
    text->scaleState = kScaleUsed;
    return kOk;
}

Result Operator_Tl(ParseContext *context, TextObject *text)
{
    PostScriptObjectList *stack = context->operandStack;
    // The number written first is the distance of the lines.
    return PopFixed(stack, &text->leading.x) && PopFixed(stack, &text->leading.y) ? kOk : kParserBadFormat;
}

Result Operator_Ta_define(ParseContext *context, TextObject *text)
{
    return PopInteger(context->operandStack, &text->alignment) ? kOk : kParserBadFormat;
}

Result Operator_TA(ParseContext *context, TextObject *text)
{
    return SetFixed(context, &text->alignmentLimit);
}

Result Operator_Tr(ParseContext *context, TextObject *text)
{
    text->renderMode = 0;
    int32_t mode;
    if (!PopInteger(context->operandStack, &mode))
        return kParserBadFormat;
    // An unknown mode paints nothing, but text counts as visible or not as it did before.
    if (mode < 0 || mode >= static_cast<int32_t>(std::size(kRenderModes)))
        return kOk;
    text->renderMode = kRenderModes[mode].mode;
    text->visible = kRenderModes[mode].visible;
    text->renderModeState = kRenderModeGiven;
    return kOk;
}

Result Operator_Tm(ParseContext *context, TextObject *text)
{
    context->text.pathMark = 0;
    if (!PopAndBuildFixedMatrix(context->operandStack, &text->givenMatrix))
        return kParserBadFormat;
    // The line start stays where it was: "Td" and "T*" do not count from here.
    text->textMatrix = FlipMatrix(text->givenMatrix);
    text->newLinePending = 1;
    text->kerning = 0;
    return kOk;
}

Result Operator_Td(ParseContext *context, TextObject *text)
{
    if (!PopFixedPoints(context->operandStack, &text->lineOffset, 1))
        return kParserBadFormat;
    MoveLineStart(text, text->lineOffset.x, text->lineOffset.y);
    text->kerning = 0;
    return kOk;
}

Result Operator_Tasteric(ParseContext * /*context*/, TextObject *text)
{
    const Fixed down = NegateFixed(text->leading.y);
    if (text->vertical != 0)
        MoveLineStart(text, down, NegateFixed(text->leading.x));
    else
        MoveLineStart(text, text->leading.x, down);
    return kOk;
}

Result Operator_TR_define(ParseContext *context, TextObject *text)
{
    return PopAndBuildFixedMatrix(context->operandStack, &text->resetMatrix) ? kOk : kParserBadFormat;
}

Result Operator_Tv(ParseContext *context, TextObject *text)
{
    return SetFlag(context, &text->vertical);
}

Result Operator_TV(ParseContext *context, TextObject *text)
{
    return SetFlag(context, &text->sidewaysRoman);
}

Result Operator_Ty(ParseContext *context, TextObject *text)
{
    bool swap;
    if (!PopFlag(context, &swap))
        return kParserBadFormat;
    text->swapScales = swap ? 1 : 0;
    text->vertical = swap ? 0 : 1;
    return kOk;
}

Result Operator_TM(ParseContext * /*context*/, TextObject *text)
{
    text->usesMatrix = 1;
    return kOk;
}

Result Operator_Te(ParseContext * /*context*/, TextObject *text)
{
    text->usesEncoding = 1;
    return kOk;
}

} // namespace vx
