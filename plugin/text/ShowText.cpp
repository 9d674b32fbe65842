#include "plugin/text/ShowText.h"

#include "plugin/body/HostTable.h"
#include "plugin/text/StringEncoding.h"
#include "plugin/text/TextRecords.h"
#include "plugin/text/TextSetting.h"

namespace vx
{

namespace
{

using SetProc = Result (*)(TextSetting *setting, ZRKTextRecord *record);

Result SetWholeString(TextSetting *setting, ZRKTextRecord *record)
{
    record->x = setting->pen.x;
    record->y = setting->pen.y;
    record->placement = kZRKPlaceAt;
    PassString(setting, record->text, record->length);
    return kOk;
}

Result SetEachCharacter(TextSetting *setting, ZRKTextRecord *record)
{
    record->x = 0;
    record->y = 0;
    record->placement = kZRKContinue;
    ZRKTextRecord *last;
    return SetCharByChar(setting, record, record->length, 0, &last);
}

// Shows the chain of the text state's record, moved back along its line where that is centred or right-aligned.
void ShowAligned(const TextSetting *setting)
{
    ZRKTextRecord *first = &setting->text->record;
    uint32_t mode = setting->text->renderMode & ~uint32_t{kRenderClip};
    FixedPoint shift = {0, 0};
    // Where both are asked for, the second bit goes on to the host, on purpose.
    if ((mode & kAlignCentre) != 0) {
        shift.x = NegateFixed(setting->length) / 2;
        mode &= ~uint32_t{kAlignCentre};
    } else if ((mode & kAlignRight) != 0) {
        shift.x = NegateFixed(setting->length);
        mode &= ~uint32_t{kAlignRight};
    }
    if (shift.x != 0) {
        DTransformZRKPoint(&setting->advance, &shift, &shift);
        for (ZRKTextRecord *record = first; record != nullptr; record = record->next) {
            record->x = AddFixed(record->x, shift.x);
            record->y = AddFixed(record->y, shift.y);
        }
    }
    CallShow(setting->context, first, mode);
}

Result PaintText(ParseContext *context, TextObject *text, int16_t script, const SettingPlan &plan,
                 SetProc set)
{
    if (context->text.fontSize <= 0)
        return kParserBadFormat;
    if (text->visible != 1 || text->renderModeState != kRenderModeGiven)
        return kOk;
    context->fillColour(context); // even for text that is only stroked
    ZRKTextRecord *record = &text->record;
    const int32_t length = record->length;
    TextSetting setting;
    BeginTextSetting(&setting, context, text, script, record->fontName, plan);
    SetGlyphMatrix(record, setting.upright);
    const Result result = set(&setting, record);
    ShowAligned(&setting);
    EndTextSetting(&setting);
    ReleaseTextRecords(context, record->next);
    record->next = nullptr;
    record->length = length;
    return result;
}

SettingPlan PlanOfLine(const TextObject *text)
{
    return {false, text->swapScales != 0, {0, text->negatedRise}, text->kerning};
}

// A copy of the string in the string buffer, which may be written, with a terminator behind it. Null when it does
// not fit.
uint8_t *CopyString(StringBuffer *buffer, const BigString *string)
{
    BigString copy;
    BufferAppendStringAndCharacter(buffer, string, 0, &copy);
    return OverflowedStringBuffer(buffer) ? nullptr : buffer->base + (copy.text - buffer->base);
}

bool IsReadyToShow(const TextObject *text)
{
    return text->fontSet[0] == kFontSet && text->fontSet[1] == kFontSet && text->openState == kTextOpen;
}

// Keeps the text for clipping, if the render mode says so. The text position stays; end is where it came to.
Result ClipText(ParseContext *context, TextObject *text, const BigString *string, int16_t script,
                FixedMatrix *end)
{
    const FixedMatrix start = text->textMatrix;
    Result result = kOk;
    if ((text->renderMode & kRenderClip) != 0 && text->renderModeState == kRenderModeGiven)
        result = text->vertical != 0 ? MakeALinkListOfZRKTextRecord2(context, text, string, script)
                                     : MakeALinkListOfZRKTextRecord(context, text, string, script);
    *end = text->textMatrix;
    text->textMatrix = start;
    return result;
}

} // namespace

Result CallZRKShowCorrectly(ParseContext *context, TextObject *text, const BigString *string)
{
    uint8_t *copy = CopyString(context->stringBuffer, string);
    if (copy == nullptr || !IsReadyToShow(text))
        return kParserBadFormat;
    PrepareStringTobeRasterize(context, copy, string->length, text);
    if (text->scaleState == kScaleAfterObject)
        text->scaleState = kScaleUsed;
    int16_t script;
    FindFontVectorData(context->text.fontName, context->encodingSetup, &script, nullptr);
    text->record = {};
    text->record.fontName = ChooseFontName(context, text, script);
    text->record.text = copy;
    text->record.length = string->length;

    const BigString shown = {copy, string->length};
    FixedMatrix clipEnd;
    Result result = ClipText(context, text, &shown, script, &clipEnd);
    if (result == kOk && (text->renderMode & (kRenderFill | kRenderStroke)) != 0)
        result = text->vertical != 0 ? RasterVerticalTxTCorrectly(context, text, script)
                                     : RasterTxTCorrectly(context, text, script);
    const uint32_t mode = text->renderMode & ~uint32_t{kAlignCentre | kAlignRight};
    if (text->renderModeState == kRenderModeGiven && mode == kRenderClip)
        text->textMatrix = clipEnd;
    text->newLinePending = 0;
    text->kerningPending = 0;
    text->kerning = 0;
    return result;
}

Result RasterTxtString(ParseContext *context, TextObject *text, int16_t script)
{
    return PaintText(context, text, script, PlanOfLine(text), SetWholeString);
}

Result RasterTxtCharByChar(ParseContext *context, TextObject *text, int16_t script)
{
    return PaintText(context, text, script, PlanOfLine(text), SetEachCharacter);
}

Result RasterTxTCorrectly(ParseContext *context, TextObject *text, int16_t script)
{
    return text->characterSpacing == 0 && text->wordSpacing == 0 ? RasterTxtString(context, text, script)
                                                                 : RasterTxtCharByChar(context, text, script);
}

Result RasterVerticalTxTCorrectly(ParseContext *context, TextObject *text, int16_t script)
{
    // The rise moves the other way than in the clip records of a column, on purpose.
    return PaintText(context, text, script, {true, true, {text->rise, 0}, text->kerning}, SetEachCharacter);
}

} // namespace vx
