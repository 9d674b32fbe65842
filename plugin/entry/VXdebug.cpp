#include "plugin/entry/VXdebug.h"

#include <vx/Toolbox.h>

#include <cstring>

namespace vx
{

namespace
{

constexpr size_t kMaxDebugMessage = 254;

} // namespace

void DebugMsg(const char *message)
{
    uint8_t text[1 + kMaxDebugMessage];
    size_t length = strlen(message);
    if (length > kMaxDebugMessage)
        length = kMaxDebugMessage;
    text[0] = static_cast<uint8_t>(length);
    memcpy(text + 1, message, length);
    DebugStr(text);
}

} // namespace vx
