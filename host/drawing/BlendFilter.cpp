#include "host/drawing/BlendFilter.h"

#include <utility>

namespace vxhost
{

void BlendFilter::BeginPage(const Page &page)
{
    Flushed()->BeginPage(page);
    clip_.Clear();
}

void BlendFilter::Save()
{
    Flushed()->Save();
}

void BlendFilter::Restore()
{
    Flushed()->Restore();
    clip_.Clear();
}

void BlendFilter::ClipPath(const Path &path)
{
    Flushed()->ClipPath(path);
    clip_ = path;
}

void BlendFilter::FillPath(const Path &path, const Paint &paint)
{
    if (!clip_.IsEmpty() && path == clip_) {
        Flushed();
        discs_.HoldGround(&clip_, paint);
        return;
    }
    // The path of a strip and that of a disc have five verbs, and few others do.
    constexpr size_t kStepVerbs = 5;
    if (path.verbs.size() == kStepVerbs) {
        const bool isStrip = path.verbs[1] == Verb::Line;
        if (!isStrip && !strips_.IsEmpty())
            strips_.Flush(device_);
        if (isStrip && !discs_.IsEmpty())
            discs_.Flush(device_);
        if (isStrip ? strips_.Add(path, paint, device_) : discs_.Add(path, paint, device_))
            return;
    }
    Flushed()->FillPath(path, paint);
}

void BlendFilter::StrokePath(const Path &path, const StrokeStyle &style, const Paint &paint)
{
    Flushed()->StrokePath(path, style, paint);
}

void BlendFilter::Shade(const Shading &shading)
{
    Flushed()->Shade(shading);
}

bool BlendFilter::CanShow(const TextFont &font)
{
    return device_->CanShow(font);
}

void BlendFilter::ShowText(std::span<const GlyphRun> runs, const TextPaint &paint)
{
    Flushed()->ShowText(runs, paint);
}

bool BlendFilter::PaintsGlyphs(const Matrix &emsToPage) const
{
    return device_->PaintsGlyphs(emsToPage);
}

void BlendFilter::BeginGlyphs(const Matrix &emsToPage, const Paint &paint)
{
    Flushed()->BeginGlyphs(emsToPage, paint);
}

void BlendFilter::FillGlyph(const Path &outline, uint64_t number, Point origin)
{
    device_->FillGlyph(outline, number, origin);
}

void BlendFilter::FlushBorders()
{
    for (const auto &border : borders_)
        border(device_);
    borders_.clear();
}

// A border between two steps does not tear a blend apart: it goes behind it.
void BlendFilter::AddBorder(std::function<void(Device *)> border)
{
    constexpr size_t kMostBorders = 1000;
    if ((strips_.IsEmpty() && discs_.IsEmpty()) || borders_.size() == kMostBorders)
        return border(Flushed());
    borders_.push_back(std::move(border));
}

void BlendFilter::BeginLayer(const Layer &layer)
{
    AddBorder([&layer](Device *device) { device->BeginLayer(layer); });
}

void BlendFilter::EndLayer()
{
    AddBorder([](Device *device) { device->EndLayer(); });
}

void BlendFilter::BeginGroup()
{
    AddBorder([](Device *device) { device->BeginGroup(); });
}

void BlendFilter::EndGroup()
{
    AddBorder([](Device *device) { device->EndGroup(); });
}

Failure BlendFilter::EndPage()
{
    return Flushed()->EndPage();
}

} // namespace vxhost
