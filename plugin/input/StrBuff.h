// String buffer: a bump-allocated arena for text that must outlive its line.
//
// Used like a stack: the most recent string can grow in place or be given back. Running out of room never fails
// an operation: it truncates and raises the overflowed flag, which callers test when they care.
#pragma once

#include "plugin/input/BigStrs.h"

#include <vx/HostCall.h>

namespace vx
{

struct StringBuffer {
    MemoryProcs memory; // a copy of the host's
    uint8_t *base;
    uint8_t *end; // the first free byte; a mark is a value of this
    int32_t capacity;
    bool overflowed; // cleared only by a reset
};

// False when the host has no memory.
bool InitializeStringBuffer(StringBuffer *buffer, int32_t capacity, const MemoryProcs *memory);
void TerminateStringBuffer(StringBuffer *buffer);

inline bool OverflowedStringBuffer(const StringBuffer *buffer)
{
    return buffer->overflowed;
}
// A place to reset the buffer to. Nothing calls it.
inline uint8_t *MarkStringBuffer(const StringBuffer *buffer)
{
    return buffer->end;
}

// Gives back everything after the mark. A mark at the arena's end leaves the overflowed flag set, even when the
// arena was just full: kept on purpose.
inline void ResetStringBuffer(StringBuffer *buffer, uint8_t *mark)
{
    buffer->overflowed = mark - buffer->base >= buffer->capacity;
    buffer->end = buffer->overflowed ? buffer->base + buffer->capacity : mark;
}
inline void ClearStringBuffer(StringBuffer *buffer)
{
    ResetStringBuffer(buffer, buffer->base);
}

bool BufferContainsString(const StringBuffer *buffer, const BigString *string);
// True when the string is the most recent thing appended.
bool BufferEndsWithString(const StringBuffer *buffer, const BigString *string);

// An empty string at the end, ready to grow.
void BufferNewBigString(const StringBuffer *buffer, BigString *result);
void BufferAppendString(StringBuffer *buffer, const BigString *string, BigString *result);
void BufferAppendCharacter(StringBuffer *buffer, uint8_t byte, BigString *result);
// The string itself if it is the most recent one, else a copy of it at the end.
void BufferForceStringToEnd(StringBuffer *buffer, const BigString *string, BigString *result);
void BufferAppendStringAndCharacter(StringBuffer *buffer, const BigString *string, uint8_t byte,
                                    BigString *result);
void BufferAppendStringAndString(StringBuffer *buffer, const BigString *first, const BigString *second,
                                 BigString *result);
// Gives the most recent string back, and does nothing for any other. Nothing calls it.
void BufferReturnString(StringBuffer *buffer, const BigString *string);

} // namespace vx
