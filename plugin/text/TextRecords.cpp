#include "plugin/text/TextRecords.h"

#include "plugin/body/ParseContext.h"
#include "plugin/text/TextSetting.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace vx
{

namespace
{

constexpr char kStyleName[] = "";

// Kerning belongs to one string: without a pending one the amount does not count.
Fixed PendingKerning(const TextObject *text)
{
    return text->kerningPending != 0 ? text->kerning : 0;
}

int32_t SizeOfName(const char *name)
{
    return static_cast<int32_t>(strlen(name)) + 1;
}

const char *StoreName(char *to, const char *name)
{
    memcpy(to, name, static_cast<size_t>(SizeOfName(name)));
    return to;
}

// The first record of a string at the end of the chain, or null. styleName may be null.
ZRKTextRecord *AppendHeadRecord(ParseContext *context, TextObject *text, const BigString *string,
                                const char *fontName, int32_t fontNameSize, const char *styleName)
{
    const int32_t styleNameSize = styleName != nullptr ? SizeOfName(styleName) : 0;
    const auto headerSize = static_cast<int32_t>(sizeof(ZRKTextRecord));
    void *block = context->memoryProcs->allocate(
        headerSize + fontNameSize + styleNameSize + string->length + 1, context->memoryProcs->refcon);
    if (block == nullptr)
        return nullptr;
    auto *record = new (block) ZRKTextRecord();
    char *names = static_cast<char *>(block) + headerSize;
    record->fontName = StoreName(names, fontName);
    names += fontNameSize;
    if (styleName != nullptr)
        record->styleName = StoreName(names, styleName);
    auto *bytes = reinterpret_cast<uint8_t *>(names + styleNameSize);
    memcpy(bytes, string->text, static_cast<size_t>(string->length));
    bytes[string->length] = 0;
    record->text = bytes;
    record->length = string->length;
    if (text->firstClip == nullptr)
        text->firstClip = record;
    else
        text->lastClip->next = record;
    text->lastClip = record;
    return record;
}

Result AppendCharByChar(ParseContext *context, TextObject *text, const BigString *string, int16_t script,
                        const SettingPlan &plan)
{
    const char *fontName = ChooseFontName(context, text, script);
    ZRKTextRecord *head = AppendHeadRecord(context, text, string, fontName, SizeOfName(fontName), nullptr);
    if (head == nullptr)
        return kParserBadFormat;
    TextSetting setting;
    BeginTextSetting(&setting, context, text, script, fontName, plan);
    // Every character counts as large as the first, and the record of an empty string as its terminator.
    const int32_t size = GetCharSize(*head->text, script);
    ChooseGlyphMatrix(&setting, head, size);
    head->placement = kZRKPlaceAt;
    const Result result = SetCharByChar(&setting, head, string->length, size, &text->lastClip);
    EndTextSetting(&setting);
    text->recordsPending = 1;
    return result;
}

} // namespace

Result MakeOneZRKTextRecord(ParseContext *context, TextObject *text, const BigString *string, int16_t script)
{
    const char *fontName = ChooseFontName(context, text, script);
    const int32_t fontNameSize = std::max(SizeOfName(fontName), SizeOfName(context->text.fontName));
    ZRKTextRecord *record = AppendHeadRecord(context, text, string, fontName, fontNameSize, kStyleName);
    if (record == nullptr)
        return kParserBadFormat;
    const FixedMatrix scaled = ScaledTextMatrix(text, text->swapScales != 0);
    SetGlyphMatrix(record, MakeGlyphMatrix(context->text.fontSize, scaled));
    if (text->rise != 0)
        text->kerningPending = 1;
    FixedPoint offset = {0, 0};
    if (text->kerningPending != 0) {
        offset = {FixedMul(text->kerning, context->text.fontSize), text->negatedRise};
        DTransformZRKPoint(&scaled, &offset, &offset);
        record->placement = kZRKMoveBy;
    }
    if (text->newLinePending != 0) {
        offset = {AddFixed(text->textMatrix.tx, offset.x), AddFixed(text->textMatrix.ty, offset.y)};
        record->placement = kZRKPlaceAt;
    }
    record->x = offset.x;
    record->y = offset.y;
    text->recordsPending = 1;
    return kOk;
}

// The three builders scale the text matrix each in its own way, on purpose.

Result MakeManyZRKTextRecords(ParseContext *context, TextObject *text, const BigString *string,
                              int16_t script)
{
    const bool swaps = text->vertical != 0 || text->swapScales != 0;
    return AppendCharByChar(context, text, string, script,
                            {false, swaps, {0, text->negatedRise}, PendingKerning(text)});
}

Result MakeALinkListOfZRKTextRecord(ParseContext *context, TextObject *text, const BigString *string,
                                    int16_t script)
{
    return text->characterSpacing == 0 && text->wordSpacing == 0
               ? MakeOneZRKTextRecord(context, text, string, script)
               : MakeManyZRKTextRecords(context, text, string, script);
}

Result MakeALinkListOfZRKTextRecord2(ParseContext *context, TextObject *text, const BigString *string,
                                     int16_t script)
{
    return AppendCharByChar(context, text, string, script,
                            {true, true, {text->negatedRise, 0}, PendingKerning(text)});
}

void ReleaseClipRecords(const ParseContext *context, TextObject *text)
{
    ReleaseTextRecords(context, text->firstClip);
    text->firstClip = nullptr;
    text->lastClip = nullptr;
    text->recordsPending = 0;
}

const char *ChooseFontName(ParseContext *context, const TextObject *text, int16_t script)
{
    const char *wanted = context->text.fontName;
    const FontTable *fonts = &context->text.fonts;
    const char *chosen = GetValidPostScriptName(wanted, script, text->vertical != 0, fonts);
    if (context->fontQuestionAsked == 0 && !ComparePostScriptName(wanted, chosen, fonts)) {
        context->fontQuestionAsked = 1;
        if (!ConfirmFontSubstitution(context))
            context->aborted = static_cast<uint8_t>(context->aborted | 1);
    }
    return chosen;
}

} // namespace vx
