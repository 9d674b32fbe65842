#include "devices/pdf/MissingGlyphs.h"

#include "host/fonts/FontFile.h"

#include <algorithm>
#include <memory>

namespace vxhost::pdf
{

namespace
{

bool IsMissing(const PlacedGlyph &glyph)
{
    return glyph.glyph == 0;
}

void AppendGlyphs(const GlyphRun &run, Path *to)
{
    const std::unique_ptr<FontFile> font =
        run.glyphs.empty() ? nullptr : FontFile::Open(run.font->bytes, run.font->faceIndex);
    if (font == nullptr)
        return;
    Matrix toPage = run.matrix;
    for (const PlacedGlyph &glyph : run.glyphs) {
        toPage.tx = glyph.origin.x;
        toPage.ty = glyph.origin.y;
        AppendOutline(font->Outline(glyph.glyph), toPage, to);
    }
}

} // namespace

bool LacksGlyphs(std::span<const GlyphRun> runs)
{
    return std::ranges::any_of(
        runs, [](const GlyphRun &run) { return std::ranges::any_of(run.glyphs, IsMissing); });
}

TextAndShapes TakeMissingOut(std::span<const GlyphRun> runs)
{
    TextAndShapes parts;
    for (const GlyphRun &run : runs) {
        GlyphRun missing = run, text = run;
        std::erase_if(missing.glyphs, [](const PlacedGlyph &glyph) { return !IsMissing(glyph); });
        std::erase_if(text.glyphs, IsMissing);
        AppendGlyphs(missing, &parts.shapes);
        if (!text.glyphs.empty())
            parts.runs.push_back(std::move(text));
    }
    return parts;
}

Path OutlinesOf(std::span<const GlyphRun> runs)
{
    Path outlines;
    for (const GlyphRun &run : runs)
        AppendGlyphs(run, &outlines);
    return outlines;
}

} // namespace vxhost::pdf
