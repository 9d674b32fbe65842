#include "plugin/text/TextSetting.h"

#include "plugin/body/ParseContext.h"

#include <new>

namespace vx
{

namespace
{

constexpr int32_t kWidthTableSize = kCharacterCodes * static_cast<int32_t>(sizeof(Fixed));

// The matrix after a quarter turn: its first axis is where its second one was.
FixedMatrix TurnMatrix(const FixedMatrix &matrix)
{
    return {matrix.c, matrix.d, NegateFixed(matrix.a), NegateFixed(matrix.b), 0, 0};
}

FixedPoint AlongLine(const TextSetting *setting, Fixed along, Fixed across)
{
    const FixedPoint vector = {along, across};
    FixedPoint result;
    DTransformZRKPoint(&setting->advance, &vector, &result);
    return result;
}

FixedPoint AddPoints(const FixedPoint &first, const FixedPoint &second)
{
    return {AddFixed(first.x, second.x), AddFixed(first.y, second.y)};
}

void MovePen(TextSetting *setting, Fixed along)
{
    if (along == 0) // as most spacing is
        return;
    setting->pen = AddPoints(setting->pen, AlongLine(setting, along, 0));
    setting->length = AddFixed(setting->length, along);
}

// A width table that could not be had is all zero.
Fixed WidthOf(const TextSetting *setting, uint8_t byte)
{
    return setting->widths != nullptr ? FixedMul(setting->widths[byte], setting->context->text.fontSize) : 0;
}

bool LiesSideways(const TextSetting *setting, int32_t size)
{
    return setting->plan.vertical && size == 1 && setting->text->sidewaysRoman != 0;
}

Fixed AdvanceInLine(const TextSetting *setting, uint8_t byte, int32_t size)
{
    return size == 2 ? setting->doubleByteWidth : WidthOf(setting, byte);
}

Fixed AdvanceInColumn(const TextSetting *setting, uint8_t byte, int32_t size)
{
    if (LiesSideways(setting, size))
        return WidthOf(setting, byte);
    const TextAndFontState *state = &setting->context->text;
    return IsMacDocument(setting->context->encodingSetup) ? state->fontSize
                                                          : SubtractFixed(state->ascent, state->descent);
}

// From the pen to where a character of a column has its origin.
FixedPoint OriginInColumn(const TextSetting *setting, uint8_t byte, int32_t size)
{
    const TextAndFontState *state = &setting->context->text;
    if (LiesSideways(setting, size))
        return AlongLine(setting, 0, AddFixed(state->ascent, state->descent) / 2);
    const Fixed width = size == 2 ? setting->doubleByteWidth : WidthOf(setting, byte);
    return AlongLine(setting, state->ascent, width / 2);
}

void BeginCharacter(TextSetting *setting, uint8_t byte)
{
    if (byte == ' ')
        MovePen(setting, setting->text->wordSpacing);
}

void EndCharacter(TextSetting *setting, uint8_t byte, int32_t size)
{
    MovePen(setting, setting->plan.vertical ? AdvanceInColumn(setting, byte, size)
                                            : AdvanceInLine(setting, byte, size));
    MovePen(setting, setting->text->characterSpacing);
}

void PlaceInLine(const TextSetting *setting, ZRKTextRecord *record)
{
    ChooseGlyphMatrix(setting, record, record->length);
    record->x = setting->pen.x;
    record->y = setting->pen.y;
    record->placement = kZRKPlaceAt;
}

void PlaceInColumn(const TextSetting *setting, ZRKTextRecord *record)
{
    const int32_t size = record->length;
    const FixedPoint origin = AddPoints(setting->pen, OriginInColumn(setting, *record->text, size));
    ChooseGlyphMatrix(setting, record, size);
    record->x = origin.x;
    record->y = origin.y;
    record->placement = size == 2 ? kZRKPlaceAt | kZRKUprightInColumn : kZRKPlaceAt;
}

} // namespace

int32_t GetCharSize(uint8_t byte, int16_t script)
{
    return IsDBCSFirstByte(byte, script) ? 2 : 1;
}

void BeginTextSetting(TextSetting *setting, ParseContext *context, TextObject *text, int16_t script,
                      const char *fontName, const SettingPlan &plan)
{
    const Fixed fontSize = context->text.fontSize;
    const FixedMatrix scaled = ScaledTextMatrix(text, plan.swapsScales);
    setting->context = context;
    setting->text = text;
    setting->script = script;
    setting->plan = plan;
    setting->upright = MakeGlyphMatrix(fontSize, scaled);
    setting->sideways = MakeGlyphMatrix(fontSize, TurnMatrix(scaled));
    setting->advance = plan.vertical ? TurnMatrix(scaled) : FlipMatrix(scaled);
    void *block = context->memoryProcs->allocate(kWidthTableSize, context->memoryProcs->refcon);
    setting->widths = static_cast<Fixed *>(block);
    if (setting->widths != nullptr)
        GetCharacterWidthTable(fontName, setting->widths, context);
    else
        context->text.doubleByteWidth = kFixedOne;
    setting->doubleByteWidth = FixedMul(GetDBCSWidth(&context->text, script), fontSize);
    TranslateZRKMatrix(&text->textMatrix, plan.rise.x, plan.rise.y);
    setting->pen = {text->textMatrix.tx, text->textMatrix.ty};
    setting->pen = AddPoints(setting->pen, AlongLine(setting, FixedMul(plan.kerning, fontSize), 0));
    setting->length = 0;
}

void EndTextSetting(TextSetting *setting)
{
    const MemoryProcs *memory = setting->context->memoryProcs;
    if (setting->widths != nullptr)
        memory->release(setting->widths, memory->refcon);
    FixedMatrix *matrix = &setting->text->textMatrix;
    matrix->tx = setting->pen.x;
    matrix->ty = setting->pen.y;
    TranslateZRKMatrix(matrix, NegateFixed(setting->plan.rise.x), NegateFixed(setting->plan.rise.y));
}

void PassString(TextSetting *setting, const uint8_t *bytes, int32_t length)
{
    const uint8_t *end = bytes + length;
    while (bytes < end) {
        const int32_t size = GetCharSize(*bytes, setting->script);
        BeginCharacter(setting, *bytes);
        EndCharacter(setting, *bytes, size);
        bytes += size;
    }
}

Result SetCharByChar(TextSetting *setting, ZRKTextRecord *first, int32_t length, int32_t size,
                     ZRKTextRecord **last)
{
    const MemoryProcs *memory = setting->context->memoryProcs;
    ZRKTextRecord *record = first;
    *last = first;
    while (length > 0) {
        const uint8_t byte = *record->text;
        record->length = size != 0 ? size : GetCharSize(byte, setting->script);
        BeginCharacter(setting, byte);
        if (setting->plan.vertical)
            PlaceInColumn(setting, record);
        else
            PlaceInLine(setting, record);
        EndCharacter(setting, byte, record->length);
        length -= record->length;
        if (length <= 0)
            break;
        void *block = memory->allocate(static_cast<int32_t>(sizeof(ZRKTextRecord)), memory->refcon);
        if (block == nullptr)
            return kParserBadFormat;
        auto *next = new (block) ZRKTextRecord(*record);
        next->text += record->length;
        record->next = next;
        record = *last = next;
    }
    return kOk;
}

void ChooseGlyphMatrix(const TextSetting *setting, ZRKTextRecord *record, int32_t size)
{
    SetGlyphMatrix(record, LiesSideways(setting, size) ? setting->sideways : setting->upright);
}

void SetGlyphMatrix(ZRKTextRecord *record, const FixedMatrix &matrix)
{
    record->a = matrix.a;
    record->b = matrix.b;
    record->c = matrix.c;
    record->d = matrix.d;
}

FixedMatrix MakeGlyphMatrix(Fixed fontSize, const FixedMatrix &matrix)
{
    return {FixedMul(fontSize, matrix.a),
            FixedMul(fontSize, matrix.b),
            FixedMul(fontSize, matrix.c),
            FixedMul(fontSize, matrix.d),
            0,
            0};
}

FixedMatrix ScaledTextMatrix(const TextObject *text, bool swapsScales)
{
    FixedMatrix matrix = text->textMatrix;
    if (swapsScales)
        ScaleZRKMatrix(&matrix, text->verticalScale, text->horizontalScale);
    else
        ScaleZRKMatrix(&matrix, text->horizontalScale, text->verticalScale);
    return matrix;
}

void ReleaseTextRecords(const ParseContext *context, ZRKTextRecord *first)
{
    while (first != nullptr) {
        ZRKTextRecord *next = first->next;
        context->memoryProcs->release(first, context->memoryProcs->refcon);
        first = next;
    }
}

} // namespace vx
