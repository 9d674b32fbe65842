// Text as a device receives it that sets text itself: which glyphs of which font, and where each stands.
#pragma once

#include "host/drawing/Paint.h"
#include "host/drawing/Path.h"
#include "host/fonts/FontBytes.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vxhost
{

// A font that a document asks for. It lives as long as the parse, and is one object for each name asked for.
struct TextFont {
    std::string asked;     // as the document names it, without "/" and "_"
    std::string served;    // PostScript name of the font in the bytes
    SharedFontBytes bytes; // null: nothing serves it, and its characters are boxes
    int faceIndex = 0;     // the face in them, plus 65536 times the named variation
};

struct PlacedGlyph {
    uint32_t glyph = 0;     // of the font; 0 is the one that says "missing"
    char32_t character = 0; // what the glyph stands for
    double advance = 0;     // ems, along the line or down the column, spacing not counted
    Point origin;           // of the glyph, the left end of its baseline, on the page; in a column as well
};

// Characters of one font and one size, in reading order.
struct GlyphRun {
    const TextFont *font = nullptr;
    Matrix matrix;           // ems, y up, to the page; its translation is 0
    bool isColumn = false;   // upright glyphs, one below the other
    bool isRepeated = false; // it clips, and was painted before
    std::vector<PlacedGlyph> glyphs;
};

// How text is laid out: along a line from a point, along a path, or into an area.
enum class TextKind : uint8_t { Point, Path, Area };

// Tells the texts of a drawing apart, for whoever asks for it.
struct TextObject {
    uint64_t number = 0; // what is outside of any has one too
    uint64_t path = 0;   // which of the paths or areas that it fills
    TextKind kind = TextKind::Point;
};

// How text is painted: filled, then stroked, then made part of the clip, as far as asked for.
struct TextPaint {
    bool fills = false, strokes = false, clips = false;
    Paint paint;
    StrokeStyle style; // of a stroke; in the page's space, not the glyphs'
    TextObject object; // that it is a part of
};

} // namespace vxhost
