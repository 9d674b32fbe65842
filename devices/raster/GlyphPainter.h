// Paints glyphs, each in its own frame, with what was kept of those that came before.
#pragma once

#include "devices/raster/Clip.h"
#include "devices/raster/GlyphCache.h"
#include "devices/raster/Surface.h"

#include <vector>

namespace vxhost::raster
{

class GlyphPainter
{
  public:
    // Begins a page whose pixels have so many samples a side. It holds maxBytes at most; 0: every glyph is made anew. The cap
    // must outlive this page's glyphs.
    void Reset(int samples, size_t maxBytes, MemoryCap *cap);

    // Whether glyphs under that matrix have frames of their own; larger ones are painted as other shapes are.
    bool CanPaint(const Matrix &emsToSamples) const;
    void Begin(const Matrix &emsToSamples, const Ink &ink);
    // Paints a glyph, or whatever outline has that number on this page; 0: it is not to be kept. False, and nothing painted,
    // for an outline that reaches too far from its origin.
    bool Paint(const Path &outline, uint64_t number, Point origin, const Clip &clip, Surface *surface);

  private:
    struct Target {
        GlyphPlace place;
        const Clip *clip;
        Surface *surface;
    };
    bool PaintFresh(const Path &outline, const Target &target);
    bool PaintKept(const Path &outline, const Target &target, KeptGlyph *glyph);
    void PaintSpans(const GlyphSpans &spans, const Target &target);
    void PaintMasks(const GlyphSpans &spans, const Target &target);

    int shift_ = 0;
    bool keeps_ = false;
    Matrix matrix_;
    Ink ink_;
    GlyphCache cache_;
    GlyphScanner scanner_;
    GlyphShape shape_; // of a glyph that is not kept, with its spans
    GlyphSpans spans_;
    MaskFinder finder_;
    GlyphMasks masks_;
    std::vector<Span> placed_; // the spans of a glyph at its place
    std::vector<uint32_t> placedEnds_;
};

} // namespace vxhost::raster
