#include "plugin/fonts/UnixFont.h"

#include "plugin/body/ParseContext.h"
#include "plugin/entry/AboutBox.h"
#include "plugin/input/MacString.h"

#include <cstring>

namespace vx
{

namespace
{

// The host's string lists.
constexpr int16_t kJapaneseDefaultFonts = 16100;
constexpr int16_t kDefaultFonts = 16101;
constexpr int16_t kReplacedFaceNames = 16200;
constexpr int16_t kReplacementFaceNames = 16201;
constexpr int16_t kEncodingSuffixes = 16300;
constexpr int16_t kOrientationSuffixes = 16301;

constexpr int32_t kMaxFonts = INT32_MAX / static_cast<int32_t>(sizeof(FontTableEntry));

// Fonts are told apart by a signed 16-bit index; any further ones are never found.
constexpr int32_t kMaxIndexedFonts = INT16_MAX + 1;

void Release(const HostCallRecord *record, void *block)
{
    if (block != nullptr)
        record->memory->release(block, record->memory->refcon);
}

// A length-prefixed string as a zero-terminated one; both have kFontNameSize bytes.
void CopyTerminated(char *to, uint8_t *lengthPrefixed)
{
    strncpy(to, p2cstr(lengthPrefixed), kFontNameSize - 1);
    to[kFontNameSize - 1] = 0;
}

void GetListString(int16_t list, int16_t index, char *to)
{
    uint8_t text[kPascalStringSize];
    getString(list, index, text);
    CopyTerminated(to, text);
}

// Fills the entry of host font index; false when the host does not tell its name.
bool ReadFontEntry(int32_t index, FontTableEntry *entry)
{
    uint8_t name[kPascalStringSize] = {};
    uint8_t family[kPascalStringSize] = {};
    uint8_t suffix[kPascalStringSize] = {};
    if (UNIXGetIndexedFontName(index, name, &entry->fontNumber) != 0)
        return false;
    UNIXGetFamilyParentAndSuffix(name, family, 0, suffix);
    CopyTerminated(entry->familyName, family);
    CopyTerminated(entry->postScriptName, name);
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
        GetListString(list, static_cast<int16_t>(i + 1), suffixes[i]);
        if (suffixes[i][0] == 0)
            return false;
        *count = i + 1;
    }
    return true;
}

void ReleaseSuffixes(const HostCallRecord *record, char **suffixes, int16_t count)
{
    for (int16_t i = 0; i < count; ++i) {
        Release(record, suffixes[i]);
        suffixes[i] = nullptr;
    }
}

void CutAtSuffix(char *name, char *const *suffixes, int32_t count)
{
    if (name[0] == 0)
        return;
    for (int32_t i = 0; i < count; ++i) {
        if (char *found = strstr(name + 1, suffixes[i])) {
            memset(found, 0, strlen(found));
            return;
        }
    }
}

// A name without its suffixes.
struct StrippedName {
    char text[kFontNameSize];

    StrippedName(const char *name, const FontTable *table)
    {
        strncpy(text, name, sizeof text - 1);
        text[sizeof text - 1] = 0;
        RemoveOrientationSuffix(text, table);
        RemoveEncodingSuffix(text, table);
    }
};

} // namespace

bool InitializeFontTable(const HostCallRecord *record, FontTable *table)
{
    const int32_t count = UNIXNumFonts();
    if (count <= 0 || count > kMaxFonts)
        return false;
    const int32_t size = count * static_cast<int32_t>(sizeof(FontTableEntry));
    void *block = record->memory->allocate(size, record->memory->refcon);
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
    return anyRead && InitializeSuffixTables(record, table);
}

bool InitializeSuffixTables(const HostCallRecord *record, FontTable *table)
{
    return ReadSuffixes(record, kEncodingSuffixes, kMaxEncodingSuffixes, table->encodingSuffix,
                        &table->encodingSuffixCount) &&
           ReadSuffixes(record, kOrientationSuffixes, kMaxOrientationSuffixes, table->orientationSuffix,
                        &table->orientationSuffixCount);
}

void ReleaseFontTable(const HostCallRecord *record, FontTable *table)
{
    Release(record, table->entries);
    table->entries = nullptr;
    table->entryCount = 0;
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
    const int16_t list = script == kScriptJapanese ? kJapaneseDefaultFonts : kDefaultFonts;
    const int16_t count = countString(list);
    for (int16_t i = 1; i <= count && table->defaultFont[script] == kNoFont; ++i) {
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
    const StrippedName wanted(name, table);
    const int32_t count = table->entryCount < kMaxIndexedFonts ? table->entryCount : kMaxIndexedFonts;
    for (int32_t i = 0; i < count; ++i) {
        const StrippedName candidate(table->entries[i].postScriptName, table);
        if (strcmp(wanted.text, candidate.text) == 0)
            return static_cast<int16_t>(i);
    }
    return kNoFont;
}

bool ComparePostScriptName(const char *name1, const char *name2, const FontTable *table)
{
    const StrippedName first(name1, table);
    const StrippedName second(name2, table);
    return strcmp(first.text, second.text) == 0;
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
    const int16_t count = countString(kReplacedFaceNames);
    for (int16_t i = 1; i <= count; ++i) {
        char replaced[kFontNameSize];
        GetListString(kReplacedFaceNames, i, replaced);
        if (strcmp(name, replaced) == 0) {
            GetListString(kReplacementFaceNames, i, name);
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

bool GetCharacterWidthTable(const char *name, Fixed widths[kCharacterCodes], const ParseContext *context)
{
    const FontTable *table = &context->text.fonts;
    const int16_t font = PSNameSearchFontTable(name, table);
    for (int32_t code = 0; code < kCharacterCodes; ++code)
        widths[code] = font == kNoFont
                           ? 0
                           : UNIXGetCharWidth(table->entries[font].fontNumber, static_cast<int16_t>(code));
    return true;
}

bool ConfirmFontSubstitution(ParseContext *context)
{
    return ReportParsingError(context, kProblemFontSubstitution) == 0;
}

} // namespace vx
