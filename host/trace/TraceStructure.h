// Prints what a drawing says beyond its shapes, as lines among its calls.
//
//   begin-layer (Ground) 1 1 1 1 0 0 79 128 255
//   set-fill-spot (Warm Red) 0.75 0 0.8 0.9 0
//   set-fill-blend (Warm Red) 1 (Moss) 0.5 (Moss) 0.5 () 0
#pragma once

#include "host/drawing/StructureSink.h"
#include "host/trace/TraceTable.h"

namespace vxhost
{

class TraceStructure final : public StructureSink
{
  public:
    explicit TraceStructure(TraceWriter *writer) : writer_(writer) {}

    void BeginLayer(const Layer &layer) override;
    void EndLayer() override { Write("end-layer"); }
    void BeginGroup() override { Write("begin-group"); }
    void EndGroup() override { Write("end-group"); }
    void SetFillSpot(const SpotColour &spot) override { WriteSpot("set-fill-spot", spot); }
    void SetStrokeSpot(const SpotColour &spot) override { WriteSpot("set-stroke-spot", spot); }
    void SetFillBlend(const SpotBlend *blend) override;
    void BeginText(TextKind kind) override;
    void BeginTextPath() override { Write("begin-text-path"); }
    void EndText() override { Write("end-text"); }

  private:
    void Write(std::string_view name);
    void WriteSpot(std::string_view name, const SpotColour &spot);
    void WriteShare(const SpotShare &share);

    TraceWriter *writer_;
};

} // namespace vxhost
