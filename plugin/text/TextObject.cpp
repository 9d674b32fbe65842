#include "plugin/text/TextObject.h"

#include "plugin/body/ParseContext.h"
#include "plugin/text/TextRecords.h"

namespace vx
{

void InitializeTextState(TextAndFontState *state)
{
    TextObject *text = &state->object;
    // The first flag says set already: the second one keeps text from being shown without a font.
    text->fontSet[0] = kFontSet;
    text->fontSet[1] = kFontNotSet;
    text->fontSet[2] = kFontNotSet;
    text->openState = kTextClosed;
    text->pathState = kNoTextPath;
    text->newLinePending = 1;
    text->scaleState = kScaleInitial;
    text->type = kNoTextObject;
    text->visible = 1;
    text->renderModeState = kRenderModeNotGiven;
    text->legacySentinel = kLegacySentinel;
    text->horizontalScale = kFixedOne;
    text->verticalScale = kFixedOne;
    text->writingScale = kFixedOne;
}

void TerminateTextState(ParseContext *context)
{
    ReleaseClipRecords(context, &context->text.object);
}

Result InitializeTextObj(ParseContext *context, TextObject *text)
{
    // A document that opens a second object without closing the first loses the clip of the first.
    ReleaseClipRecords(context, text);
    text->openState = kTextClosed;
    text->pathState = kNoTextPath;
    text->usesMatrix = 0;
    text->usesEncoding = 0;
    text->type = kNoTextObject;
    text->visible = 1;
    text->renderModeState = kRenderModeNotGiven;
    if (text->scaleState != kScaleAfterObject)
        text->scaleState = kScaleInitial;
    text->givenMatrix = {kFixedOne, 0, 0, -kFixedOne, 0, 0};
    text->newLinePending = 1;
    text->kerningPending = 0;
    text->kerning = 0;
    text->swapScales = 0;
    text->legacySentinel = kLegacySentinel;
    text->writingScale = kFixedOne;
    text->scaleGiven = 0;
    return kOk;
}

} // namespace vx
