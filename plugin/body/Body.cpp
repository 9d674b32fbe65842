#include "plugin/body/Body.h"

#include "plugin/body/HostTable.h"
#include "plugin/body/Layers.h"
#include "plugin/body/Paint.h"
#include "plugin/body/ParseLine.h"
#include "plugin/body/Problems.h"
#include "plugin/fonts/UnixFont.h"
#include "plugin/setup/VXSetUp.h"

namespace vx
{

namespace
{

// Where the line loop stands in the document's sections.
struct SectionState {
    FileVersion version;
    bool inSetup;
    bool parseOn;
    bool parseOff;
    bool skipping;
};

void SwitchOn(SectionState *state, FontEncodingObject *encoding, EncodingState encodingState)
{
    encoding->encodingState = encodingState;
    state->parseOn = true;
    state->parseOff = false;
}

void FollowSetupComment(SectionState *state, ParseContext *context, const BigString *line)
{
    FontEncodingObject *encoding = context->encodingSetup;
    BigString rest;
    if (state->version > 2) {
        if (PartialTestPrefix("%VX3_BeginEncoding:", line)) {
            SwitchOn(state, encoding, kInEncodingBlock);
            ++encoding->bracketCounter;
        } else if (PartialTestPrefix("%VX3_EndEncoding", line)) {
            encoding->encodingState = kOutsideEncodingBlock;
            encoding->bracketCounter = 0;
            state->parseOn = false;
            state->parseOff = true;
        }
    }
    if (TestPrefix("%VX5_BeginGradient:", line, &rest)) {
        if (encoding != nullptr)
            SwitchOn(state, encoding, kOutsideEncodingBlock);
    } else if (TestPrefix("%%EndSetup", line, &rest)) {
        // Without the encoding object the setup comments go on being tested, on purpose.
        if (encoding != nullptr) {
            SwitchOn(state, encoding, kOutsideEncodingBlock);
            state->inSetup = false;
        }
        context->setupEnded = 1;
    }
}

// Comments that open or close a section whose lines are not the interpreter's. True if the line is one.
bool FollowSkipComment(SectionState *state, ParseContext *context, const BigString *line)
{
    struct Row {
        const char *comment;
        bool skip;
    };
    // The end of a crop block skips too, on purpose: its lines stay skipped up to one of the other ends.
    static constexpr Row kRows[] = {
        {"%%BeginBinary:", true}, {"%%EndBinary", false},   {"%VX3_BeginCrops", true},
        {"%VX3_EndCrops", true},  {"%VX5_EndPlace", false}, {"%VX5_BeginPlace", true},
    };
    for (const Row &row : kRows) {
        BigString rest;
        if (!TestPrefix(row.comment, line, &rest))
            continue;
        if (&row == kRows)
            ReportProblemOnce(context, kProblemBinary, &context->warnedBinary);
        state->skipping = row.skip;
        return true;
    }
    return false;
}

// Comments matter at the start of a line, or after blanks for those that are tested loosely.
bool MayBeSectionComment(const BigString *line)
{
    int32_t i = 0;
    while (i < line->length && (line->text[i] == ' ' || line->text[i] == '\t'))
        ++i;
    return i < line->length && line->text[i] == '%';
}

enum class LineFate { Interpret, Skip, EndOfDocument };

LineFate FollowComment(SectionState *state, ParseContext *context, const BigString *line)
{
    if (IsWholeLine("%%EOF", line))
        return LineFate::EndOfDocument;
    if (state->inSetup)
        FollowSetupComment(state, context, line);
    if (FollowSkipComment(state, context, line) || state->skipping)
        return LineFate::Skip;
    if (IsWholeLine("%%PageTrailer", line))
        return LineFate::EndOfDocument;
    return LineFate::Interpret;
}

} // namespace

void InitializeGlobals(ParseContext *context)
{
    context->pendingPaint = NullOperator;
    context->fillPaint = NullOperator;
    context->fillColour = NullOperator;
    context->strokePaint = NullOperator;
    context->strokeColour = NullOperator;
    InitializeTextState(&context->text);
}

Result ParseBody(LineStream *stream, HostCallRecord *record, FileVersion /*version*/)
{
    ParseContext context = {};
    InitializeGlobals(&context);
    context.lineStream = stream;
    context.inHexString = kOutsideHexString;
    context.memoryProcs = record->memory;
    context.refCon = record->drawing;
    context.procs = record->procs;
    if (const SetUpRecord *setup = GetSetUpRecord(record)) {
        context.gradientSetup = setup->gradients;
        context.encodingSetup = setup->encoding;
    }
    context.problemProc = record->report;
    const uint8_t warned = record->warningsOff != 0 ? 1 : 0;
    context.warnedPattern = warned;
    context.warnedPostScript = warned;
    context.warnedOperator = warned;
    context.warnedBinary = warned;

    if (context.procs == nullptr || context.refCon == nullptr)
        return kParserBadSelector;
    if (!CheckZRKProcs(context.procs))
        return kProcsUnusable;
    StringBuffer buffer;
    if (!InitializeStringBuffer(&buffer, kStringBufferSize, context.memoryProcs))
        return kOutOfMemory;
    context.stringBuffer = &buffer;
    Result result = kOk; // without any font nothing is drawn
    if (InitializeFontTable(record, &context.text.fonts)) {
        InitializeDefaultFont(&context.text.fonts);
        result = ParseBodyWithStringBuffer(&context);
    }
    TerminateTextState(&context);
    ReleaseFontTable(record, &context.text.fonts);
    SetProcsToPrintable(&context);
    TerminateStringBuffer(&buffer);
    return result;
}

Result ParseBodyWithStringBuffer(ParseContext *context)
{
    PostScriptObjectBuffer pool;
    if (!InitializePostScriptObjectBuffer(&pool, kObjectPoolSize, context->memoryProcs))
        return kOutOfMemory;
    context->objectBuffer = &pool;
    const Result result = ParseBodyWithBuffers(context);
    context->objectBuffer = nullptr;
    TerminatePostScriptObjectBuffer(&pool);
    return result;
}

Result ParseBodyWithBuffers(ParseContext *context)
{
    PostScriptObjectList stack;
    InitializePostScriptObjectList(&stack);
    StackAndBuffer record = {&stack, context->stringBuffer};
    SetLineStreamFlushingProc(context->lineStream, FlushStackStringsToBuffer, &record);
    context->operandStack = &stack;
    const Result result = DoParsing(context);
    context->operandStack = nullptr;
    SetLineStreamFlushingProc(context->lineStream, nullptr, nullptr);
    return result;
}

Result DoParsing(ParseContext *context)
{
    const FontEncodingObject *encoding = context->encodingSetup;
    SectionState state = {};
    state.version = encoding != nullptr ? encoding->fileVersion : FileVersion{0};
    state.inSetup = true;
    state.parseOff = true;
    BigString *line = &context->lineStream->text;
    for (;;) {
        LineFate fate = state.skipping ? LineFate::Skip : LineFate::Interpret;
        if (MayBeSectionComment(line))
            fate = FollowComment(&state, context, line);
        if (fate == LineFate::EndOfDocument)
            return kOk;
        if (fate == LineFate::Interpret && (state.version <= 2 || (state.parseOn && !state.parseOff))) {
            const Result result = ParseLine(line, context);
            if (result != kOk)
                return result;
        }
        if (!RefillLineStreamText(context->lineStream))
            return kParserBadFormat;
    }
}

void FlushStackStringsToBuffer(void *stackAndBuffer)
{
    const auto *record = static_cast<const StackAndBuffer *>(stackAndBuffer);
    FlushPostScriptObjectListToStringBuffer(record->operandStack, record->stringBuffer);
}

void FlushPostScriptObjectListToStringBuffer(const PostScriptObjectList *list, StringBuffer *buffer)
{
    for (PostScriptObject *object = list->head; object != nullptr; object = object->link) {
        switch (object->type) {
        case kObjectArray:
            // Arrays nest no deeper than the pool has objects.
            FlushPostScriptObjectListToStringBuffer(&object->array, buffer);
            break;
        case kTokenString:
        case kTokenLiteralName:
        case kTokenImmediateName:
        case kTokenExecutableName:
        case kTokenHexData:
            if (!BufferContainsString(buffer, &object->string))
                BufferAppendString(buffer, &object->string, &object->string);
            break;
        default:
            break;
        }
    }
}

} // namespace vx
