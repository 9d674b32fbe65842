// Operand stack: the numbers, strings, names and arrays waiting for their operator.
//
// Owns the pool of objects that one parse may hold; lists only link them. Text is not copied here: an operand
// points into the line buffer until the flushing procedure saves it.
#pragma once

#include "plugin/input/BigStrs.h"
#include "plugin/input/Fixed.h"
#include "plugin/input/Lex.h"

#include <vx/HostCall.h>

namespace vx
{

struct PostScriptObject;

struct PostScriptObjectList {
    PostScriptObject *head; // the top of the stack, or an array's first element
    int32_t count;
};

struct PostScriptObject {
    PostScriptObject *link; // the object below
    int32_t type;           // a TokenKind
    union {
        TokenValue value;           // numbers, and text as it came from the tokenizer
        BigString string;           // strings, names, hex data
        PostScriptObjectList array; // kObjectArray
    };
};

struct PostScriptObjectBuffer {
    MemoryProcs memory; // a copy of the host's
    PostScriptObject *base;
    PostScriptObject *next;
    int32_t limit; // the pool's size in bytes
};

inline void InitializePostScriptObjectList(PostScriptObjectList *list)
{
    *list = {nullptr, 0};
}
inline int32_t GetPostScriptObjectListLength(const PostScriptObjectList *list)
{
    return list->count;
}

// A null object is ignored.
inline void PushPostScriptObject(PostScriptObject *object, PostScriptObjectList *list)
{
    if (object == nullptr)
        return;
    object->link = list->head;
    list->head = object;
    ++list->count;
}

// Null from an empty list.
inline PostScriptObject *PopPostScriptObject(PostScriptObjectList *list)
{
    PostScriptObject *object = list->head;
    if (object != nullptr) {
        list->head = object->link;
        --list->count;
    }
    return object;
}

// The n-th from the top, 1 being the top; null where there is none. Nothing calls it.
PostScriptObject *GetNthPostScriptObject(const PostScriptObjectList *list, int32_t n);

// False when the host has no memory.
bool InitializePostScriptObjectBuffer(PostScriptObjectBuffer *pool, int32_t count, const MemoryProcs *memory);
void TerminatePostScriptObjectBuffer(PostScriptObjectBuffer *pool);

// Null when the pool is used up. Objects are given back only together, by a reset.
inline PostScriptObject *AllocatePostScriptObject(PostScriptObjectBuffer *pool)
{
    const int32_t used =
        static_cast<int32_t>(pool->next - pool->base) * static_cast<int32_t>(sizeof(PostScriptObject));
    return used < pool->limit ? pool->next++ : nullptr;
}
inline int32_t ObjectsLeft(const PostScriptObjectBuffer *pool)
{
    return static_cast<int32_t>(static_cast<uint32_t>(pool->limit) / sizeof(PostScriptObject)) -
           static_cast<int32_t>(pool->next - pool->base);
}
// A place to reset the pool to. Nothing but a full reset is called for.
inline PostScriptObject *MarkPostScriptObjectBuffer(const PostScriptObjectBuffer *pool)
{
    return pool->next;
}
inline void ResetPostScriptObjectBuffer(PostScriptObjectBuffer *pool, PostScriptObject *mark)
{
    pool->next = mark;
}
inline void ClearPostScriptObjectsBuffer(PostScriptObjectBuffer *pool)
{
    ResetPostScriptObjectBuffer(pool, pool->base);
}

// Typed pops. The popped object is gone even when it has the wrong type.
bool PopInteger(PostScriptObjectList *stack, int32_t *value);
bool PopFixed(PostScriptObjectList *stack, Fixed *value);
bool PopString(PostScriptObjectList *stack, BigString *string);
bool PopLiteral(PostScriptObjectList *stack, BigString *name);
// An integer counts as a number: it is shifted up, and wraps beyond ±32767.
bool ConvertToFixed(const PostScriptObject *object, Fixed *value);

// n numbers, so that values[0] is the first one written. What was stored before a failure stays.
bool PopMultipleFixeds(PostScriptObjectList *stack, Fixed *values, int16_t n);
bool PopFixedPoints(PostScriptObjectList *stack, FixedPoint *points, int16_t n);
// Six numbers in the order written.
bool PopAndBuildFixedMatrix(PostScriptObjectList *stack, FixedMatrix *matrix);
// An array of six numbers. The first element lands in ty and the last in a: reversed on purpose. Nothing calls it.
bool PopFixedMatrix(PostScriptObjectList *stack, FixedMatrix *matrix);

} // namespace vx
