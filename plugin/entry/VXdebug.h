// Debug messages, shown by the host's debugger if there is one.
#pragma once

namespace vx
{

// Messages longer than 254 bytes are cut.
void DebugMsg(const char *message);

} // namespace vx
