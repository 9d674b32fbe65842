// Where text gets its characters: what a drawing asks of fonts, and no more.
//
// It is free of font libraries, so that text is placed and tested without one.
#pragma once

#include "host/Outcome.h"
#include "host/drawing/GlyphRun.h"
#include "host/drawing/Path.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace vxhost
{

// One character taken off a text.
struct Glyph {
    size_t bytes = 1;              // how many it takes, 1 or more
    double advance = 0;            // ems
    uint32_t glyph = 0;            // of the string's font; 0: that of a missing character
    char32_t character = 0;        // 0: nothing to show, a control code
    uint64_t outlineNumber = 0;    // of the source: the same is the same outline; 0: not told
    const Path *outline = nullptr; // ems, y up, from the left end of the baseline, outer contours
                                   // anticlockwise; null: nothing to paint. Valid until the next call
};

class GlyphSource
{
  public:
    GlyphSource() = default;
    GlyphSource(const GlyphSource &) = delete;
    GlyphSource &operator=(const GlyphSource &) = delete;
    virtual ~GlyphSource() = default;

    // Opens the font that serves that name; one without bytes, or null: none does, and its characters are boxes. Valid as
    // long as this object.
    virtual const TextFont *OpenFont(std::string_view fontName) = 0;
    // Begins a string in that font. It is counted if isNew: one that was painted before and now clips is not.
    virtual void BeginString(std::string_view fontName, bool isNew) = 0;
    // The first character of text, which is not empty; if isUpright, in its form for a column.
    virtual Glyph Next(std::span<const uint8_t> text, bool isUpright) = 0;

    // The fonts that strings began in, in the order of their first ones.
    virtual std::vector<FontUse> FontsUsed() const = 0;
};

} // namespace vxhost
