#include "host/drawing/TextShow.h"

#include "host/drawing/FromFixed.h"
#include "host/drawing/Vectors.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <string>
#include <utility>

namespace vxhost
{

namespace
{

constexpr uint8_t kSpace = ' ';
constexpr int32_t kPaints = kZRKShowFill | kZRKShowStroke | kZRKShowClip;
constexpr int32_t kPlacements = kZRKPlaceAt | kZRKMoveBy;
constexpr size_t kMaxPainted = 1024;   // strings of one text object that also clip; real ones have a few
constexpr double kSamePlace = 0.05;    // points; places are summed up in two ways
constexpr double kMaxRise = 1;         // ems; lines are farther apart
constexpr size_t kMaxRunGlyphs = 1024; // devices stream: a run need not be longer than a line

// The records' glyph space has its y axis down, outlines have theirs up.
Matrix UprightMatrix(const ZRKTextRecord &record)
{
    return {FromFixed(record.a), FromFixed(record.b), -FromFixed(record.c), -FromFixed(record.d), 0, 0};
}

Matrix WithoutTranslation(Matrix matrix)
{
    matrix.tx = matrix.ty = 0;
    return matrix;
}

bool IsPlaced(const ZRKTextRecord &record)
{
    return (record.placement & kPlacements) == kZRKPlaceAt;
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
    const bool clips = (mode & kZRKShowClip) != 0;
    drawing_->CountShow();
    if (glyphs_ == nullptr)
        return;
    // A text that clips is one shape, so it is shown in one way, as runs or as shapes.
    const bool showsShapes = clips && !CanShowAll(first);
    const char *name = nullptr;
    const TextFont *font = nullptr;
    for (const ZRKTextRecord *record = first; record != nullptr; record = record->next) {
        // The records of one string share the name.
        if (record->fontName != name) {
            name = record->fontName;
            BeginString(*record, mode, record == first);
            font = showsShapes ? nullptr : FindFontToShow(name);
        }
        BuildRecord(*record, font, mode);
        if (!clips && !painted_.empty())
            painted_.back().end = end_;
    }
    if (clips)
        painted_.clear();
    if (!clips || !runs_.empty())
        ShowRuns(mode);
    else
        ClipToChain();
}

// Text may be painted, and then be part of the clip that its object ends with: one string, shown twice.
void TextShow::BeginString(const ZRKTextRecord &first, int32_t mode, bool beginsChain)
{
    const PaintedString string = Describe(first);
    const bool clips = (mode & kZRKShowClip) != 0;
    isRepeated_ = clips && TakePainted(string, first, beginsChain);
    glyphs_->BeginString(first.fontName, !isRepeated_);
    if (clips)
        return;
    if (painted_.size() == kMaxPainted)
        painted_.pop_front();
    painted_.push_back(string);
}

TextShow::PaintedString TextShow::Describe(const ZRKTextRecord &first)
{
    std::string &text = string_;
    text = first.fontName;
    const ZRKTextRecord *record = &first;
    for (; record != nullptr && record->fontName == first.fontName; record = record->next)
        text.append(reinterpret_cast<const char *>(record->text),
                    static_cast<size_t>(std::max(record->length, 0)));
    // A column that clips in pieces of two bytes may end in the NUL behind its text.
    text.erase(text.find_last_not_of('\0') + 1);
    const Point place = PlaceOf(first);
    return {std::hash<std::string>()(text), place, place, first.next == record};
}

// True when the string that clips was painted before; its record of that is used up.
bool TextShow::TakePainted(const PaintedString &clipped, const ZRKTextRecord &first, bool beginsChain)
{
    // A string that goes on from text that does not clip has no place to compare.
    const bool isAnywhere = beginsChain && !IsPlaced(first);
    if (beginsChain || IsPlaced(first))
        drift_ = {};
    const auto shift = [&](const PaintedString &painted) { return painted.place + drift_ - clipped.place; };
    const auto isThere = [&](const PaintedString &painted) {
        return painted.hash == clipped.hash && Length(shift(painted)) < kSamePlace;
    };
    const auto isMoved = [&](const PaintedString &painted) {
        return painted.hash == clipped.hash && (isAnywhere || IsMoved(painted, first, shift(painted)));
    };
    auto found = std::ranges::find_if(painted_, isThere);
    if (found == painted_.end())
        found = std::ranges::find_if(painted_, isMoved);
    if (found == painted_.end())
        return false;
    if (isAnywhere)
        drift_ = clipped.place - found->place;
    painted_.erase(found);
    return true;
}

// Whether a string may have been painted so far away from where it clips. Alignment moves what is painted back along
// its line, by all or half of its length. The rise moves both across the line, but not alike: a column's to opposite
// sides, and that of strings that go on from each other adds up where they clip.
bool TextShow::IsMoved(const PaintedString &painted, const ZRKTextRecord &clipped, Point by) const
{
    const Matrix glyph = Product(UprightMatrix(clipped), drawing_->UserToPage());
    const Point line = painted.end - painted.place;
    Point along = {glyph.a, glyph.b}, across = {glyph.c, glyph.d};
    if (std::abs(Dot(across, line)) * Length(along) > std::abs(Dot(along, line)) * Length(across))
        std::swap(along, across); // a column
    const double area = Cross(along, across), em = Length(along);
    if (area == 0)
        return false;
    const double emsAcross = Cross(along, by) / area;
    double back = -Cross(by, across) / area * em;
    if (std::abs(back) < kSamePlace)
        return !IsPlaced(clipped) || std::abs(emsAcross) < kMaxRise;
    if (std::abs(emsAcross) * Length(across) >= kSamePlace)
        return false;
    back = Dot(along, line) < 0 ? -back : back;
    const double length = Length(line);
    if (painted.isWhole)
        return std::abs(back - length) < kSamePlace || std::abs(back - length / 2) < kSamePlace;
    return back > 0 && back < length + em; // there is spacing behind the last character too
}

const TextFont *TextShow::FindFontToShow(const char *name) const
{
    const TextFont *font = glyphs_->OpenFont(name);
    return font != nullptr && drawing_->CanShow(*font) ? font : nullptr;
}

bool TextShow::CanShowAll(const ZRKTextRecord *first) const
{
    const char *name = nullptr;
    for (const ZRKTextRecord *record = first; record != nullptr; record = record->next) {
        if (record->fontName != name && FindFontToShow(record->fontName) == nullptr)
            return false;
        name = record->fontName;
    }
    return true;
}

// Text is painted record by record, so that a stroke stands on the fill of its own characters.
void TextShow::ShowShape(int32_t mode)
{
    if ((mode & kZRKShowFill) != 0)
        drawing_->FillShape(record_);
    if ((mode & kZRKShowStroke) != 0)
        drawing_->StrokeShape(record_);
    if ((mode & kZRKShowClip) != 0)
        AddToClip();
}

// Counts what a chain holds, which may be as long as the document.
void TextShow::TakeBytes(size_t bytes)
{
    drawing_->Budget().Take(bytes);
    chainBytes_ += bytes;
}

void TextShow::AddToClip()
{
    TakeBytes(record_.verbs.size() * sizeof(Verb) + record_.points.size() * sizeof(Point));
    clip_.verbs.insert(clip_.verbs.end(), record_.verbs.begin(), record_.verbs.end());
    clip_.points.insert(clip_.points.end(), record_.points.begin(), record_.points.end());
}

void TextShow::ClipToChain()
{
    drawing_->ClipToShape(clip_);
    clip_ = {};
    drawing_->Budget().Give(std::exchange(chainBytes_, 0));
}

// Records of one font and one matrix are one run: text that is placed character by character is still a line.
void TextShow::BeginRun(const TextFont *font, const Matrix &matrix, bool isColumn, int32_t mode)
{
    if (!runs_.empty()) {
        const GlyphRun &last = runs_.back();
        const bool isSame = last.font == font && last.matrix == matrix && last.isColumn == isColumn &&
                            last.isRepeated == isRepeated_;
        if (isSame && last.glyphs.size() < kMaxRunGlyphs)
            return;
        if ((mode & kZRKShowClip) == 0)
            ShowRuns(mode);
    }
    TakeBytes(sizeof(GlyphRun));
    runs_.push_back({font, matrix, isColumn, isRepeated_, {}});
}

void TextShow::AddToRun(const Glyph &glyph)
{
    if (glyph.character == 0)
        return;
    TakeBytes(sizeof(PlacedGlyph));
    runs_.back().glyphs.push_back({glyph.glyph, glyph.character, glyph.advance, end_});
}

void TextShow::ShowRuns(int32_t mode)
{
    if (runs_.empty())
        return;
    std::erase_if(runs_, [](const GlyphRun &run) { return run.glyphs.empty(); });
    if (!runs_.empty())
        drawing_->ShowText(runs_, mode);
    else if ((mode & kZRKShowClip) != 0)
        drawing_->ClipToShape({});
    runs_.clear();
    drawing_->Budget().Give(std::exchange(chainBytes_, 0));
}

Point TextShow::PlaceOf(const ZRKTextRecord &record) const
{
    const Point at = {FromFixed(record.x), FromFixed(record.y)};
    switch (record.placement & kPlacements) {
    case kZRKPlaceAt:
        return drawing_->UserToPage().Map(at);
    case kZRKMoveBy: {
        const Point by = MapVector(drawing_->UserToPage(), at);
        return {end_.x + by.x, end_.y + by.y};
    }
    default:
        return end_;
    }
}

void TextShow::Move(Point byUser)
{
    const Point by = MapVector(drawing_->UserToPage(), byUser);
    end_ = {end_.x + by.x, end_.y + by.y};
}

void TextShow::BuildRecord(const ZRKTextRecord &record, const TextFont *font, int32_t mode)
{
    record_.Clear();
    end_ = PlaceOf(record);
    const Matrix glyph = UprightMatrix(record);
    const Spacing spacing = SpacingOf(record);
    const bool isUpright = (record.placement & kZRKUprightInColumn) != 0;
    const Matrix toPage = WithoutTranslation(Product(glyph, drawing_->UserToPage()));
    if (font != nullptr)
        BeginRun(font, toPage, isUpright, mode);
    else
        ShowRuns(mode);
    const bool isByGlyph =
        font == nullptr && (mode & kPaints) == kZRKShowFill && drawing_->PaintsGlyphs(toPage);
    bool hasGlyphs = false;
    // Text goes on along the baseline, or down the column.
    const Point direction = isUpright ? Point{-glyph.c, -glyph.d} : Point{glyph.a, glyph.b};
    std::span<const uint8_t> text(record.text, static_cast<size_t>(std::max(record.length, 0)));
    while (!text.empty()) {
        if (text.front() == kSpace)
            Move(spacing.word);
        const Glyph next = glyphs_->Next(text, isUpright);
        if (font != nullptr)
            AddToRun(next);
        else if (next.outline != nullptr && isByGlyph) {
            if (!std::exchange(hasGlyphs, true))
                drawing_->BeginGlyphs(toPage);
            drawing_->FillGlyph(*next.outline, next.outlineNumber, end_);
        } else if (next.outline != nullptr)
            AddOutline(*next.outline, toPage);
        Move({direction.x * next.advance, direction.y * next.advance});
        Move(spacing.character);
        text = text.subspan(std::min(next.bytes, text.size()));
    }
    if (font == nullptr)
        ShowShape(mode);
}

void TextShow::AddOutline(const Path &outline, Matrix toPage)
{
    toPage.tx = end_.x;
    toPage.ty = end_.y;
    AppendOutline(outline, toPage, &record_);
}

} // namespace vxhost
