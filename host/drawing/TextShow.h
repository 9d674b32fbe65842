// Shows chains of text records: characters from a glyph source, placed, then painted as shapes.
//
// Owns the point where the previous text ended. It lies on the page and is no part of the graphics state.
#pragma once

#include "host/drawing/Drawing.h"
#include "host/drawing/GlyphSource.h"

#include <vx/TextRecord.h>

namespace vxhost
{

class TextShow
{
  public:
    // glyphs may be null: text is counted and not drawn. Both must outlive this object.
    TextShow(Drawing *drawing, GlyphSource *glyphs) : drawing_(drawing), glyphs_(glyphs) {}

    void Show(const ZRKTextRecord *first, int32_t mode);

  private:
    void Place(const ZRKTextRecord &record);
    void BuildRecord(const ZRKTextRecord &record);
    void AddOutline(const Path &outline, Matrix toPage);
    void AddToClip();
    void Move(Point byUser);

    Drawing *drawing_;
    GlyphSource *glyphs_;
    Point end_;   // of the previous text, on the page
    Path record_; // of the record being shown; keeps its storage
    Path clip_;   // of the chain so far
    size_t clipBytes_ = 0;
};

} // namespace vxhost
