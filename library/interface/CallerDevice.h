// Draws into the procedures of a program that calls vx.h.
#pragma once

#include "host/drawing/Device.h"

#include <vx.h>

#include <map>
#include <memory>
#include <vector>

struct vx_font_source; // holds a font as the program sees it, and what its outlines come from

namespace vxhost
{

// Throws CallError when one of the procedures wants the drawing to end.
class CallerDevice final : public Device
{
  public:
    explicit CallerDevice(const vx_device &device); // a whole record
    ~CallerDevice() override;

    void BeginPage(const Page &page) override;
    void Save() override;
    void Restore() override;
    void ClipPath(const Path &path) override;
    void FillPath(const Path &path, const Paint &paint) override;
    void StrokePath(const Path &path, const StrokeStyle &style, const Paint &paint) override;
    void Shade(const Shading &shading) override;
    bool CanShow(const TextFont &) override { return device_.text != nullptr; }
    void ShowText(std::span<const GlyphRun> runs, const TextPaint &paint) override;
    void BeginLayer(const Layer &layer) override;
    void EndLayer() override;
    void BeginGroup() override;
    void EndGroup() override;
    Failure EndPage() override;

  private:
    const vx_font *FontFor(const TextFont &font);
    vx_colour ColourFor(const Colour &colour);
    vx_paint PaintFor(const Paint &paint);

    vx_device device_;
    std::map<const TextFont *, std::unique_ptr<vx_font_source>> fonts_;
    std::map<const SpotInk *, vx_spot> spots_;
};

} // namespace vxhost
