// Shows chains of text records: characters from a glyph source, placed, then handed to the device as runs of glyphs,
// where it can set their font, and else as shapes.
//
// Owns the point where the previous text ended. It lies on the page and is no part of the graphics state.
#pragma once

#include "host/drawing/Drawing.h"
#include "host/drawing/GlyphSource.h"

#include <vx/TextRecord.h>

#include <deque>
#include <string>
#include <vector>

namespace vxhost
{

class TextShow
{
  public:
    // glyphs may be null: text is counted and not drawn. Both must outlive this object.
    TextShow(Drawing *drawing, GlyphSource *glyphs) : drawing_(drawing), glyphs_(glyphs) {}

    void Show(const ZRKTextRecord *first, int32_t mode);

  private:
    // A string that was painted, which the chain that clips at the end of its text object may hold again.
    struct PaintedString {
        size_t hash;  // of its font's name and its text
        Point place;  // on the page
        Point end;    // of its last record
        bool isWhole; // it is one record, so that nothing but its characters makes its length
    };

    const TextFont *FindFontToShow(const char *name) const;
    bool CanShowAll(const ZRKTextRecord *first) const;
    Point PlaceOf(const ZRKTextRecord &record) const;
    void BeginString(const ZRKTextRecord &first, int32_t mode, bool beginsChain);
    bool TakePainted(const PaintedString &clipped, const ZRKTextRecord &first, bool beginsChain);
    PaintedString Describe(const ZRKTextRecord &first);
    bool IsMoved(const PaintedString &painted, const ZRKTextRecord &clipped, Point by) const;
    void BuildRecord(const ZRKTextRecord &record, const TextFont *font, int32_t mode);
    void AddOutline(const Path &outline, Matrix toPage);
    void BeginRun(const TextFont *font, const Matrix &matrix, bool isColumn, int32_t mode);
    void AddToRun(const Glyph &glyph);
    void ShowRuns(int32_t mode);
    void ShowShape(int32_t mode);
    void AddToClip();
    void ClipToChain();
    void TakeBytes(size_t bytes);
    void Move(Point byUser);

    Drawing *drawing_;
    GlyphSource *glyphs_;
    bool isRepeated_ = false;           // the string that clips was painted before
    Point end_;                         // of the previous text, on the page
    std::string string_;                // the text whose hash is taken; keeps its storage
    Path record_;                       // of the record being shown; keeps its storage
    Path clip_;                         // of the chain so far
    std::vector<GlyphRun> runs_;        // not yet shown: one, or all of a chain that clips
    size_t chainBytes_ = 0;             // what the runs and the clip have taken of the budget
    std::deque<PaintedString> painted_; // the last ones since a chain clipped
    Point drift_;                       // of the chain that clips, from where its strings were painted
};

} // namespace vxhost
