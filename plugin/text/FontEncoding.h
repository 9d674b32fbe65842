// Font encoding object: on which platform the document was written, its character tables, and the fonts that it
// re-encodes.
//
// Made and released by the setup module; without it no font is re-encoded and no text converted.
#pragma once

#include "plugin/Result.h"
#include "plugin/header/Header.h"

#include <cstdint>

namespace vx
{

struct ParseContext;
struct TextObject;

enum TargetKind : int32_t { kTargetMac = 501, kTargetPC = 502 }; // the PC is understood, but never chosen
enum EncodingTableState : int32_t { kTablesInitialized = 301, kTablesFilled = 302 };
enum SourceKind : int32_t { kSourceMac = 401, kSourcePC = 402, kSourceUnknown = 404 };
enum EncodingState : int32_t { kInEncodingBlock = 601, kOutsideEncodingBlock = 602 };

constexpr int32_t kCharacterTableSize = 260;
constexpr int32_t kReencodedNameSize = 256; // with the terminator
constexpr uint32_t kReencodedBuckets = 256; // a power of two

// A font that the document re-encodes under a name of its own.
struct ReencodedFont {
    ReencodedFont *next;
    char key[kReencodedNameSize];
    char fullName[kReencodedNameSize];
    int32_t keyLength;
    int32_t values[3]; // as written; the low half of the second is the font's script
    ReencodedFont *nextInBucket;
};

struct FontEncodingObject {
    int32_t targetKind;
    int32_t tableState;
    int32_t sourceKind;
    int32_t encodingState;
    FileVersion fileVersion;
    // Entry i of both tables is one character; kNoCode where the encoding lacks it.
    uint32_t pcTable[kCharacterTableSize];
    uint32_t macTable[kCharacterTableSize];
    uint32_t indexTable[kCharacterTableSize];
    ReencodedFont *firstFont; // newest first
    int32_t fontCount;
    uint32_t bracketCounter;                   // "[" seen in the encoding block
    ReencodedFont *buckets[kReencodedBuckets]; // the same fonts by key, newest first
};

// The object comes zero-filled.
void InitFontEncodingObject(FontEncodingObject *object, FileVersion version);

// Fills both character tables.
void InifontTable(FontEncodingObject *object);

// False without an object: then the platform is not known.
inline bool IsMacDocument(const FontEncodingObject *object)
{
    return object != nullptr && object->sourceKind == kSourceMac;
}

// A new entry in front of the list. Fails without an encoding object or memory.
Result AddOneObjectToList(ParseContext *context, ReencodedFont **entry);

// Re-encodes a font: /newname /basename, three integers, optionally an array.
Result Operator_TZ(ParseContext *context, TextObject *text);

// Looks a font up by the name without its first character. Found: its script, and its full name, cut to
// kFontNameLimit bytes, in fullName, which may be null or name itself. Otherwise the system's script, and false.
// object may be null.
bool FindFontVectorData(const char *name, const FontEncodingObject *object, int16_t *script, char *fullName);

} // namespace vx
