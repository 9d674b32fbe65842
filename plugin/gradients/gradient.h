// Gradients: the definitions of the setup section, and the instance that the body is painting.
//
// Owns the records and the dispatch of the gradient operators. GradientState is made before the body and released
// after it, with all that it lists, by the setup module; without it the gradient operators fail.
#pragma once

#include "plugin/Result.h"
#include "plugin/body/Colour.h"

#include <vx/Types.h>

namespace vx
{

struct ParseContext;

constexpr int32_t kGradientNameSize = 100; // with the terminator
constexpr int32_t kMaxSegmentMatrices = 31;
constexpr int32_t kHighlightValues = 4;
constexpr int32_t kGeometryValues = 4;
constexpr Fixed kHundredPercent = IntegerToFixed(100); // of a stop's two points

// Any other type is painted as radial, but lists its stops as linear does.
enum GradientType : int32_t { kLinearGradient = 0, kRadialGradient = 1 };

// How the colour of a stop is written. Kinds without a name are painted as kStopNoColour is.
enum StopColourKind : int32_t {
    kStopGray = 0,
    kStopCMYK = 1,
    kStopNoColour = 2,
    kStopCustom = 3,
    kStopBlank = 4,
};

// Only what the kind of colour calls for is set; the rest is 0.
struct StopColour {
    Fixed gray; // 0 black to 1.0 white
    CMYKColour process;
    Fixed tint; // of a custom colour: 0 full strength to 1.0 nothing
};

struct BlendStopObject {
    BlendStopObject *next;
    Fixed rampPoint; // percent along the gradient
    Fixed midPoint;  // percent of the way to the following stop at which the colour is half-way
    int32_t colorKind;
    StopColour colour;
    char customName[kGradientNameSize];
};

struct GradientObject {
    GradientObject *next;
    char name[kGradientNameSize];
    int32_t nameLength;
    int32_t gradientType;
    int32_t stopCount; // as declared
    int32_t stopsRead;
    BlendStopObject *firstStop;
    BlendStopObject *lastStop;
    int32_t index;   // in the list, from 0
    int32_t forkBit; // these two: its place in the tree of names, see GradientNames
    GradientObject *branches[2];
};

// The two "closed" fields: 0 inside a definition or an instance, anything else outside.
enum ClosedFlag : int32_t { kOpen = 0, kClosed = 1, kNeverOpened = 222 };

enum InstancePhase : int32_t { kInstanceBound = 1, kInstanceUnbound = 2 };

struct GradientState {
    int32_t gradientCount;
    int32_t lookupIndex; // where the last look-up of a name ended
    int32_t definitionClosed;
    int32_t instanceClosed;
    int32_t instanceType;
    GradientObject *instanceGradient;
    int32_t instanceFlag;
    Fixed instanceGeometry[kGeometryValues];
    int32_t instancePhase;
    FixedMatrix instanceMatrix;
    int32_t clipMatrixCount; // 0 or 1: only the first is counted
    FixedMatrix clipMatrix[2];
    int32_t segmentMatrixCount;
    FixedMatrix segmentMatrix[kMaxSegmentMatrices];
    Fixed highlight[kHighlightValues];
    GradientObject *firstGradient;
    GradientObject *lastGradient;
    GradientObject *nameTree; // null before a gradient has a name
};

// The state comes zero-filled.
inline void InitializeGradientState(GradientState *state)
{
    state->definitionClosed = kNeverOpened;
    state->instanceClosed = kNeverOpened;
}

// state may be null.
inline bool IsInGradientDefinition(const GradientState *state)
{
    return state != nullptr && state->definitionClosed == kOpen;
}
inline bool IsInGradientInstance(const GradientState *state)
{
    return state != nullptr && state->instanceClosed == kOpen;
}

// Runs the gradient operator that has the first character of operatorText after its "B". Until the setup section has
// ended only the operators of definitions do anything, after that only those of instances. The context must have a
// gradient state.
Result ParseGradientData(const char *operatorText, ParseContext *context);

} // namespace vx
