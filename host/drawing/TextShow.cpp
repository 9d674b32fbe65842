#include "host/drawing/TextShow.h"

#include <algorithm>

namespace vxhost
{

namespace
{

constexpr uint8_t kSpace = ' ';
constexpr int32_t kPlacements = kZRKPlaceAt | kZRKMoveBy;

constexpr double FromFixed(Fixed value)
{
    return value / 65536.0;
}

Point FromFixed(const FixedPoint &point)
{
    return {FromFixed(point.x), FromFixed(point.y)};
}

// The vector that the matrix makes of one, without its translation.
Point MapVector(const Matrix &matrix, Point vector)
{
    return {matrix.a * vector.x + matrix.c * vector.y, matrix.b * vector.x + matrix.d * vector.y};
}

// The records' glyph space has its y axis down, outlines have theirs up.
Matrix UprightMatrix(const ZRKTextRecord &record)
{
    return {FromFixed(record.a), FromFixed(record.b), -FromFixed(record.c), -FromFixed(record.d), 0, 0};
}

struct Spacing {
    Point character;
    Point word;
};

Spacing SpacingOf(const ZRKTextRecord &record)
{
    Spacing spacing;
    if (record.spacing == nullptr)
        return spacing;
    if ((record.spacingKind & kZRKCharacterSpacing) != 0 && (record.placement & kZRKHasCharacterSpacing) != 0)
        spacing.character = FromFixed(record.spacing[0]);
    if ((record.spacingKind & kZRKWordSpacing) != 0 && (record.placement & kZRKHasWordSpacing) != 0)
        spacing.word = FromFixed(record.spacing[1]);
    return spacing;
}

} // namespace

void TextShow::Show(const ZRKTextRecord *first, int32_t mode)
{
    drawing_->CountShow();
    if (glyphs_ == nullptr)
        return;
    const char *font = nullptr;
    for (const ZRKTextRecord *record = first; record != nullptr; record = record->next) {
        // The records of one string share the name.
        if (record->fontName != font)
            glyphs_->BeginString(record->fontName);
        font = record->fontName;
        BuildRecord(*record);
        // Record by record, so that a stroke stands on the fill of its own characters.
        if ((mode & kZRKShowFill) != 0)
            drawing_->FillShape(record_);
        if ((mode & kZRKShowStroke) != 0)
            drawing_->StrokeShape(record_);
        if ((mode & kZRKShowClip) != 0)
            AddToClip();
    }
    if ((mode & kZRKShowClip) != 0) {
        drawing_->ClipToShape(clip_);
        drawing_->Budget().Give(clipBytes_);
        clipBytes_ = 0;
        clip_ = {};
    }
}

// A chain may be as long as the document.
void TextShow::AddToClip()
{
    const size_t bytes = record_.verbs.size() * sizeof(Verb) + record_.points.size() * sizeof(Point);
    drawing_->Budget().Take(bytes);
    clipBytes_ += bytes;
    clip_.verbs.insert(clip_.verbs.end(), record_.verbs.begin(), record_.verbs.end());
    clip_.points.insert(clip_.points.end(), record_.points.begin(), record_.points.end());
}

void TextShow::Place(const ZRKTextRecord &record)
{
    const Point at = {FromFixed(record.x), FromFixed(record.y)};
    switch (record.placement & kPlacements) {
    case kZRKPlaceAt:
        end_ = drawing_->UserToPage().Map(at);
        break;
    case kZRKMoveBy:
        Move(at);
        break;
    default:
        break;
    }
}

void TextShow::Move(Point byUser)
{
    const Point by = MapVector(drawing_->UserToPage(), byUser);
    end_ = {end_.x + by.x, end_.y + by.y};
}

void TextShow::BuildRecord(const ZRKTextRecord &record)
{
    record_.Clear();
    Place(record);
    const Matrix glyph = UprightMatrix(record);
    const Spacing spacing = SpacingOf(record);
    const bool isUpright = (record.placement & kZRKUprightInColumn) != 0;
    // Text goes on along the baseline, or down the column.
    const Point direction = isUpright ? Point{-glyph.c, -glyph.d} : Point{glyph.a, glyph.b};
    std::span<const uint8_t> text(record.text, static_cast<size_t>(std::max(record.length, 0)));
    while (!text.empty()) {
        if (text.front() == kSpace)
            Move(spacing.word);
        const Glyph next = glyphs_->Next(text, isUpright);
        if (next.outline != nullptr)
            AddOutline(*next.outline, Product(glyph, drawing_->UserToPage()));
        Move({direction.x * next.advance, direction.y * next.advance});
        Move(spacing.character);
        text = text.subspan(std::min(next.bytes, text.size()));
    }
}

void TextShow::AddOutline(const Path &outline, Matrix toPage)
{
    toPage.tx = end_.x;
    toPage.ty = end_.y;
    // A mirrored outline keeps the direction of its contours, so that all glyphs of a chain unite.
    if (toPage.a * toPage.d - toPage.b * toPage.c < 0) {
        AppendReversed(outline, toPage, &record_);
        return;
    }
    record_.verbs.insert(record_.verbs.end(), outline.verbs.begin(), outline.verbs.end());
    for (const Point &point : outline.points)
        record_.points.push_back(toPage.Map(point));
}

} // namespace vxhost
