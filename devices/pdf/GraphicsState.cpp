#include "devices/pdf/GraphicsState.h"

#include <algorithm>

namespace vxhost::pdf
{

void GraphicsState::Save()
{
    BeginBlock();
    saved_.push_back(state_);
}

void GraphicsState::Restore()
{
    EndBlock();
    state_ = std::move(saved_.back());
    saved_.pop_back();
}

void GraphicsState::BeginBlock()
{
    content_->Operator("q");
    mostNesting_ = std::max(mostNesting_, saved_.size() + 1);
}

void GraphicsState::EndBlock()
{
    content_->Operator("Q");
}

// Gray that overprints touches black alone. DeviceGray would take the other inks away, and DeviceCMYK with overprint
// mode 1 would leave black as it is where the gray is white; black as an ink of its own does neither.
GraphicsState::Ink GraphicsState::InkOf(const Paint &paint)
{
    const Colour &colour = paint.colour;
    if (colour.spots[0].ink != nullptr) {
        const InkShares shares = FindShares(colour);
        if (shares.spotCount > 0)
            return {Space::Spot, {}, shares};
    }
    if (colour.space == ColourSpace::Cmyk)
        return {Space::Cmyk, {colour.ink[0], colour.ink[1], colour.ink[2], colour.ink[3]}};
    if (paint.overprint)
        return {Space::BlackInk, {1 - colour.ink[0], 0, 0, 0}};
    return {Space::Gray, {colour.ink[0], 0, 0, 0}};
}

void GraphicsState::WriteAmounts(std::string_view space, std::span<const double> amounts, bool isStroke)
{
    content_->Name(space).Operator(isStroke ? "CS" : "cs");
    for (const double amount : amounts)
        content_->Number(amount);
    content_->Operator(isStroke ? "SCN" : "scn");
}

void GraphicsState::WriteInk(const Ink &ink, bool isStroke)
{
    switch (ink.space) {
    case Space::Gray:
        content_->Number(ink.parts[0]).Operator(isStroke ? "G" : "g");
        break;
    case Space::Cmyk:
        for (const double part : ink.parts)
            content_->Number(part);
        content_->Operator(isStroke ? "K" : "k");
        break;
    case Space::BlackInk:
        usesBlackInk_ = true;
        WriteAmounts(kBlackInk, std::span(ink.parts).first(1), isStroke);
        break;
    case Space::Spot:
        WriteAmounts(inks_->NameOf(std::span(ink.spots.inks).first(ink.spots.count)),
                     std::span(ink.spots.amounts).first(ink.spots.count), isStroke);
        break;
    }
}

void GraphicsState::SetFill(const Paint &paint)
{
    SetOverprint(paint.overprint);
    const Ink ink = InkOf(paint);
    if (ink == state_.fill)
        return;
    WriteInk(ink, false);
    state_.fill = ink;
}

void GraphicsState::SetStroke(const Paint &paint)
{
    SetOverprint(paint.overprint);
    const Ink ink = InkOf(paint);
    if (ink == state_.stroke)
        return;
    WriteInk(ink, true);
    state_.stroke = ink;
}

void GraphicsState::SetOverprint(bool on)
{
    if (state_.overprint == on)
        return;
    content_->Name(on ? kOverprintOn : kOverprintOff).Operator("gs");
    usesOverprint_ = true;
    state_.overprint = on;
}

void GraphicsState::SetLine(const StrokeStyle &style, const Frame &frame)
{
    Line &line = state_.line;
    const double width = style.width * frame.scale;
    if (line.width != width)
        content_->Number(width).Operator("w");
    if (line.cap != style.cap)
        content_->Number(static_cast<int>(style.cap)).Operator("J");
    if (line.join != style.join)
        content_->Number(static_cast<int>(style.join)).Operator("j");
    if (line.miterLimit != style.miterLimit)
        content_->Number(style.miterLimit).Operator("M");
    line.width = width;
    line.cap = style.cap;
    line.join = style.join;
    line.miterLimit = style.miterLimit;
    SetDash(style, frame.scale);
}

void GraphicsState::SetDash(const StrokeStyle &style, double scale)
{
    Line &line = state_.line;
    dashes_.clear();
    for (const double dash : style.dashes)
        dashes_.push_back(dash * scale);
    // A dash of nothing but zeros is none.
    if (std::ranges::none_of(dashes_, [](double dash) { return dash >= kSmallestNumber; }))
        dashes_.clear();
    const double phase = dashes_.empty() ? 0 : style.dashPhase * scale;
    if (dashes_ == line.dashes && phase == line.dashPhase)
        return;
    content_->Raw("[");
    for (const double dash : dashes_)
        content_->Number(dash);
    content_->Raw("] ").Number(phase).Operator("d");
    line.dashes = dashes_;
    line.dashPhase = phase;
}

void GraphicsState::SetFont(std::string_view name, double size)
{
    if (IsFont(name, size))
        return;
    content_->Name(name).Number(size).Operator("Tf");
    state_.font = name;
    state_.fontSize = size;
}

void GraphicsState::SetTextMode(int mode)
{
    if (state_.textMode == mode)
        return;
    content_->Number(mode).Operator("Tr");
    state_.textMode = mode;
}

} // namespace vxhost::pdf
