// Text state: what the text operators have set, and the text object that is open.
//
// Owns the clip records, which are collected while text is shown and handed to the host when the object closes.
#pragma once

#include "plugin/Result.h"
#include "plugin/fonts/UnixFont.h"
#include "plugin/input/Fixed.h"

#include <vx/TextRecord.h>

#include <cstdint>

namespace vx
{

struct ParseContext;

constexpr int32_t kFontNameLimit = 80;

// The operand of "To", kept while the text object is open.
enum TextObjectType : int32_t { kPointText = 0, kPathText = 1, kAreaText = 2, kNoTextObject = 111 };
enum TextOpenState : int32_t { kTextOpen = 1, kTextClosed = 2 };
enum TextPathState : int32_t { kTextPathBegun = 1, kNoTextPath = 2 };
enum FontSetFlag : int32_t { kFontSet = 1, kFontNotSet = 2 };
enum ScaleState : int32_t { kScaleInitial = 640, kScaleUsed = 641, kScaleAfterObject = 643 };
enum RenderModeState : int32_t { kRenderModeGiven = 1, kRenderModeNotGiven = 2 };
constexpr int32_t kLegacySentinel = 555;

// Render mode: what the show entry of the host does, and how the line is aligned before it.
enum RenderModeBit : uint32_t {
    kRenderFill = kZRKShowFill,
    kRenderStroke = kZRKShowStroke,
    kRenderClip = kZRKShowClip,
    kAlignRight = 1u << 30,
    kAlignCentre = 1u << 31,
};

// What "Ta" and "z" write.
enum Alignment : int32_t { kAlignedLeft = 0, kCentred = 1, kAlignedRight = 2 };

// Lengths are text-space units unless they say otherwise. Some fields only mirror the document: nothing reads them.
struct TextObject {
    ZRKTextRecord record; // of the string being shown; first, so that the state can stand for its record
    ZRKTextRecord *firstClip;
    ZRKTextRecord *lastClip;
    uint8_t recordsPending;
    int32_t fontSet[3]; // FontSetFlag
    int32_t openState;
    int32_t pathState;
    uint8_t newLinePending; // the next record is placed, not continued
    uint8_t kerningPending;
    Fixed kerning; // in font sizes
    Fixed negatedRise;
    Fixed rise;
    Fixed characterSpacing;
    Fixed wordSpacing;
    int32_t scaleState;
    int32_t type;
    uint32_t renderMode;
    FixedPoint leading;
    FixedPoint lineOffset; // of the last "Td"
    Fixed pathStart;       // the number of "Tp"
    Fixed alignmentLimit;  // the number of "TA"
    int32_t alignment;
    Fixed tracking;
    Fixed lineSpacing;       // of the older syntax
    FixedMatrix pathMatrix;  // tx, ty: where the line starts
    FixedMatrix textMatrix;  // c and d negated; tx, ty: where the next text goes
    FixedMatrix lineMatrix;  // what "Td" and "T*" move along
    FixedMatrix givenMatrix; // as "Tm" wrote it
    FixedMatrix resetMatrix; // as "TR" wrote it
    uint8_t usesMatrix;      // "TM"
    uint8_t usesEncoding;    // "Te"
    uint8_t visible;         // the render mode paints something
    int32_t renderModeState; // text is painted only once a render mode was given
    int32_t legacySentinel;
    int32_t legacyLineCount;
    Fixed horizontalScale;
    Fixed verticalScale;
    Fixed writingScale; // the one of the two along the line
    uint8_t scaleGiven;
    uint8_t vertical;
    uint8_t sidewaysRoman; // one-byte characters lie on their side in a column
    uint8_t swapScales;
};

// What the context holds for text.
struct TextAndFontState {
    uint8_t pathMark; // cleared when the text moves away from its path; nothing reads it
    char fontName[kFontNameLimit + 1];
    Fixed fontSize;
    Fixed ascent;
    Fixed descent;
    Fixed doubleByteWidth; // of the font whose widths were fetched last; in ems
    FontTable fonts;
    KnownWidths knownWidths[kKnownFontCount];
    TextObject object;
};

// The defaults of a parse. The state comes zero-filled.
void InitializeTextState(TextAndFontState *state);

// Gives back what a document left unfinished.
void TerminateTextState(ParseContext *context);

// The defaults of a text object. Spacing, rise, render mode, font and scales outlive it.
Result InitializeTextObj(ParseContext *context, TextObject *text);

// The matrix as text is set with it: glyph space has its y axis pointing down, the written matrix does not.
constexpr FixedMatrix FlipMatrix(const FixedMatrix &written)
{
    return {written.a, written.b, NegateFixed(written.c), NegateFixed(written.d), written.tx, written.ty};
}

} // namespace vx
