#include "devices/preflight/PreflightDevice.h"

#include "devices/colour/InkShares.h"
#include "devices/preflight/FontRights.h"
#include "host/drawing/Vectors.h"

#include <algorithm>
#include <cmath>

namespace vxhost
{

namespace
{

constexpr double kPercent = 100;
constexpr double kRounding = 1e-4; // of inks and lengths, which are 16.16

// Says how much black ink a colour has, and how much of all others together.
struct BlackAndOthers {
    double black = 0, others = 0;
};

BlackAndOthers Divide(const Colour &colour)
{
    BlackAndOthers inks;
    if (colour.space == ColourSpace::Gray) {
        inks.black = 1 - colour.ink[0];
        return inks;
    }
    const InkShares shares = FindShares(colour);
    for (size_t i = 0; i < shares.count; ++i) {
        const bool isBlack = shares.inks[i]->name == kProcessInks[kInkCount - 1].name;
        (isBlack ? inks.black : inks.others) += shares.amounts[i];
    }
    return inks;
}

bool HasInk(const Colour &colour)
{
    const BlackAndOthers inks = Divide(colour);
    return inks.black > 0 || inks.others > 0;
}

bool IsBlank(char32_t character)
{
    constexpr char32_t kNoBreakSpace = 0xA0, kIdeographicSpace = 0x3000;
    return character <= U' ' || character == kNoBreakSpace || character == kIdeographicSpace;
}

Box LettersOf(const GlyphRun &run)
{
    Box box = kNoBox;
    for (const PlacedGlyph &glyph : run.glyphs) {
        if (!IsBlank(glyph.character))
            box = Union(box, ExtentOf(run, glyph));
    }
    return box;
}

} // namespace

void PreflightDevice::BeginPage(const Page &page)
{
    page_ = page.box;
    clips_ = {kEverywhere};
}

void PreflightDevice::ClipPath(const Path &path)
{
    clips_.back() = Intersection(clips_.back(), ExtentOf(path));
}

FindingPlace PreflightDevice::PlaceOf(const Box &box) const
{
    return {box, layers_.empty() ? "" : layers_.back()->name};
}

// Counts each shape, and each text once.
void PreflightDevice::Add(FindingKind kind, const Box &box, std::optional<double> value)
{
    uint64_t &counted = counted_[static_cast<size_t>(kind)];
    if (text_ == 0 || counted != text_)
        findings_.AddPlace(kind, PlaceOf(box));
    counted = text_;
    if (value)
        findings_.AddValue(kind, *value);
}

Box PreflightDevice::VisibleOf(const Box &extent) const
{
    const Box visible = Intersection(Intersection(extent, clips_.back()), page_);
    return IsEmpty(visible) ? kNoBox : visible;
}

Box PreflightDevice::WatchPaint(const Box &extent, bool hasInk, bool overprint)
{
    const Box visible = VisibleOf(extent);
    if (!hasInk) {
        if (overprint && !IsEmpty(visible))
            Add(FindingKind::WhiteOverprint, visible);
        return overprint ? kNoBox : visible;
    }
    const Box painted = Intersection(extent, clips_.back());
    const Excess excess = IsEmpty(painted) ? Excess() : ExcessOf(painted, page_);
    if (excess.distance > limits_.outsidePage + kRounding)
        Add(FindingKind::OutsidePage, excess.part, excess.distance);
    return visible;
}

void PreflightDevice::WatchLine(double width, const Box &visible)
{
    if (IsEmpty(visible))
        return;
    if (width == 0)
        Add(FindingKind::ZeroWidthLine, visible);
    else if (width < limits_.hairline - kRounding)
        Add(FindingKind::Hairline, visible, width);
}

void PreflightDevice::FillPath(const Path &path, const Paint &paint)
{
    const Box visible = WatchPaint(ExtentOf(path), HasInk(paint.colour), paint.overprint);
    AddBlend(blends_.Add(path, paint, visible));
}

void PreflightDevice::StrokePath(const Path &path, const StrokeStyle &style, const Paint &paint)
{
    AddBlend(blends_.End());
    const Box extent = Grown(ExtentOf(path), WidthsOf(style).wide / 2);
    WatchLine(ThinnestWidth(path, style), WatchPaint(extent, HasInk(paint.colour), paint.overprint));
}

void PreflightDevice::Shade(const Shading &shading)
{
    AddBlend(blends_.End());
    const bool hasInk = std::ranges::any_of(
        shading.spans, [](const ColourSpan &span) { return std::ranges::any_of(span.colours, HasInk); });
    (void)WatchPaint(ExtentOf(shading), hasInk, shading.overprint);
}

void PreflightDevice::ShowText(std::span<const GlyphRun> runs, const TextPaint &paint)
{
    AddBlend(blends_.End());
    if (!paint.fills && !paint.strokes)
        return;
    text_ = paint.object.number + 1;
    for (const GlyphRun &run : runs) {
        const double around = paint.strokes ? WidthsOf(paint.style).wide / 2 : 0;
        const Box visible =
            WatchPaint(Grown(LettersOf(run), around), HasInk(paint.paint.colour), paint.paint.overprint);
        if (IsEmpty(visible))
            continue;
        WatchFont(*run.font, visible);
        if (paint.strokes)
            WatchLine(WidthsOf(paint.style).narrow, visible);
        if (paint.fills)
            WatchLetters(run, visible, paint.paint);
    }
    text_ = 0;
}

void PreflightDevice::WatchFont(const TextFont &font, const Box &visible)
{
    const auto [use, isNew] = fonts_.try_emplace(font.asked, PlaceOf(visible));
    if (isNew && !MayEmbed(font))
        findings_.AddName(FindingKind::FontNotEmbeddable, font.served, &use->second);
}

void PreflightDevice::WatchLetters(const GlyphRun &run, const Box &visible, const Paint &paint)
{
    const BlackAndOthers inks = Divide(paint.colour);
    const auto knocksOut = [&](const PlacedGlyph &glyph) {
        const Box box = IsBlank(glyph.character) ? kNoBox : VisibleOf(ExtentOf(run, glyph));
        return !IsEmpty(box) && inks_.HasOtherInk(box);
    };
    if (inks.black >= 1 - kRounding && inks.others == 0 && !paint.overprint &&
        std::ranges::any_of(run.glyphs, knocksOut))
        Add(FindingKind::BlackTextKnockout, visible);
    const double size = Length({run.matrix.c, run.matrix.d});
    if (inks.black * kPercent >= limits_.richBlackBlack - kRounding * kPercent &&
        inks.others * kPercent > limits_.richBlackOthers + kRounding * kPercent &&
        size < limits_.richBlackSize - kRounding)
        Add(FindingKind::RichBlackText, visible, size);
}

void PreflightDevice::AddBlend(const std::optional<CoarseBlend> &blend)
{
    constexpr double kPlaces = 100; // more are roundings
    if (blend)
        Add(FindingKind::GradientSteps, blend->box, std::round(blend->step * kPercent * kPlaces) / kPlaces);
}

Failure PreflightDevice::EndPage()
{
    AddBlend(blends_.End());
    return {};
}

} // namespace vxhost
