// Text without the glyph that says "missing": the standards of archives take no text that shows it, and a shape that looks
// like it is none.
#pragma once

#include "host/drawing/GlyphRun.h"

#include <span>
#include <vector>

namespace vxhost::pdf
{

struct TextAndShapes {
    std::vector<GlyphRun> runs;
    Path shapes;
};

// Returns whether one of the glyphs says "missing".
bool LacksGlyphs(std::span<const GlyphRun> runs);

// Takes the runs apart: what can be text, and the outlines on the page of the glyphs that say "missing".
TextAndShapes TakeMissingOut(std::span<const GlyphRun> runs);

// Returns the outlines of all glyphs.
Path OutlinesOf(std::span<const GlyphRun> runs);

} // namespace vxhost::pdf
