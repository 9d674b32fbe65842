// What the user sees of the plug-in itself: the about box, and the problems of a parse.
#pragma once

#include "plugin/Result.h"

#include <vx/Toolbox.h>

namespace vx
{

struct ParseContext;

// A problem's number. Its title and message are strings 2n - 1 and 2n of the host's list.
enum Problem : int16_t {
    kProblemPattern = 1,
    kProblemPostScript = 2,
    kProblemOperator = 3,
    kProblemBinary = 4,
    kProblemFontSubstitution = 5,
};

// Shows the about box until it is clicked. Fails with the host's own resource or memory error.
Result DoAbout(HostCallRecord *record);

// Moves the rectangle stored in a dialog resource to the middle of the main screen, a third of the way down below
// the menu bar.
void CenterDialog(Handle dialog);

// Shows the problem through the host; non-zero asks to stop the parse. 0 when nobody is there to be asked or the
// parse is already stopping.
uint8_t ReportParsingError(ParseContext *context, Problem problem);

// Reports a problem the first time that it is met; a wish to stop is kept in the context.
void ReportProblemOnce(ParseContext *context, Problem problem, uint8_t *warned);

} // namespace vx
