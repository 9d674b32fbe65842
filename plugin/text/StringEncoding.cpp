#include "plugin/text/StringEncoding.h"

#include "plugin/body/ParseContext.h"
#include "plugin/fonts/Encodings.h"

namespace vx
{

namespace
{

void ConvertMacToMac(uint8_t *bytes, int32_t length, int16_t script)
{
    if (script != kScriptRoman)
        Mac3JToMac5JVerticalEncoding(bytes, length, script);
}

void ConvertPCToMac(const FontEncodingObject *encoding, uint8_t *bytes, int32_t length, int16_t script,
                    bool vertical)
{
    if (script == kScriptRoman) {
        TranslateStringtoDefaultEncoding(bytes, length, encoding->pcTable, encoding->macTable);
    } else if (vertical) {
        PCToMacVerticalEncoding(bytes, length, script);
        Mac3JToMac5JVerticalEncoding(bytes, length, script);
    }
}

void ConvertMacToPC(const FontEncodingObject *encoding, uint8_t *bytes, int32_t length, int16_t script)
{
    if (script == kScriptRoman)
        TranslateStringtoDefaultEncoding(bytes, length, encoding->macTable, encoding->pcTable);
    else
        MacToPCVerticalEncoding(bytes, length, script);
}

} // namespace

void PrepareStringTobeRasterize(const ParseContext *context, uint8_t *bytes, int32_t length,
                                const TextObject *text)
{
    const FontEncodingObject *encoding = context->encodingSetup;
    if (encoding == nullptr)
        return;
    const bool fromMac = encoding->sourceKind == kSourceMac;
    const bool fromPC = encoding->sourceKind == kSourcePC;
    const bool toMac = encoding->targetKind == kTargetMac;
    const bool toPC = encoding->targetKind == kTargetPC;
    if (!(fromMac && (toMac || toPC)) && !(fromPC && toMac))
        return;
    int16_t script;
    if (!FindFontVectorData(context->text.fontName, encoding, &script, nullptr))
        return;
    if (fromPC)
        ConvertPCToMac(encoding, bytes, length, script, text->vertical != 0);
    else if (toMac)
        ConvertMacToMac(bytes, length, script);
    else
        ConvertMacToPC(encoding, bytes, length, script);
}

void TranslateStringtoDefaultEncoding(uint8_t *bytes, int32_t length, const uint32_t *fromTable,
                                      const uint32_t *toTable)
{
    for (int32_t i = 0; i < length; ++i) {
        if (bytes[i] == '\t' || IsLineEnd(bytes[i]))
            continue;
        const int32_t index = Pull_Index(bytes[i], fromTable);
        if (index >= 0)
            bytes[i] = static_cast<uint8_t>(toTable[index]);
    }
    bytes[length] = 0;
}

int32_t Pull_Index(uint8_t byte, const uint32_t *table)
{
    for (int32_t i = 0; i < kCharacterTableSize; ++i)
        if (table[i] == byte)
            return i;
    return -1;
}

} // namespace vx
