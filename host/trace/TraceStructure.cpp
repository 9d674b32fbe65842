#include "host/trace/TraceStructure.h"

#include <vx/Toolbox.h>

namespace vxhost
{

void TraceStructure::Write(std::string_view name)
{
    writer_->BeginCall(name);
    writer_->EndCall();
}

// The name and its flags, in the order of the operands.
void TraceStructure::BeginLayer(const Layer &layer)
{
    writer_->BeginCall("begin-layer");
    writer_->AddName(layer.name);
    for (const bool flag :
         {layer.isVisible, layer.isPreviewed, layer.isEnabled, layer.isPrinting, layer.isDimmed})
        writer_->AddInteger(flag ? 1 : 0);
    writer_->AddInteger(layer.colour);
    for (const uint8_t part : layer.rgb)
        writer_->AddInteger(part);
    writer_->EndCall();
}

// The kind as documents write it.
void TraceStructure::BeginText(TextKind kind)
{
    writer_->BeginCall("begin-text");
    writer_->AddInteger(static_cast<int32_t>(kind));
    writer_->EndCall();
}

void TraceStructure::WriteShare(const SpotShare &share)
{
    writer_->AddName(share.ink != nullptr ? share.ink->name : std::string());
    writer_->AddFixed(X2Fix(share.amount));
}

// The name, how much of the ink, and its four inks at full strength. No ink: nothing.
void TraceStructure::WriteSpot(std::string_view name, const SpotColour &spot)
{
    writer_->BeginCall(name);
    if (spot.share.ink != nullptr) {
        WriteShare(spot.share);
        for (const double part : spot.share.ink->alternate)
            writer_->AddFixed(X2Fix(part));
    }
    writer_->EndCall();
}

// From what to what each of its parts goes, in the order in which they are painted.
void TraceStructure::SetFillBlend(const SpotBlend *blend)
{
    writer_->BeginCall("set-fill-blend");
    for (const SpotBlend::Part &part : blend != nullptr ? blend->parts : std::vector<SpotBlend::Part>()) {
        WriteShare(part.from.share);
        WriteShare(part.to.share);
    }
    writer_->EndCall();
}

} // namespace vxhost
