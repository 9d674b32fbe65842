// A device for tests that writes down what it receives, leaving out what is as it starts.
//
//   fill M0 0 L9 0 Z gray 0.5 overprint
//   stroke M0 0 C1 1 2 2 3 3 width 2 cap 1 join 2 limit 4 dash 1 [3 2] matrix 2 0 0 2 0 0 cmyk 1 0 0 0
//   shade 9 0 0 9 0 0 to 0.1 gray 0 to 1 100 gray 0 .. gray 1
//   shade 9 0 0 9 0 0 0,0+1 0.1,0+0 to 1 3 gray 0 .. gray 0.03 overprint
#pragma once

#include "host/drawing/Device.h"

#include <functional>
#include <span>
#include <sstream>
#include <string>

namespace vxtest
{

class RecordingDevice final : public vxhost::Device
{
  public:
    std::string calls;             // joined with "; "
    std::function<void()> onPaint; // before each fill and stroke is written down
    vxhost::Failure endPageFailure;
    std::string canShow;       // the font, as it is asked for, that it sets itself
    bool paintsGlyphs = false; // each by itself

    void BeginPage(const vxhost::Page &page) override
    {
        Add("begin " + Number(page.box.Width()) + " " + Number(page.box.Height()));
    }
    void Save() override { Add("save"); }
    void Restore() override { Add("restore"); }
    void ClipPath(const vxhost::Path &path) override { Add("clip" + Text(path)); }
    void FillPath(const vxhost::Path &path, const vxhost::Paint &paint) override
    {
        if (onPaint)
            onPaint();
        Add("fill" + Text(path) + Text(paint));
    }
    void StrokePath(const vxhost::Path &path, const vxhost::StrokeStyle &style,
                    const vxhost::Paint &paint) override
    {
        if (onPaint)
            onPaint();
        Add("stroke" + Text(path) + Text(style) + Text(paint));
    }
    void Shade(const vxhost::Shading &shading) override
    {
        std::string text = "shade" + Text(shading.matrix);
        if (shading.kind == vxhost::ShadingKind::Radial)
            text += Text(shading.first) + Text(shading.last);
        double from = 0;
        for (const vxhost::ColourSpan &span : shading.spans) {
            text += from == span.from ? " to " + Number(span.to) : " and a gap";
            from = span.to;
            const size_t count = span.colours.size();
            if (count > 1)
                text += " " + std::to_string(count) + Text(span.colours[0]) + " ..";
            text += Text(span.colours.at(count - 1));
        }
        if (!shading.ground.IsEmpty())
            text += " around" + Text(shading.ground);
        Add(text + (shading.overprint ? " overprint" : ""));
    }
    bool CanShow(const vxhost::TextFont &font) override { return font.asked == canShow; }
    // text fill stroke clip Served 10 0 0 10 column 50@100,50+0.2 51@102,50+0.3 width 2
    void ShowText(std::span<const vxhost::GlyphRun> runs, const vxhost::TextPaint &how) override
    {
        std::string text = "text";
        text += std::string(how.fills ? " fill" : "") + (how.strokes ? " stroke" : "") +
                (how.clips ? " clip" : "");
        for (const vxhost::GlyphRun &run : runs) {
            text += " " + run.font->served;
            for (const double value : {run.matrix.a, run.matrix.b, run.matrix.c, run.matrix.d})
                text += " " + Number(value);
            text += run.isColumn ? " column" : "";
            for (const vxhost::PlacedGlyph &glyph : run.glyphs)
                text += " " + std::to_string(glyph.glyph) + "@" + Number(glyph.origin.x) + "," +
                        Number(glyph.origin.y) + "+" + Number(glyph.advance);
        }
        Add(text + (how.strokes ? Text(how.style) : "") + Text(how.paint));
    }
    bool PaintsGlyphs(const vxhost::Matrix &) const override { return paintsGlyphs; }
    // glyphs 10 0 0 10 0 0 gray 0.5; glyph 3 M0 0 L1 0 Z at 100 50
    void BeginGlyphs(const vxhost::Matrix &matrix, const vxhost::Paint &paint) override
    {
        Add("glyphs" + Text(matrix) + Text(paint));
    }
    void FillGlyph(const vxhost::Path &outline, uint64_t number, vxhost::Point origin) override
    {
        Add("glyph " + std::to_string(number) + Text(outline) + " at " + Number(origin.x) + " " +
            Number(origin.y));
    }
    vxhost::Failure EndPage() override
    {
        Add("end");
        return endPageFailure;
    }

  private:
    void Add(const std::string &call) { calls += (calls.empty() ? "" : "; ") + call; }

    static std::string Number(double value)
    {
        std::ostringstream text;
        text << value;
        return text.str();
    }

    static std::string Text(const vxhost::Path &path)
    {
        constexpr const char *kLetters = "MLCZ";
        constexpr size_t kPoints[] = {1, 1, 3, 0};
        std::string text;
        size_t next = 0;
        for (const vxhost::Verb verb : path.verbs) {
            const auto kind = static_cast<size_t>(verb);
            text += std::string(" ") + kLetters[kind];
            for (size_t i = 0; i < kPoints[kind]; ++i, ++next) {
                text += (i > 0 ? " " : "") + Number(path.points.at(next).x) + " " +
                        Number(path.points.at(next).y);
            }
        }
        return next == path.points.size() ? text : text + " and points too many";
    }

    static std::string Text(const vxhost::StrokeStyle &style)
    {
        const vxhost::StrokeStyle start;
        std::string text;
        if (style.width != start.width)
            text += " width " + Number(style.width);
        if (style.cap != start.cap)
            text += " cap " + std::to_string(static_cast<int>(style.cap));
        if (style.join != start.join)
            text += " join " + std::to_string(static_cast<int>(style.join));
        if (style.miterLimit != start.miterLimit)
            text += " limit " + Number(style.miterLimit);
        if (!style.dashes.empty() || style.dashPhase != 0) {
            text += " dash " + Number(style.dashPhase) + " [";
            for (const double length : style.dashes)
                text += (text.back() == '[' ? "" : " ") + Number(length);
            text += "]";
        }
        if (style.matrix != start.matrix) {
            text += " matrix" + Text(style.matrix);
        }
        return text;
    }

    static std::string Text(const vxhost::Matrix &m)
    {
        std::string text;
        for (const double value : {m.a, m.b, m.c, m.d, m.tx, m.ty})
            text += " " + Number(value);
        return text;
    }

    static std::string Text(const vxhost::Shading::Circle &circle)
    {
        return " " + Number(circle.centre.x) + "," + Number(circle.centre.y) + "+" + Number(circle.radius);
    }

    static std::string Text(const vxhost::Colour &colour)
    {
        const bool isGray = colour.space == vxhost::ColourSpace::Gray;
        std::string text = isGray ? " gray" : " cmyk";
        for (size_t ink = 0; ink < (isGray ? 1u : 4u); ++ink)
            text += " " + Number(colour.ink[ink]);
        for (const vxhost::SpotShare &share : colour.spots) {
            if (share.ink != nullptr)
                text += " " + share.ink->name + " " + Number(share.amount);
        }
        return text;
    }

    static std::string Text(const vxhost::Paint &paint)
    {
        const std::string text = paint.colour != vxhost::Colour() ? Text(paint.colour) : "";
        return text + (paint.overprint ? " overprint" : "");
    }
};

} // namespace vxtest
