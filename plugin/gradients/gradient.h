// Gradients: the definitions of the setup section, and the instance that the body is painting.
//
// GradientState is made before the body and released after it by the setup module; without it the gradient
// operators fail.
#pragma once

#include "plugin/Result.h"

#include <vx/Types.h>

namespace vx
{

struct ParseContext;

constexpr int32_t kGradientNameSize = 100; // with the terminator
constexpr int32_t kMaxSegmentMatrices = 31;

enum StopColour : int32_t { kStopGray = 0, kStopCMYK = 1, kStopPlain = 2, kStopCustom = 3 };

struct BlendStopObject {
    BlendStopObject *next;
    Fixed rampPoint; // percent along the gradient
    Fixed midPoint;  // percent of the way to the following stop at which the colour is half-way
    int32_t colorKind;
    Fixed gray;
    Fixed cyan, magenta, yellow, black;
    Fixed tint;
    char customName[kGradientNameSize];
};

struct GradientObject {
    GradientObject *next;
    char name[kGradientNameSize];
    int32_t nameLength;
    int32_t gradientType; // 0 linear, any other radial
    int32_t stopCount;    // as declared
    int32_t stopsRead;
    BlendStopObject *firstStop;
    BlendStopObject *lastStop;
};

// The two "closed" fields: 0 inside a definition or an instance, anything else outside.
constexpr int32_t kNeverOpened = 222;

struct GradientState {
    int32_t gradientCount;
    int32_t lookupIndex;
    int32_t definitionClosed;
    int32_t instanceClosed;
    int32_t instanceType;
    GradientObject *instanceGradient;
    int32_t instanceFlag;
    Fixed instanceGeometry[4];
    int32_t instancePhase;
    FixedMatrix instanceMatrix;
    int32_t clipMatrixCount;
    FixedMatrix clipMatrix[2];
    int32_t segmentMatrixCount;
    FixedMatrix segmentMatrix[kMaxSegmentMatrices];
    Fixed highlight[4];
    GradientObject *firstGradient;
    GradientObject *lastGradient;
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
    return state != nullptr && state->definitionClosed == 0;
}
inline bool IsInGradientInstance(const GradientState *state)
{
    return state != nullptr && state->instanceClosed == 0;
}

// Runs the gradient operator whose text after the "B" begins with operatorText. Gradients are not painted yet:
// every operator is taken and does nothing.
Result ParseGradientData(const char *operatorText, ParseContext *context);

} // namespace vx
