// Font table: the host's fonts by PostScript name, read once a parse.
//
// Answers which host font serves a name that the document writes, ignoring suffixes for encoding and orientation,
// and which font to fall back on. The texts of all lists are the host's.
#pragma once

#include "plugin/fonts/Encodings.h"

#include <vx/HostCall.h>

namespace vx
{

struct ParseContext;

constexpr int32_t kFontNameSize = 256;
constexpr int32_t kNoFont = -1;
constexpr int16_t kMaxEncodingSuffixes = 4;
constexpr int16_t kMaxOrientationSuffixes = 2;
constexpr int32_t kCharacterCodes = 256;

struct FontTableEntry {
    char familyName[kFontNameSize];
    char postScriptName[kFontNameSize];
    int16_t fontNumber;
    int16_t flags;
};

// The first entry of a stripped name. Slots are searched by hash, from the slot of that number on.
struct FontNameSlot {
    uint32_t hash;
    int16_t font;       // an index of entries, or kNoFont for a free slot
    int16_t nameLength; // of the entry's name, without its suffixes
};

struct FontTable {
    FontTableEntry *entries; // by host font index
    int32_t entryCount;
    char *encodingSuffix[kMaxEncodingSuffixes];
    int32_t encodingSuffixCount;
    char *orientationSuffix[kMaxOrientationSuffixes];
    int32_t orientationSuffixCount;
    int32_t defaultFont[kScriptCount]; // index by script, or kNoFont
    FontNameSlot *nameSlots;           // in the block of the entries; null before the suffixes are known
    uint32_t nameSlotCount;            // a power of two, larger than the number of names
};

// The widths of one font, as the host has told them.
struct KnownWidths {
    bool known;
    int16_t font; // an index of entries
    Fixed widths[kCharacterCodes];
};

// Fonts that a document shows in turn share a place when their indices differ by a multiple of this.
constexpr int32_t kKnownFontCount = 8;

// False when the host has no memory, no font, or an unusable suffix list. The table comes zero-filled, and is to be
// released either way.
bool InitializeFontTable(const HostCallRecord *record, FontTable *table);
bool InitializeSuffixTables(const HostCallRecord *record, FontTable *table);
void ReleaseFontTable(const HostCallRecord *record, FontTable *table);
void ReleaseSuffixTables(const HostCallRecord *record, FontTable *table);

// Sets the default font of the default script alone: the first of the host's list that it has.
void InitializeDefaultFont(FontTable *table);

// Both cut a name at the first suffix of the list found in it, but never at its very start. name has room for
// kFontNameSize bytes, which are zero from the cut on. Nothing calls them.
void RemoveOrientationSuffix(char *name, const FontTable *table);
void RemoveEncodingSuffix(char *name, const FontTable *table);

// The first entry of that name, both without their suffixes; kNoFont if there is none. Does not depend on how many
// fonts the host has.
int16_t PSNameSearchFontTable(const char *name, const FontTable *table);
bool ComparePostScriptName(const char *name1, const char *name2, const FontTable *table);

// The name of the host font that serves the name; else that of the script's default font; else the name itself.
// The vertical flag is not used.
const char *GetValidPostScriptName(const char *name, int16_t script, bool vertical, const FontTable *table);

// Replaces a face name, in its kFontNameSize bytes, that the host's list knows under another. Nothing calls it.
bool SubstituteFaceName(char *name);

// "family$rest", length-prefixed, becomes "$rest": the sign stays, on purpose. Nothing calls it.
void MacFontPostScriptFontName(uint8_t *name);

// The widths of all codes in ems; all zero for a name that no host font serves. The host is asked when the font is not
// one of those whose widths are known. The text state learns the width of a double-byte character. Always true.
bool GetCharacterWidthTable(const char *name, Fixed widths[kCharacterCodes], ParseContext *context);

// Asks whether to go on with substituted fonts.
bool ConfirmFontSubstitution(ParseContext *context);

} // namespace vx
