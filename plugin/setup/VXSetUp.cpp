#include "plugin/setup/VXSetUp.h"

#include "plugin/Memory.h"

namespace vx
{

namespace
{

void ReleaseStops(const MemoryProcs *memory, GradientObject *gradient)
{
    while (BlendStopObject *stop = gradient->firstStop) {
        gradient->firstStop = stop->next;
        ReleaseBlock(memory, stop);
    }
}

} // namespace

bool InitParseSetUp(HostCallRecord *record, FileVersion version)
{
    const MemoryProcs *memory = record->memory;
    auto *gradients = AllocateBlock<GradientState>(memory);
    auto *setup = AllocateBlock<SetUpRecord>(memory);
    auto *encoding = AllocateBlock<FontEncodingObject>(memory);
    const bool any = gradients != nullptr || setup != nullptr || encoding != nullptr;
    record->setup = setup;
    if (setup == nullptr) {
        // There is no record to keep them in, so nobody would release them.
        ReleaseBlock(memory, gradients);
        ReleaseBlock(memory, encoding);
        return any;
    }
    *setup = {gradients, encoding};
    if (encoding != nullptr)
        InitFontEncodingObject(encoding, version);
    if (gradients != nullptr)
        InitializeGradientState(gradients);
    return true;
}

Result SkipThroughComment(LineStream *stream, const char *comment, bool skipOthers)
{
    for (;;) {
        if (!SkipToNonWhiteSpace(stream))
            return kParserBadFormat;
        BigString *line = &stream->text;
        if (*line->text == '%') {
            if (IsWholeLine("%%EOF", line))
                return kParserBadFormat;
            const bool found = IsWholeLine(comment, line);
            TrimToEnd(line);
            if (found)
                return kOk;
        } else if (skipOthers) {
            TrimToEnd(line);
        } else {
            return kParserBadFormat;
        }
    }
}

Result ParseSetUp(LineStream *stream, HostCallRecord *record, FileVersion version)
{
    if (!InitParseSetUp(record, version))
        return kOutOfMemory;
    // From version 3 on the section's lines go through the body driver.
    const Result result = SkipThroughComment(stream, version > 2 ? "%%BeginSetup" : "%%EndSetup", true);
    if (result != kOk)
        TerminateSetUp(record);
    return result;
}

void TerminateSetUp(HostCallRecord *record)
{
    SetUpRecord *setup = GetSetUpRecord(record);
    if (setup == nullptr)
        return;
    DeallocateGradientObj(record);
    DeallocateFontDataObj(record);
    ReleaseBlock(record->memory, setup->encoding);
    ReleaseBlock(record->memory, setup);
    record->setup = nullptr;
}

void DeallocateGradientObj(HostCallRecord *record)
{
    SetUpRecord *setup = GetSetUpRecord(record);
    if (setup == nullptr || setup->gradients == nullptr)
        return;
    GradientState *state = setup->gradients;
    while (GradientObject *gradient = state->firstGradient) {
        state->firstGradient = gradient->next;
        ReleaseStops(record->memory, gradient);
        ReleaseBlock(record->memory, gradient);
    }
    ReleaseBlock(record->memory, state);
    setup->gradients = nullptr;
}

void DeallocateFontDataObj(HostCallRecord *record)
{
    const SetUpRecord *setup = GetSetUpRecord(record);
    if (setup == nullptr || setup->encoding == nullptr)
        return;
    FontEncodingObject *encoding = setup->encoding;
    while (ReencodedFont *font = encoding->firstFont) {
        encoding->firstFont = font->next;
        ReleaseBlock(record->memory, font);
    }
    encoding->fontCount = 0;
}

} // namespace vx
