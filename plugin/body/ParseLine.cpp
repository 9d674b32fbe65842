#include "plugin/body/ParseLine.h"

#include "plugin/body/Operators.h"
#include "plugin/input/ShortNumber.h"

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
    if (kind == kTokenExecutableName) // most tokens that come here
        return ExecuteName(context, value);
    switch (kind) {
    case kTokenInteger:
    case kTokenFixed:
    case kTokenString:
    case kTokenLiteralName:
    case kTokenImmediateName:
    case kTokenHexStart:
    case kTokenHexData:
        return PushOperand(context, kind, value);
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

bool IsInBuffer(const LineStream *stream, const uint8_t *text)
{
    return reinterpret_cast<uintptr_t>(text) - reinterpret_cast<uintptr_t>(stream->buffer) <
           sizeof stream->buffer;
}

// Pushes the short numbers that stand next on the line, each before white space, as the tokenizer would have them pushed.
// Everything else is left to it, and so are lines that no stream has indexed.
void TakeShortNumbers(BigString *line, ParseContext *context)
{
    constexpr int32_t kMostOnLine = kLineBufferSize / 2; // a digit and white space each
    const LineStream *stream = context->lineStream;
    PostScriptObjectBuffer *pool = context->objectBuffer;
    if (!MayBeginNumber(*line->text) || stream == nullptr || !IsInBuffer(stream, line->text) ||
        context->inHexString != kOutsideHexString || OverflowedStringBuffer(context->stringBuffer) ||
        ObjectsLeft(pool) < kMostOnLine)
        return;
    PostScriptObjectList *stack = context->operandStack;
    PostScriptObject *object = pool->next;
    PostScriptObject *head = stack->head;
    const uint8_t *text = line->text;
    const uint8_t *const end = text + line->length;
    uint64_t spaces = 0;
    while (text < end && MayBeginNumber(*text)) {
        if (spaces == 0)
            spaces = MarksFrom(&stream->index.spaces, static_cast<int32_t>(text - stream->buffer));
        const int32_t length = std::countr_zero(spaces);
        const int32_t below = *text == '-';
        const int32_t digits = length - below;
        if (static_cast<uint32_t>(digits - 1) >= kMostShortDigits)
            break;
        const ShortNumber number = ReadShortNumber(text + below, digits, below);
        if (!number.valid)
            break;
        object->link = head;
        object->type = kTokenInteger + number.point;
        object->value.number = static_cast<int32_t>(number.value);
        object->value.length = length;
        head = object++;
        text += length + 1;
        spaces >>= length + 1;
    }
    stack->count += static_cast<int32_t>(object - pool->next);
    stack->head = head;
    pool->next = object;
    *line = {text, static_cast<int32_t>(end - text)};
}

// Takes a name of one character that stands next on the line before white space, as most operators do.
bool TakeShortName(BigString *line, const ParseContext *context, TokenValue *name)
{
    const uint8_t *text = line->text;
    if (line->length < 2 || IsDelimiter(text[0]) || MayBeginNumber(text[0]) || !IsWhiteSpace(text[1]) ||
        context->inHexString != kOutsideHexString)
        return false;
    name->text = text;
    name->length = 1;
    *line = {text + 2, line->length - 2};
    return true;
}

} // namespace

Result ParseLine(BigString *line, ParseContext *context)
{
    if (context->aborted != 0)
        return kStoppedByUser;
    while (!IsStringEmpty(line)) {
        TokenValue value;
        TakeShortNumbers(line, context);
        const TokenKind kind =
            TakeShortName(line, context, &value)
                ? kTokenExecutableName
                : LexOneToken(line, &context->inHexString, &value, context->stringBuffer, context);
        if (kind == kTokenEndOfLine)
            break;
        const Result result = ActOnToken(context, kind, &value);
        if (result != kOk)
            return result;
    }
    return context->aborted != 0 ? kStoppedByUser : kOk;
}

} // namespace vx
