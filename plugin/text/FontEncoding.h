// Font encoding object: on which platform the document was written, and the fonts that it re-encodes.
#pragma once

#include "plugin/header/Header.h"

namespace vx
{

enum TargetKind : int32_t { kTargetMac = 501, kTargetPC = 502 };
enum EncodingTableState : int32_t { kTablesInitialized = 301, kTablesFilled = 302 };
enum SourceKind : int32_t { kSourceMac = 401, kSourcePC = 402, kSourceUnknown = 404 };
enum EncodingState : int32_t { kInEncodingBlock = 601, kOutsideEncodingBlock = 602 };

// A font that the document re-encodes under a name of its own.
struct ReencodedFont {
    ReencodedFont *next;
    char key[256];
    char fullName[256];
    int32_t keyLength;
    int32_t values[3]; // as written; the low half of the second is the font's script
};

struct FontEncodingObject {
    int32_t targetKind;
    int32_t tableState;
    int32_t sourceKind;
    int32_t encodingState;
    FileVersion fileVersion;
    ReencodedFont *firstFont; // newest first
    int32_t fontCount;
    uint32_t bracketCounter; // "[" seen in the encoding block
};

// The object comes zero-filled.
void InitFontEncodingObject(FontEncodingObject *object, FileVersion version);

} // namespace vx
