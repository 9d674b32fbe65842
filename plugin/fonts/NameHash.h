// Name hash: the number by which tables of font names are searched.
#pragma once

#include <cstdint>

namespace vx
{

// length bytes; below 1 counts as none.
inline uint32_t HashName(const char *name, int32_t length)
{
    uint32_t hash = 2166136261u;
    for (int32_t i = 0; i < length; ++i)
        hash = (hash ^ static_cast<uint8_t>(name[i])) * 16777619u;
    return hash;
}

} // namespace vx
