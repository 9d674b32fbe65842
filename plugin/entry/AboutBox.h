// The about box: what the user sees of the plug-in itself.
#pragma once

#include "plugin/Result.h"

#include <vx/Toolbox.h>

namespace vx
{

// Shows the about box until it is clicked. Fails with the host's own resource or memory error.
Result DoAbout(HostCallRecord *record);

// Moves the rectangle stored in a dialog resource to the middle of the main screen, a third of the way down below
// the menu bar.
void CenterDialog(Handle dialog);

} // namespace vx
