// Debug messages, shown by the host's debugger if there is one.
#pragma once

namespace vx
{

// Messages longer than 254 bytes are cut. Nothing calls this: it is there for whoever debugs the plug-in.
void DebugMsg(const char *message);

} // namespace vx
