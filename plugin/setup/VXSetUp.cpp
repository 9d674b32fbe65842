#include "plugin/setup/VXSetUp.h"

#include <new>

namespace vx
{

namespace
{

template <typename Block>
Block *Allocate(const MemoryProcs *memory)
{
    void *block = memory->allocate(static_cast<int32_t>(sizeof(Block)), memory->refcon);
    return block != nullptr ? new (block) Block() : nullptr; // zero-filled
}

void Release(const MemoryProcs *memory, void *block)
{
    if (block != nullptr)
        memory->release(block, memory->refcon);
}

void ReleaseStops(const MemoryProcs *memory, GradientObject *gradient)
{
    while (BlendStopObject *stop = gradient->firstStop) {
        gradient->firstStop = stop->next;
        memory->release(stop, memory->refcon);
    }
}

} // namespace

bool InitParseSetUp(HostCallRecord *record, FileVersion version)
{
    const MemoryProcs *memory = record->memory;
    auto *gradients = Allocate<GradientState>(memory);
    auto *setup = Allocate<SetUpRecord>(memory);
    auto *encoding = Allocate<FontEncodingObject>(memory);
    const bool any = gradients != nullptr || setup != nullptr || encoding != nullptr;
    record->setup = setup;
    if (setup == nullptr) {
        // Nowhere to record them, so nobody would release them.
        Release(memory, gradients);
        Release(memory, encoding);
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
    Release(record->memory, setup->encoding);
    Release(record->memory, setup);
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
        Release(record->memory, gradient);
    }
    Release(record->memory, state);
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
        Release(record->memory, font);
    }
    encoding->fontCount = 0;
}

} // namespace vx
