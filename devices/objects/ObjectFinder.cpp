#include "devices/objects/ObjectFinder.h"

#include "devices/preflight/Extents.h"
#include "host/drawing/Vectors.h"
#include "host/fonts/FontFile.h"
#include "host/reading/Utf8.h"

#include <array>

namespace vxhost
{

namespace
{

Path RectangleOf(const Box &box)
{
    return {{Verb::Move, Verb::Line, Verb::Line, Verb::Line, Verb::Close},
            {{box.left, box.bottom}, {box.right, box.bottom}, {box.right, box.top}, {box.left, box.top}}};
}

double SizeOf(const GlyphRun &run)
{
    return Length(Point{run.matrix.c, run.matrix.d});
}

std::string TextOf(const GlyphRun &run)
{
    std::string text;
    for (const PlacedGlyph &glyph : run.glyphs) {
        std::array<char, 4> utf8;
        text.append(utf8.data(), WriteUtf8(glyph.character, utf8.data()));
    }
    return text;
}

} // namespace

ObjectFinder::ObjectFinder(Point at, double within) : at_(at), within_(within) {}

ObjectFinder::~ObjectFinder() = default;

void ObjectFinder::BeginPage(const Page &)
{
    probe_ = PointProbe::Make(at_, within_);
    clips_.assign(1, kEverywhere);
    layers_.clear();
    found_.reset();
}

void ObjectFinder::Save()
{
    probe_->Save();
    clips_.push_back(clips_.back());
}

void ObjectFinder::Restore()
{
    probe_->Restore();
    clips_.pop_back();
}

void ObjectFinder::ClipPath(const Path &path)
{
    probe_->ClipPath(path);
    clips_.back() = Intersection(clips_.back(), ExtentOf(path));
}

bool ObjectFinder::IsNear(const Box &box, double by) const
{
    const Box near = Grown(Intersection(box, clips_.back()), by + within_);
    return near.left <= at_.x && at_.x <= near.right && near.bottom <= at_.y && at_.y <= near.top;
}

void ObjectFinder::Find(ObjectKind kind, const Box &extent, const Paint &paint)
{
    FoundObject &found = found_.emplace();
    found.kind = kind;
    found.paint = paint;
    for (size_t i = 0; i < inks_.size(); ++i) {
        SpotShare &share = found.paint.colour.spots[i];
        if (share.ink != nullptr)
            share.ink = &(inks_[i] = *share.ink); // the drawing's own end with it
    }
    found.box = Intersection(extent, clips_.back());
    if (!layers_.empty())
        found.layer = *layers_.back();
}

void ObjectFinder::FillPath(const Path &path, const Paint &paint)
{
    const Box extent = ExtentOf(path);
    if (IsNear(extent, 0) && probe_->IsFilled(path))
        Find(ObjectKind::Fill, extent, paint);
}

void ObjectFinder::StrokePath(const Path &path, const StrokeStyle &style, const Paint &paint)
{
    const double width = WidthsOf(style).wide;
    const double corner = style.join == LineJoin::Miter ? std::max(style.miterLimit, 1.0) : 1;
    const Box line = ExtentOf(path);
    if (!IsNear(Grown(line, width * corner), 0) || !probe_->IsStroked(path, style))
        return;
    Find(ObjectKind::Stroke, Grown(line, width / 2), paint);
    found_->lineWidth = width;
}

// A point has the colour of the last of the flat shapes that lie there.
void ObjectFinder::Shade(const Shading &shading)
{
    const Box extent = ExtentOf(shading);
    if (!IsNear(extent, 0))
        return;
    const std::optional<FoundObject> below = std::exchange(found_, std::nullopt);
    PaintAsShapes(shading, this);
    if (found_)
        Find(ObjectKind::Blend, extent, Paint(found_->paint));
    else
        found_ = below;
}

// Returns the shape on the page; a glyph of a font that is not there is a box.
Path ObjectFinder::OutlineOf(const GlyphRun &run, const PlacedGlyph &glyph)
{
    const auto [font, isNew] = fonts_.try_emplace(run.font);
    if (isNew)
        font->second = FontFile::Open(run.font->bytes, run.font->faceIndex);
    if (font->second == nullptr)
        return RectangleOf(ExtentOf(run, glyph));
    Path outline;
    const Matrix &m = run.matrix;
    AppendOutline(font->second->Outline(glyph.glyph), {m.a, m.b, m.c, m.d, glyph.origin.x, glyph.origin.y},
                  &outline);
    return outline;
}

bool ObjectFinder::IsHit(const GlyphRun &run, const TextPaint &paint)
{
    const double reach = SizeOf(run) + (paint.strokes ? WidthsOf(paint.style).wide : 0);
    for (const PlacedGlyph &glyph : run.glyphs) {
        if (!IsNear(ExtentOf(run, glyph), reach))
            continue;
        const Path outline = OutlineOf(run, glyph);
        if ((paint.fills && probe_->IsFilled(outline)) ||
            (paint.strokes && probe_->IsStroked(outline, paint.style)))
            return true;
    }
    return false;
}

void ObjectFinder::ShowText(std::span<const GlyphRun> runs, const TextPaint &paint)
{
    Path clip;
    for (const GlyphRun &run : runs) {
        if (!run.isRepeated && IsHit(run, paint)) {
            Box box = kNoBox;
            for (const PlacedGlyph &glyph : run.glyphs)
                box = Union(box, ExtentOf(run, glyph));
            Find(ObjectKind::Text, box, paint.paint);
            found_->text = TextOf(run);
            found_->font = run.font->asked;
            found_->served = run.font->served;
            found_->size = SizeOf(run);
        }
        for (const PlacedGlyph &glyph : run.glyphs) {
            if (paint.clips)
                AppendOutline(OutlineOf(run, glyph), Matrix(), &clip);
        }
    }
    if (paint.clips)
        ClipPath(clip);
}

Failure ObjectFinder::EndPage()
{
    if (probe_->IsOutOfMemory())
        return {FailureKind::OutOfMemory};
    return {};
}

} // namespace vxhost
