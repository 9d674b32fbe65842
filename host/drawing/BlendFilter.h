// Blend filter: stands before a device and gives it each blend as one shading.
//
// Documents paint blends as runs of strips and discs of flat colour. Those that step one blend are held back until the
// run ends and go on as one; everything else goes on as it came, in its order.
#pragma once

#include "host/drawing/DiscBlend.h"
#include "host/drawing/StripBlend.h"

#include <functional>
#include <vector>

namespace vxhost
{

class BlendFilter final : public Device
{
  public:
    explicit BlendFilter(Device *device) : device_(device) {}

    void BeginPage(const Page &page) override;
    void Save() override;
    void Restore() override;
    void ClipPath(const Path &path) override;
    void FillPath(const Path &path, const Paint &paint) override;
    void StrokePath(const Path &path, const StrokeStyle &style, const Paint &paint) override;
    void Shade(const Shading &shading) override;
    bool CanShow(const TextFont &font) override;
    void ShowText(std::span<const GlyphRun> runs, const TextPaint &paint) override;
    bool PaintsGlyphs(const Matrix &emsToPage) const override;
    void BeginGlyphs(const Matrix &emsToPage, const Paint &paint) override;
    void FillGlyph(const Path &outline, uint64_t number, Point origin) override;
    void BeginLayer(const Layer &layer) override;
    void EndLayer() override;
    void BeginGroup() override;
    void EndGroup() override;
    Failure EndPage() override;

  private:
    // Flushes what is held back, and returns the device for what is no further step.
    Device *Flushed()
    {
        if (!strips_.IsEmpty())
            strips_.Flush(device_);
        if (!discs_.IsEmpty())
            discs_.Flush(device_);
        if (!borders_.empty())
            FlushBorders();
        return device_;
    }
    void FlushBorders();
    void AddBorder(std::function<void(Device *)> border);

    Device *device_;
    // Only one of the two holds something back at a time.
    StripBlend strips_;
    DiscBlend discs_;
    std::vector<std::function<void(Device *)>>
        borders_; // of layers and groups, between steps that were held back
    Path clip_;   // the innermost one, as long as that is known; keeps its storage
};

} // namespace vxhost
