// Problems: what a parse tells the user through the host, each once.
#pragma once

#include "plugin/body/ParseContext.h"

#include <vx/Toolbox.h>

namespace vx
{

// A problem's number. Its title and message are strings 2n - 1 and 2n of the host's list.
enum Problem : int16_t {
    kProblemPattern = kVXProblemPattern,
    kProblemPostScript = kVXProblemPostScript,
    kProblemOperator = kVXProblemOperator,
    kProblemBinary = kVXProblemBinary,
    kProblemFontSubstitution = kVXProblemFont,
};

// Shows the problem through the host; non-zero asks to stop the parse. 0 when nobody is there to be asked or the
// parse is already stopping.
uint8_t ReportParsingError(ParseContext *context, Problem problem);

// Reports a problem the first time that it is met; a wish to stop is kept in the context.
void ReportProblemOnce(ParseContext *context, Problem problem, uint8_t *warned);

} // namespace vx
