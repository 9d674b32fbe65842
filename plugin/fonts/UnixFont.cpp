#include "plugin/fonts/UnixFont.h"

#include "plugin/Memory.h"
#include "plugin/body/Problems.h"
#include "plugin/fonts/NameHash.h"
#include "plugin/input/Fixed.h"
#include "plugin/input/MacString.h"

#include <cstring>

namespace vx
{

namespace
{

// Fonts are told apart by a signed 16-bit index; any further ones are never found.
constexpr int32_t kMaxIndexedFonts = INT16_MAX + 1;

// The code whose width stands for all double-byte characters.
constexpr int32_t kDoubleByteCode = 0x81;

// A length-prefixed string as a zero-terminated one; both have kFontNameSize bytes.
void CopyTerminated(char *to, uint8_t *lengthPrefixed)
{
    const char *text = p2cstr(lengthPrefixed);
    memcpy(to, text, strlen(text) + 1);
}

// A string's index has 16 bits and starts at 1. Loops over a list count with 32 bits: a list may be as long as the
// largest index, after which there is no next one.
void GetListString(int16_t list, int32_t index, char *to)
{
    uint8_t text[kPascalStringSize];
    getString(list, static_cast<int16_t>(index), text);
    CopyTerminated(to, text);
}

// Fills the entry of host font index; false when the host does not tell its name.
bool ReadFontEntry(int32_t index, FontTableEntry *entry)
{
    uint8_t name[kPascalStringSize] = {};
    uint8_t family[kPascalStringSize] = {};
    uint8_t suffix[kPascalStringSize] = {};
    int16_t number = 0; // a host that fails may have written it all the same
    if (UNIXGetIndexedFontName(index, name, &number) != 0)
        return false;
    UNIXGetFamilyParentAndSuffix(name, family, 0, suffix);
    CopyTerminated(entry->familyName, family);
    CopyTerminated(entry->postScriptName, name);
    entry->fontNumber = number;
    return true;
}

// Reads a whole suffix list. An empty string ends it with false.
bool ReadSuffixes(const HostCallRecord *record, int16_t list, int16_t most, char **suffixes, int32_t *count)
{
    const int16_t listed = countString(list);
    if (listed > most)
        return false;
    for (int16_t i = 0; i < listed; ++i) {
        void *block = record->memory->allocate(kFontNameSize, record->memory->refcon);
        if (block == nullptr)
            return false;
        suffixes[i] = static_cast<char *>(block);
        GetListString(list, i + 1, suffixes[i]);
        if (suffixes[i][0] == 0)
            return false;
        *count = i + 1;
    }
    return true;
}

void ReleaseSuffixes(const HostCallRecord *record, char **suffixes, int16_t count)
{
    for (int16_t i = 0; i < count; ++i) {
        ReleaseBlock(record->memory, suffixes[i]);
        suffixes[i] = nullptr;
    }
}

// The length of a name, of length bytes, without its suffix.
size_t LengthWithoutSuffix(const char *name, size_t length, char *const *suffixes, int32_t count)
{
    if (length == 0)
        return 0;
    for (int32_t i = 0; i < count; ++i) {
        const char *found = strstr(name + 1, suffixes[i]);
        if (found == nullptr)
            continue;
        const auto position = static_cast<size_t>(found - name);
        if (position + strlen(suffixes[i]) <= length)
            return position;
    }
    return length;
}

// A name without its suffixes is the start of it.
size_t StrippedLength(const char *name, const FontTable *table)
{
    size_t length = strlen(name);
    length = LengthWithoutSuffix(name, length, table->orientationSuffix, table->orientationSuffixCount);
    return LengthWithoutSuffix(name, length, table->encodingSuffix, table->encodingSuffixCount);
}

void CutAtSuffix(char *name, char *const *suffixes, int32_t count)
{
    const size_t length = strlen(name);
    const size_t kept = LengthWithoutSuffix(name, length, suffixes, count);
    memset(name + kept, 0, length - kept);
}

int32_t IndexedFontCount(int32_t fonts)
{
    return fonts < kMaxIndexedFonts ? fonts : kMaxIndexedFonts;
}

// Half of the slots at least stay free, so that a search soon ends.
uint32_t NameSlotCount(int32_t fonts)
{
    uint32_t count = 2;
    while (count < 2 * static_cast<uint32_t>(IndexedFontCount(fonts)))
        count *= 2;
    return count;
}

// The slot of a stripped name, or the free one where it belongs.
FontNameSlot *FindNameSlot(const FontTable *table, const char *name, size_t length)
{
    const uint32_t hash = HashName(name, static_cast<int32_t>(length));
    for (uint32_t i = hash;; ++i) {
        FontNameSlot *slot = &table->nameSlots[i & (table->nameSlotCount - 1)];
        if (slot->font == kNoFont)
            return slot;
        if (slot->hash == hash && static_cast<size_t>(slot->nameLength) == length &&
            memcmp(table->entries[slot->font].postScriptName, name, length) == 0)
            return slot;
    }
}

// Where entries share a name, the first one keeps it.
void IndexFontNames(FontTable *table)
{
    for (uint32_t i = 0; i < table->nameSlotCount; ++i)
        table->nameSlots[i].font = kNoFont;
    for (int32_t i = 0; i < IndexedFontCount(table->entryCount); ++i) {
        const char *name = table->entries[i].postScriptName;
        const size_t length = StrippedLength(name, table);
        FontNameSlot *slot = FindNameSlot(table, name, length);
        if (slot->font == kNoFont) {
            slot->hash = HashName(name, static_cast<int32_t>(length));
            slot->font = static_cast<int16_t>(i);
            slot->nameLength = static_cast<int16_t>(length);
        }
    }
}

// The widths of a font of the table, which the host tells once as long as no other font takes their place.
const Fixed *WidthsOfFont(TextAndFontState *state, int16_t font)
{
    KnownWidths *known = &state->knownWidths[font % kKnownFontCount];
    if (!known->known || known->font != font) {
        const int16_t number = state->fonts.entries[font].fontNumber;
        for (int32_t code = 0; code < kCharacterCodes; ++code)
            known->widths[code] = UNIXGetCharWidth(number, static_cast<int16_t>(code));
        known->known = true;
        known->font = font;
    }
    return known->widths;
}

} // namespace

bool InitializeFontTable(const HostCallRecord *record, FontTable *table)
{
    const int32_t count = UNIXNumFonts();
    if (count <= 0)
        return false;
    static_assert(sizeof(FontTableEntry) % alignof(FontNameSlot) == 0);
    const uint32_t slotCount = NameSlotCount(count);
    const int64_t entriesSize = int64_t{count} * static_cast<int64_t>(sizeof(FontTableEntry));
    const int64_t size = entriesSize + int64_t{slotCount} * static_cast<int64_t>(sizeof(FontNameSlot));
    if (size > INT32_MAX)
        return false;
    void *block = record->memory->allocate(static_cast<int32_t>(size), record->memory->refcon);
    if (block == nullptr)
        return false;
    memset(block, 0, static_cast<size_t>(size));
    table->entries = static_cast<FontTableEntry *>(block);
    table->entryCount = count;
    bool anyRead = false;
    // An entry that cannot be read keeps its place: entries are found by host font index.
    for (int32_t i = 0; i < count; ++i)
        if (ReadFontEntry(i, &table->entries[i]))
            anyRead = true;
    if (!anyRead || !InitializeSuffixTables(record, table))
        return false;
    table->nameSlots = reinterpret_cast<FontNameSlot *>(table->entries + count);
    table->nameSlotCount = slotCount;
    IndexFontNames(table);
    return true;
}

bool InitializeSuffixTables(const HostCallRecord *record, FontTable *table)
{
    return ReadSuffixes(record, kVXEncodingSuffixes, kMaxEncodingSuffixes, table->encodingSuffix,
                        &table->encodingSuffixCount) &&
           ReadSuffixes(record, kVXOrientationSuffixes, kMaxOrientationSuffixes, table->orientationSuffix,
                        &table->orientationSuffixCount);
}

void ReleaseFontTable(const HostCallRecord *record, FontTable *table)
{
    ReleaseBlock(record->memory, table->entries);
    table->entries = nullptr;
    table->entryCount = 0;
    table->nameSlots = nullptr;
    ReleaseSuffixTables(record, table);
}

void ReleaseSuffixTables(const HostCallRecord *record, FontTable *table)
{
    ReleaseSuffixes(record, table->orientationSuffix, kMaxOrientationSuffixes);
    table->orientationSuffixCount = 0;
    ReleaseSuffixes(record, table->encodingSuffix, kMaxEncodingSuffixes);
    table->encodingSuffixCount = 0;
}

void InitializeDefaultFont(FontTable *table)
{
    for (int32_t &font : table->defaultFont)
        font = kNoFont;
    const int16_t script = GetDefaultScript();
    const int16_t list = script == kScriptJapanese ? kVXJapaneseFonts : kVXOtherFonts;
    const int16_t count = countString(list);
    for (int32_t i = 1; i <= count && table->defaultFont[script] == kNoFont; ++i) {
        char name[kFontNameSize];
        GetListString(list, i, name);
        table->defaultFont[script] = PSNameSearchFontTable(name, table);
    }
}

void RemoveOrientationSuffix(char *name, const FontTable *table)
{
    CutAtSuffix(name, table->orientationSuffix, table->orientationSuffixCount);
}

void RemoveEncodingSuffix(char *name, const FontTable *table)
{
    CutAtSuffix(name, table->encodingSuffix, table->encodingSuffixCount);
}

int16_t PSNameSearchFontTable(const char *name, const FontTable *table)
{
    if (table->nameSlots == nullptr)
        return kNoFont;
    return FindNameSlot(table, name, StrippedLength(name, table))->font;
}

bool ComparePostScriptName(const char *name1, const char *name2, const FontTable *table)
{
    const size_t length = StrippedLength(name1, table);
    return StrippedLength(name2, table) == length && memcmp(name1, name2, length) == 0;
}

const char *GetValidPostScriptName(const char *name, int16_t script, bool /*vertical*/,
                                   const FontTable *table)
{
    int32_t font = PSNameSearchFontTable(name, table);
    if (font == kNoFont && script >= 0 && script < kScriptCount)
        font = table->defaultFont[script];
    return font != kNoFont ? table->entries[font].postScriptName : name;
}

bool SubstituteFaceName(char *name)
{
    const int16_t count = countString(kVXReplacedFaces);
    for (int32_t i = 1; i <= count; ++i) {
        char replaced[kFontNameSize];
        GetListString(kVXReplacedFaces, i, replaced);
        if (strcmp(name, replaced) == 0) {
            GetListString(kVXReplacingFaces, i, name);
            return true;
        }
    }
    return false;
}

void MacFontPostScriptFontName(uint8_t *name)
{
    const uint8_t length = name[0];
    const auto *sign = static_cast<const uint8_t *>(memchr(name + 1, '$', length));
    if (sign != nullptr) {
        const auto kept = static_cast<uint8_t>(length - (sign - (name + 1)));
        memmove(name + 1, sign, kept);
        name[0] = kept;
    }
    if (name[0] < kPascalStringSize - 1)
        name[1 + name[0]] = 0;
}

bool GetCharacterWidthTable(const char *name, Fixed widths[kCharacterCodes], ParseContext *context)
{
    constexpr size_t kSize = kCharacterCodes * sizeof(Fixed);
    const int16_t font = PSNameSearchFontTable(name, &context->text.fonts);
    if (font == kNoFont)
        memset(widths, 0, kSize);
    else
        memcpy(widths, WidthsOfFont(&context->text, font), kSize);
    const Fixed doubleByte = widths[kDoubleByteCode];
    context->text.doubleByteWidth = doubleByte != 0 ? doubleByte : kFixedOne;
    return true;
}

bool ConfirmFontSubstitution(ParseContext *context)
{
    return ReportParsingError(context, kProblemFontSubstitution) == 0;
}

} // namespace vx
