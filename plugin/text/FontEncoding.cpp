#include "plugin/text/FontEncoding.h"

#include "plugin/body/ParseContext.h"
#include "plugin/fonts/Encodings.h"
#include "plugin/fonts/NameHash.h"
#include "plugin/text/CharacterTable.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace vx
{

namespace
{

static_assert(kCharacterRowCount <= kCharacterTableSize);

SourceKind SourceOfVersion(FileVersion version)
{
    switch (version) {
    case 2:
    case 3:
    case 5:
        return kSourceMac;
    case 4:
        return kSourcePC;
    default:
        return kSourceUnknown;
    }
}

ReencodedFont **BucketOf(FontEncodingObject *object, const ReencodedFont *font)
{
    return &object->buckets[HashName(font->key, font->keyLength) % kReencodedBuckets];
}

// Where a name holds a NUL byte, it ends there.
void CutAtTerminator(BigString *name)
{
    if (IsStringEmpty(name))
        return;
    const void *terminator = memchr(name->text, 0, static_cast<size_t>(name->length));
    if (terminator != nullptr)
        name->length = static_cast<int32_t>(static_cast<const uint8_t *>(terminator) - name->text);
}

void CopyName(char *to, const BigString *name)
{
    memcpy(to, name->text, static_cast<size_t>(name->length));
    to[name->length] = 0;
}

// False for a name that is too long. The key is what "Tf" looks for: it drops the first character whatever it is.
bool NameFont(ReencodedFont *font, BigString name)
{
    CutAtTerminator(&name);
    if (name.length >= kReencodedNameSize)
        return false;
    BigString key = name;
    TrimFirstCharacter(&key);
    CopyName(font->key, &key);
    font->keyLength = name.length - 1; // an empty name has a key that nothing equals
    CopyName(font->fullName, !IsStringEmpty(&name) && *name.text == '_' ? &key : &name);
    return true;
}

} // namespace

void InitFontEncodingObject(FontEncodingObject *object, FileVersion version)
{
    object->tableState = kTablesInitialized;
    object->encodingState = kOutsideEncodingBlock;
    object->fileVersion = version;
    object->sourceKind = SourceOfVersion(version);
    object->firstFont = nullptr;
    object->fontCount = 0;
    object->bracketCounter = 0;
    for (uint32_t i = 0; i < kCharacterTableSize; ++i) {
        object->pcTable[i] = kNoCode;
        object->macTable[i] = kNoCode;
        object->indexTable[i] = i;
    }
    object->targetKind = kTargetMac;
    InifontTable(object);
}

void InifontTable(FontEncodingObject *object)
{
    memcpy(object->pcTable, kPCCodes.data(), sizeof kPCCodes);
    memcpy(object->macTable, kMacCodes.data(), sizeof kMacCodes);
    object->tableState = kTablesFilled;
}

Result AddOneObjectToList(ParseContext *context, ReencodedFont **entry)
{
    FontEncodingObject *object = context->encodingSetup;
    if (object == nullptr)
        return kParserBadFormat;
    void *block = context->memoryProcs->allocate(static_cast<int32_t>(sizeof(ReencodedFont)),
                                                 context->memoryProcs->refcon);
    if (block == nullptr)
        return kParserBadFormat;
    auto *font = new (block) ReencodedFont();
    font->next = object->firstFont;
    object->firstFont = font;
    ++object->fontCount;
    *entry = font;
    return kOk;
}

Result Operator_TZ(ParseContext *context, TextObject * /*text*/)
{
    ReencodedFont *font;
    const Result result = AddOneObjectToList(context, &font);
    if (result != kOk)
        return result;
    PostScriptObjectList *stack = context->operandStack;
    if (GetPostScriptObjectListLength(stack) > 5 && stack->head->type == kObjectArray)
        PopPostScriptObject(stack);
    for (int i = 2; i >= 0; --i)
        if (!PopInteger(stack, &font->values[i]))
            return kParserBadFormat;
    BigString baseName;
    BigString newName;
    if (!PopLiteral(stack, &baseName) || !PopLiteral(stack, &newName) || !NameFont(font, newName))
        return kParserBadFormat;
    ReencodedFont **bucket = BucketOf(context->encodingSetup, font);
    font->nextInBucket = *bucket;
    *bucket = font;
    return kOk;
}

bool FindFontVectorData(const char *name, const FontEncodingObject *object, int16_t *script, char *fullName)
{
    const auto length = static_cast<int32_t>(strlen(name));
    const ReencodedFont *font =
        object != nullptr ? object->buckets[HashName(name, length) % kReencodedBuckets] : nullptr;
    while (font != nullptr && (font->keyLength != length || memcmp(font->key, name, strlen(name)) != 0))
        font = font->nextInBucket;
    if (font == nullptr) {
        *script = GetDefaultScript();
        return false;
    }
    *script = static_cast<int16_t>(font->values[1]);
    if (fullName != nullptr) {
        const size_t kept = std::min(strlen(font->fullName), size_t{kFontNameLimit});
        memcpy(fullName, font->fullName, kept);
        fullName[kept] = 0;
    }
    return true;
}

} // namespace vx
