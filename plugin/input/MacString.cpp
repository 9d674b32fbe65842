#include "plugin/input/MacString.h"

#include <vx/Toolbox.h>

#include <cstring>

namespace vx
{

namespace
{

int32_t SignedLength(const uint8_t *string)
{
    return static_cast<int8_t>(string[0]);
}

void AddLength(uint8_t *destination, const uint8_t *source)
{
    destination[0] = static_cast<uint8_t>(destination[0] + source[0]);
}

} // namespace

int16_t countString(int16_t resourceId)
{
    const Handle list = GetResource(kVXStringListType, resourceId);
    if (list == nullptr)
        return 0;
    int16_t count; // the list's first word
    memcpy(&count, *list, sizeof count);
    return count;
}

int16_t getString(int16_t resourceId, int16_t index, uint8_t *destination)
{
    destination[0] = 0;
    if (index >= 1 && index <= countString(resourceId))
        GetIndString(destination, resourceId, index);
    return resourceId;
}

void pstrcat(uint8_t *destination, const uint8_t *source)
{
    BlockMove(source + 1, destination + 1 + SignedLength(destination), SignedLength(source));
    AddLength(destination, source);
}

void pstrinsert(uint8_t *destination, const uint8_t *source)
{
    BlockMove(destination + 1, destination + 1 + SignedLength(source), SignedLength(destination));
    BlockMove(source + 1, destination + 1, SignedLength(source));
    AddLength(destination, source);
}

void pstrcpy(uint8_t *destination, const uint8_t *source)
{
    BlockMove(source + 1, destination + 1, SignedLength(source));
    destination[0] = source[0];
}

const uint8_t *pstrIndex(const uint8_t *list, int16_t n)
{
    for (; n > 1; --n)
        list += 1 + SignedLength(list);
    return list;
}

} // namespace vx
