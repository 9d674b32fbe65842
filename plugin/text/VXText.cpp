#include "plugin/text/VXText.h"

namespace vx
{

void InitializeTextState(TextAndFontState *state)
{
    state->object.pathState = kNoTextPath;
    state->object.type = kNoTextObject;
}

Result ParseText(const char * /*operatorText*/, ParseContext * /*context*/, TextObject * /*text*/)
{
    return kOk;
}

Result Parse_88_and_1_1_Text(const char * /*operatorText*/, ParseContext * /*context*/, TextObject * /*text*/)
{
    return kOk;
}

} // namespace vx
