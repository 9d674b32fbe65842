#include "plugin/body/ParseLine.h"

#include "plugin/body/Operators.h"

namespace vx
{

namespace
{

// Takes an object from the pool. Null when none is left, or when the string buffer has dropped bytes.
PostScriptObject *TakeObject(ParseContext *context)
{
    PostScriptObject *object = AllocatePostScriptObject(context->objectBuffer);
    return object != nullptr && !OverflowedStringBuffer(context->stringBuffer) ? object : nullptr;
}

Result PushOperand(ParseContext *context, TokenKind kind, const TokenValue *value)
{
    PostScriptObject *object = TakeObject(context);
    if (object == nullptr)
        return kParserBadFormat;
    object->type = kind;
    object->value = *value;
    PushPostScriptObject(object, context->operandStack);
    return kOk;
}

bool IsInEncodingBlock(const FontEncodingObject *encoding)
{
    return encoding != nullptr && encoding->encodingState == kInEncodingBlock;
}

Result BeginArray(ParseContext *context)
{
    // A gradient definition and the outermost array of an encoding block leave their elements loose on the stack.
    if (IsInGradientDefinition(context->gradientSetup))
        return kOk;
    if (IsInEncodingBlock(context->encodingSetup) && context->encodingSetup->bracketCounter++ == 1)
        return kOk;
    const TokenValue mark = {};
    return PushOperand(context, kTokenArrayStart, &mark);
}

// What lies above the mark becomes the array's contents, the first element on top.
Result EndArray(ParseContext *context)
{
    if (IsInEncodingBlock(context->encodingSetup))
        context->encodingSetup->bracketCounter = 0;
    PostScriptObjectList elements;
    InitializePostScriptObjectList(&elements);
    for (;;) {
        PostScriptObject *object = PopPostScriptObject(context->operandStack);
        if (object == nullptr)
            return kParserBadFormat;
        if (object->type == kTokenArrayStart) {
            object->type = kObjectArray;
            object->array = elements;
            PushPostScriptObject(object, context->operandStack);
            return kOk;
        }
        PushPostScriptObject(object, &elements);
    }
}

// Joins the pieces of a hex string in the order in which they were written.
Result EndHexString(ParseContext *context)
{
    PostScriptObjectList pieces;
    InitializePostScriptObjectList(&pieces);
    PostScriptObject *object = PopPostScriptObject(context->operandStack);
    while (object != nullptr && object->type == kTokenHexData) {
        PushPostScriptObject(object, &pieces);
        object = PopPostScriptObject(context->operandStack);
    }
    if (object == nullptr || object->type != kTokenHexStart)
        return kParserBadFormat;
    StringBuffer *buffer = context->stringBuffer;
    BigString joined;
    const PostScriptObject *piece = PopPostScriptObject(&pieces);
    if (piece == nullptr)
        BufferNewBigString(buffer, &joined);
    else
        joined = piece->string;
    while ((piece = PopPostScriptObject(&pieces)) != nullptr)
        BufferAppendStringAndString(buffer, &joined, &piece->string, &joined);
    if (OverflowedStringBuffer(buffer))
        return kParserBadFormat;
    object->type = kTokenString;
    object->string = joined;
    PushPostScriptObject(object, context->operandStack);
    return kOk;
}

// Operands never survive an operator, whatever it used.
void ForgetOperands(ParseContext *context)
{
    InitializePostScriptObjectList(context->operandStack);
    ClearPostScriptObjectsBuffer(context->objectBuffer);
    ClearStringBuffer(context->stringBuffer);
}

Result ExecuteName(ParseContext *context, const TokenValue *name)
{
    if (OverflowedStringBuffer(context->stringBuffer))
        return kParserBadFormat;
    const Result result = RunOperator(name->text, name->length, context);
    if (result != kOk)
        return result;
    ForgetOperands(context);
    return context->aborted != 0 ? kStoppedByUser : kOk;
}

Result ActOnToken(ParseContext *context, TokenKind kind, const TokenValue *value)
{
    switch (kind) {
    case kTokenInteger:
    case kTokenFixed:
    case kTokenString:
    case kTokenLiteralName:
    case kTokenImmediateName:
    case kTokenHexStart:
    case kTokenHexData:
        return PushOperand(context, kind, value);
    case kTokenExecutableName:
        return ExecuteName(context, value);
    case kTokenArrayStart:
        return BeginArray(context);
    case kTokenArrayEnd:
        return EndArray(context);
    case kTokenHexEnd:
        return EndHexString(context);
    // Braces do not put off what stands between them.
    case kTokenComment:
    case kTokenProcStart:
    case kTokenProcEnd:
        return kOk;
    default:
        return kParserBadFormat;
    }
}

} // namespace

Result ParseLine(BigString *line, ParseContext *context)
{
    if (context->aborted != 0)
        return kStoppedByUser;
    for (;;) {
        TokenValue value;
        const TokenKind kind =
            LexOneToken(line, &context->inHexString, &value, context->stringBuffer, context);
        if (kind == kTokenEndOfLine)
            return context->aborted != 0 ? kStoppedByUser : kOk;
        const Result result = ActOnToken(context, kind, &value);
        if (result != kOk)
            return result;
    }
}

} // namespace vx
