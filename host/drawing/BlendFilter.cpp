#include "host/drawing/BlendFilter.h"

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

Failure BlendFilter::EndPage()
{
    return Flushed()->EndPage();
}

} // namespace vxhost
