// Where text gets its characters: what a drawing asks of fonts, and no more.
//
// Free of font libraries, so that text is placed and tested without one.
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
    size_t bytes = 1;              // that it takes, 1 or more
    double advance = 0;            // ems
    uint32_t glyph = 0;            // of the string's font; 0: that of a missing character
    char32_t character = 0;        // 0: nothing to show, a control code
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

    // Opens what serves that name; null: nothing does, its characters are boxes. Valid as long as this object.
    virtual const TextFont *OpenFont(std::string_view fontName) = 0;
    // Begins a string in that font. isNew: it is counted, since it is none that was painted already and now clips.
    virtual void BeginString(std::string_view fontName, bool isNew) = 0;
    // The first character of text, which is not empty. isUpright: in its form for a column.
    virtual Glyph Next(std::span<const uint8_t> text, bool isUpright) = 0;

    // In the order of their first strings.
    virtual std::vector<FontUse> FontsUsed() const = 0;
};

} // namespace vxhost
