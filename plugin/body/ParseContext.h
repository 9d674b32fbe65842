// Parse context: all that one parse of a body knows, handed to every operator.
//
// There is no other state. Behaviour that depends on what went before is chosen by storing a procedure here, not by
// testing flags at each use.
#pragma once

#include "plugin/body/Colour.h"
#include "plugin/gradients/gradient.h"
#include "plugin/input/LnStream.h"
#include "plugin/input/PostObjs.h"
#include "plugin/input/StrBuff.h"
#include "plugin/text/FontEncoding.h"
#include "plugin/text/VXText.h"

#include <vx/HostCall.h>

namespace vx
{

struct ParseContext;

using PaintProc = void (*)(ParseContext *context);

enum LoadedColour : int16_t { kNoColour = 0, kFillColour = 1, kStrokeColour = 2 };

// Entries 36 to 40 of the host's table, which non-printable layers replace.
constexpr int kSavedProcCount = 5;

struct LayerRecord {
    int32_t initialized; // savedProcs holds the host's entries
    int32_t printable;
    ZRKProc savedProcs[kSavedProcCount];
};

struct ParseContext {
    LineStream *lineStream;
    const MemoryProcs *memoryProcs;
    void *refCon; // the host's drawing
    ZRKProcs *procs;
    ReportProc problemProc; // or null
    uint8_t warnedPattern;  // these four: the problem was reported, or is not to be
    uint8_t warnedPostScript;
    uint8_t warnedOperator;
    uint8_t warnedBinary;
    uint8_t fontQuestionAsked; // it is asked once a parse, with warnings off as well
    uint8_t aborted;           // the user asked to stop
    StringBuffer *stringBuffer;
    PostScriptObjectBuffer *objectBuffer;
    PostScriptObjectList *operandStack;
    int16_t inHexString; // a HexState
    int16_t groupDepth;  // of compound paths; negative after an unmatched end
    int16_t clipPending; // the next painting of the path also makes it the clip
    int32_t fillOverprint;
    Fixed fillGray;
    CMYKColour fillCMYK;
    int32_t strokeOverprint;
    Fixed strokeGray;
    CMYKColour strokeCMYK;
    int16_t loadedColour;   // which colour the host holds
    PaintProc pendingPaint; // put off until the end of the group
    PaintProc fillPaint;
    PaintProc fillColour;
    PaintProc strokePaint;
    PaintProc strokeColour;
    TextAndFontState text;
    GradientState *gradientSetup;      // or null
    FontEncodingObject *encodingSetup; // or null
    LayerRecord layer;
    int32_t setupEnded; // "%%EndSetup" has been met
};

inline bool IsOutsideGroup(const ParseContext *context)
{
    return context->groupDepth == 0;
}
inline bool IsTextObjectOpen(const ParseContext *context)
{
    return context->text.object.type != kNoTextObject;
}

} // namespace vx
