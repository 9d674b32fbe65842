#include "plugin/gradients/Definitions.h"

#include "plugin/Memory.h"
#include "plugin/body/ParseContext.h"
#include "plugin/gradients/GradientNames.h"

#include <algorithm>
#include <cstring>

namespace vx
{

namespace
{

constexpr int32_t kDefinitionOperands = 3;
constexpr int32_t kMaxNameLength = kGradientNameSize - 1;

void CopyName(char *destination, const BigString *name, int32_t length)
{
    memcpy(destination, name->text, static_cast<size_t>(length));
    destination[length] = 0;
}

void AppendGradient(GradientState *state, GradientObject *gradient)
{
    if (state->lastGradient == nullptr)
        state->firstGradient = gradient;
    else
        state->lastGradient->next = gradient;
    state->lastGradient = gradient;
    gradient->index = state->gradientCount++;
}

// Radial gradients keep their stops in the order of the document; all others hold them back to front, on purpose:
// each is painted from the head of its list.
void AddStop(GradientObject *gradient, BlendStopObject *stop)
{
    ++gradient->stopsRead;
    if (gradient->firstStop == nullptr) {
        gradient->firstStop = stop;
        gradient->lastStop = stop;
    } else if (gradient->gradientType == kRadialGradient) {
        gradient->lastStop->next = stop;
        gradient->lastStop = stop;
    } else {
        stop->next = gradient->firstStop;
        gradient->firstStop = stop;
    }
}

bool PopCustomName(PostScriptObjectList *stack, BlendStopObject *stop)
{
    BigString name;
    if (!PopString(stack, &name))
        return false;
    CopyName(stop->customName, &name, std::min(name.length, kMaxNameLength));
    return true;
}

// False when the operands do not suit the kind; those taken until then stay in the stop.
bool PopStopColour(PostScriptObjectList *stack, BlendStopObject *stop)
{
    const int32_t operands = GetPostScriptObjectListLength(stack);
    StopColour *colour = &stop->colour;
    switch (stop->colorKind) {
    case kStopGray:
        return operands == 1 && PopFixed(stack, &colour->gray);
    case kStopCMYK:
        return operands == 4 && PopCMYK(stack, &colour->process);
    case kStopCustom:
        return operands == 6 && PopFixed(stack, &colour->tint) && PopCustomName(stack, stop) &&
               PopCMYK(stack, &colour->process);
    default:
        return true;
    }
}

} // namespace

Result Operator_Bd_Define_Begin(ParseContext *context)
{
    GradientState *state = context->gradientSetup;
    PostScriptObjectList *stack = context->operandStack;
    state->definitionClosed = kOpen;
    if (GetPostScriptObjectListLength(stack) != kDefinitionOperands)
        return kParserBadFormat;
    auto *gradient = AllocateBlock<GradientObject>(context->memoryProcs);
    if (gradient == nullptr)
        return kParserBadFormat;
    // From here on the list owns it, whatever its operands are.
    AppendGradient(state, gradient);
    BigString name;
    if (!PopInteger(stack, &gradient->stopCount) || !PopInteger(stack, &gradient->gradientType) ||
        !PopString(stack, &name) || name.length > kMaxNameLength)
        return kParserBadFormat;
    CopyName(gradient->name, &name, name.length);
    gradient->nameLength = name.length;
    AddGradientName(state, gradient);
    return kOk;
}

Result Operator_Bs_Define_Stop(ParseContext *context)
{
    PostScriptObjectList *stack = context->operandStack;
    GradientObject *gradient = context->gradientSetup->lastGradient;
    if (gradient == nullptr)
        return kParserBadFormat;
    auto *stop = AllocateBlock<BlendStopObject>(context->memoryProcs);
    if (stop == nullptr)
        return kParserBadFormat;
    AddStop(gradient, stop);
    if (!PopFixed(stack, &stop->rampPoint) || !PopFixed(stack, &stop->midPoint) ||
        !PopInteger(stack, &stop->colorKind))
        return kParserBadFormat;
    (void)PopStopColour(stack, stop); // what is missing of a colour is 0
    return kOk;
}

Result Operator_BD_Define_End(ParseContext *context)
{
    context->gradientSetup->definitionClosed = kClosed;
    return kOk;
}

} // namespace vx
