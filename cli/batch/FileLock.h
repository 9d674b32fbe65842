// Sees to it that one run at a time writes to a file.
#pragma once

namespace vxhost
{

// Takes the file for this run, until the last descriptor of it is closed. Waits a moment for the workers of a run that was
// killed, which may still have it. Returns false when another run has it.
bool LockForRun(int descriptor);

} // namespace vxhost
