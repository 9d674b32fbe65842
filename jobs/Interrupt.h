// Ends the program at Ctrl-C, a hang-up or a request to end, and removes what is half written.
//
// The signal's handler does it, wherever the program is, so that nothing else has to ask whether it was interrupted. Worker
// processes end with their parent. A program that has something to do before it ends can have the first signal told instead.
#pragma once

#include <string>

namespace vxhost
{

void CatchInterrupts(int exitStatus); // the program ends with it when it is interrupted
void ForgetInterrupts();              // for a worker: a signal ends it, and the parent tidies up

// From now on the first signal ends nothing, but makes the descriptor that this returns readable; -1: there can be none, and all
// stays as it was. Workers that start from now on do not hear of signals: the parent decides what becomes of them.
int HoldInterrupts();
int HeldInterrupt(); // the signal that came; 0: none did

// Files to remove when interrupted. Neither is interrupted itself.
void RemoveWhenInterrupted(const std::string &path);
void KeepWhenInterrupted(const std::string &path);

} // namespace vxhost
