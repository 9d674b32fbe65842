// Receives what a drawing says beyond its shapes, between the calls of the procedure table that it stands between.
#pragma once

#include "host/drawing/GlyphRun.h"
#include "host/drawing/Layer.h"
#include "host/drawing/Paint.h"
#include "host/drawing/SpotBlend.h"

namespace vxhost
{

class StructureSink
{
  public:
    StructureSink() = default;
    StructureSink(const StructureSink &) = delete;
    StructureSink &operator=(const StructureSink &) = delete;
    virtual ~StructureSink() = default;

    // Layers nest, and so do groups; both may be left open, or be ended where none has begun.
    virtual void BeginLayer(const Layer &layer) = 0;
    virtual void EndLayer() = 0;
    virtual void BeginGroup() = 0;
    virtual void EndGroup() = 0;
    // The spot ink is that of everything that is filled, or stroked, from now on in exactly its four inks.
    virtual void SetFillSpot(const SpotColour &spot) = 0;
    virtual void SetStrokeSpot(const SpotColour &spot) = 0;
    // The steps of a blend are filled from now on. It outlives the drawing. Null: they no longer are.
    virtual void SetFillBlend(const SpotBlend *blend) = 0;
    // Texts do not nest: one that begins, or a layer, ends the one before. Only who asks for them is told of them.
    virtual void BeginText(TextKind kind) = 0;
    virtual void BeginTextPath() = 0; // the text that follows goes along it, or into it
    virtual void EndText() = 0;
};

} // namespace vxhost
