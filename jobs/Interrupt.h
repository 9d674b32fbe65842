// Ctrl-C, a hang-up or a request to end: what is half written is removed, and the program ends.
//
// The handler does it all at once, wherever the program is, so that nothing else has to ask whether it was
// interrupted. Worker processes end with their parent.
#pragma once

#include <string>

namespace vxhost
{

void CatchInterrupts(int exitStatus); // of the program that is interrupted
void ForgetInterrupts();              // in a worker: a signal ends it, the parent tidies up

// Files to remove when interrupted. Neither is interrupted itself.
void RemoveWhenInterrupted(const std::string &path);
void KeepWhenInterrupted(const std::string &path);

} // namespace vxhost
