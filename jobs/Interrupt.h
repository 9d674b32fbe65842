// Ends the program at Ctrl-C, a hang-up or a request to end, and removes what is half written.
//
// The signal's handler does it, wherever the program is, so that nothing else has to ask whether it was interrupted. Worker
// processes end with their parent.
#pragma once

#include <string>

namespace vxhost
{

void CatchInterrupts(int exitStatus); // the program ends with it when it is interrupted
void ForgetInterrupts();              // for a worker: a signal ends it, and the parent tidies up

// Files to remove when interrupted. Neither is interrupted itself.
void RemoveWhenInterrupted(const std::string &path);
void KeepWhenInterrupted(const std::string &path);

} // namespace vxhost
