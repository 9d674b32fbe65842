#include "plugin/input/PostObjs.h"

namespace vx
{

namespace
{

constexpr int16_t kMatrixValues = 6;

PostScriptObject *PopOfType(PostScriptObjectList *stack, int32_t type)
{
    PostScriptObject *object = PopPostScriptObject(stack);
    return object != nullptr && object->type == type ? object : nullptr;
}

bool PopTextOfType(PostScriptObjectList *stack, int32_t type, BigString *string)
{
    const PostScriptObject *object = PopOfType(stack, type);
    if (object == nullptr)
        return false;
    *string = object->string;
    return true;
}

} // namespace

PostScriptObject *GetNthPostScriptObject(const PostScriptObjectList *list, int32_t n)
{
    if (n < 1 || n > list->count)
        return nullptr;
    PostScriptObject *object = list->head;
    while (object != nullptr && --n > 0)
        object = object->link;
    return object;
}

bool InitializePostScriptObjectBuffer(PostScriptObjectBuffer *pool, int32_t count, const MemoryProcs *memory)
{
    const int32_t size = count * static_cast<int32_t>(sizeof(PostScriptObject));
    void *block = memory->allocate(size, memory->refcon);
    if (block == nullptr)
        return false;
    pool->memory = *memory;
    pool->base = static_cast<PostScriptObject *>(block);
    pool->limit = size;
    ClearPostScriptObjectsBuffer(pool);
    return true;
}

void TerminatePostScriptObjectBuffer(PostScriptObjectBuffer *pool)
{
    pool->memory.release(pool->base, pool->memory.refcon);
    pool->base = nullptr;
    pool->next = nullptr;
    pool->limit = 0;
}

bool PopInteger(PostScriptObjectList *stack, int32_t *value)
{
    const PostScriptObject *object = PopOfType(stack, kTokenInteger);
    if (object == nullptr)
        return false;
    *value = object->value.number;
    return true;
}

bool ConvertToFixed(const PostScriptObject *object, Fixed *value)
{
    static_assert(kTokenFixed == kTokenInteger + 1);
    const auto isFixed = static_cast<uint32_t>(object->type - kTokenInteger);
    if (isFixed > 1)
        return false;
    // Documents mix the two, so that a branch would be wrong now and then.
    *value = static_cast<Fixed>(static_cast<uint32_t>(object->value.number) << (16 * (1 - isFixed)));
    return true;
}

bool PopFixed(PostScriptObjectList *stack, Fixed *value)
{
    const PostScriptObject *object = PopPostScriptObject(stack);
    return object != nullptr && ConvertToFixed(object, value);
}

bool PopString(PostScriptObjectList *stack, BigString *string)
{
    return PopTextOfType(stack, kTokenString, string);
}

bool PopLiteral(PostScriptObjectList *stack, BigString *name)
{
    return PopTextOfType(stack, kTokenLiteralName, name);
}

bool PopMultipleFixeds(PostScriptObjectList *stack, Fixed *values, int16_t n)
{
    for (int i = n - 1; i >= 0; --i)
        if (!PopFixed(stack, &values[i]))
            return false;
    return true;
}

bool PopFixedPoints(PostScriptObjectList *stack, FixedPoint *points, int16_t n)
{
    for (int i = n - 1; i >= 0; --i)
        if (!PopFixed(stack, &points[i].y) || !PopFixed(stack, &points[i].x))
            return false;
    return true;
}

bool PopAndBuildFixedMatrix(PostScriptObjectList *stack, FixedMatrix *matrix)
{
    Fixed values[kMatrixValues];
    if (!PopMultipleFixeds(stack, values, kMatrixValues))
        return false;
    *matrix = {values[0], values[1], values[2], values[3], values[4], values[5]};
    return true;
}

bool PopFixedMatrix(PostScriptObjectList *stack, FixedMatrix *matrix)
{
    PostScriptObject *object = PopOfType(stack, kObjectArray);
    if (object == nullptr || object->array.count != kMatrixValues)
        return false;
    // The list holds the first element on top, where a stack holds the last.
    return PopAndBuildFixedMatrix(&object->array, matrix);
}

} // namespace vx
