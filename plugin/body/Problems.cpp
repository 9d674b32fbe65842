#include "plugin/body/Problems.h"

#include "plugin/input/MacString.h"

namespace vx
{

uint8_t ReportParsingError(ParseContext *context, Problem problem)
{
    if (context->problemProc == nullptr || context->aborted != 0)
        return 0;
    uint8_t title[kPascalStringSize];
    uint8_t message[kPascalStringSize];
    GetIndString(title, kVXProblemStrings, static_cast<int16_t>(2 * problem - 1));
    GetIndString(message, kVXProblemStrings, static_cast<int16_t>(2 * problem));
    return context->problemProc(title, message, title[0] == 0 ? 1 : 0);
}

void ReportProblemOnce(ParseContext *context, Problem problem, uint8_t *warned)
{
    if (*warned != 0)
        return;
    *warned = 1;
    context->aborted = static_cast<uint8_t>(context->aborted | ReportParsingError(context, problem));
}

} // namespace vx
