#include "plugin/input/StrBuff.h"

#include <cstring>
#include <functional>

namespace vx
{

namespace
{

int32_t FreeRoom(const StringBuffer *buffer)
{
    return buffer->capacity - static_cast<int32_t>(buffer->end - buffer->base);
}

} // namespace

bool InitializeStringBuffer(StringBuffer *buffer, int32_t capacity, const MemoryProcs *memory)
{
    void *block = memory->allocate(capacity, memory->refcon);
    if (block == nullptr)
        return false;
    buffer->memory = *memory;
    buffer->base = static_cast<uint8_t *>(block);
    buffer->capacity = capacity;
    ClearStringBuffer(buffer);
    return true;
}

void TerminateStringBuffer(StringBuffer *buffer)
{
    buffer->memory.release(buffer->base, buffer->memory.refcon);
    buffer->base = nullptr;
    buffer->end = nullptr;
    buffer->capacity = 0;
}

bool BufferContainsString(const StringBuffer *buffer, const BigString *string)
{
    // std::less_equal orders pointers into different blocks too.
    const std::less_equal<const uint8_t *> notAfter;
    return notAfter(buffer->base, string->text) && notAfter(string->text + string->length, buffer->end);
}

bool BufferEndsWithString(const StringBuffer *buffer, const BigString *string)
{
    return string->text + string->length == buffer->end;
}

void BufferNewBigString(const StringBuffer *buffer, BigString *result)
{
    *result = {buffer->end, 0};
}

void BufferAppendString(StringBuffer *buffer, const BigString *string, BigString *result)
{
    int32_t count = string->length;
    const int32_t room = FreeRoom(buffer);
    if (count > room) {
        count = room;
        buffer->overflowed = true;
    }
    const uint8_t *source = string->text;
    *result = {buffer->end, count};
    if (count > 0) {
        memcpy(buffer->end, source, static_cast<size_t>(count));
        buffer->end += count;
    }
}

void BufferAppendCharacter(StringBuffer *buffer, uint8_t byte, BigString *result)
{
    *result = {buffer->end, 0};
    if (FreeRoom(buffer) <= 0) {
        buffer->overflowed = true;
        return;
    }
    *buffer->end++ = byte;
    result->length = 1;
}

void BufferForceStringToEnd(StringBuffer *buffer, const BigString *string, BigString *result)
{
    if (BufferEndsWithString(buffer, string))
        *result = *string;
    else
        BufferAppendString(buffer, string, result);
}

void BufferAppendStringAndCharacter(StringBuffer *buffer, const BigString *string, uint8_t byte,
                                    BigString *result)
{
    BigString appended;
    BufferForceStringToEnd(buffer, string, result);
    BufferAppendCharacter(buffer, byte, &appended);
    result->length += appended.length;
}

void BufferAppendStringAndString(StringBuffer *buffer, const BigString *first, const BigString *second,
                                 BigString *result)
{
    BigString appended;
    const BigString tail = *second; // result may be second
    BufferForceStringToEnd(buffer, first, result);
    BufferAppendString(buffer, &tail, &appended);
    result->length += appended.length;
}

void BufferReturnString(StringBuffer *buffer, const BigString *string)
{
    if (BufferEndsWithString(buffer, string))
        ResetStringBuffer(buffer, buffer->end - string->length);
}

} // namespace vx
