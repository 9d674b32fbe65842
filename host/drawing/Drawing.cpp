#include "host/drawing/Drawing.h"

#include <vx/TextRecord.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace vxhost
{

namespace
{

// This lies far beyond any page, and far from where doubles end: a product of two still has room.
constexpr double kMatrixLimit = 1e12;

// Layers and groups that are open in one another: no drawing needs more, and editors take no more.
constexpr size_t kMostOpened = 200;

bool IsUsable(const Matrix &matrix)
{
    return std::ranges::all_of(std::array{matrix.a, matrix.b, matrix.c, matrix.d, matrix.tx, matrix.ty},
                               [](double value) { return std::abs(value) <= kMatrixLimit; });
}

double Amount(double value)
{
    return std::clamp(value, 0.0, 1.0);
}

// A phase below 0 is the same as one that is whole patterns later; an odd pattern swaps on and off each time.
double PositivePhase(double phase, std::span<const double> lengths)
{
    if (phase >= 0)
        return phase;
    double period = 0;
    for (const double length : lengths)
        period += length;
    if (lengths.size() % 2 != 0)
        period *= 2;
    return phase + std::ceil(-phase / period) * period;
}

bool IsSolid(std::span<const double> lengths)
{
    return std::ranges::any_of(lengths, [](double length) { return length < 0; }) ||
           std::ranges::all_of(lengths, [](double length) { return length == 0; });
}

} // namespace

Drawing::Drawing(Device *device, int64_t maxBytes) : device_(device), budget_(maxBytes), path_(&budget_) {}

void Drawing::NewPath()
{
    path_.Clear();
    state_.pen = Pen::None;
}

void Drawing::StartSubpath(Point onPage)
{
    if (!path_.ReplaceLastMove(onPage))
        path_.Append(Verb::Move, onPage);
    state_.start = state_.current = onPage;
    state_.pen = Pen::Open;
}

void Drawing::MoveTo(Point to)
{
    StartSubpath(state_.matrix.Map(to));
}

// Begins a subpath for a segment that follows none: after a close at the closed subpath's start.
void Drawing::OpenSubpath(Point ifNone)
{
    StartSubpath(state_.pen == Pen::Closed ? state_.start : ifNone);
}

void Drawing::LineTo(Point to)
{
    if (state_.pen == Pen::None)
        return MoveTo(to);
    if (state_.pen != Pen::Open)
        OpenSubpath(to);
    ++counts_.segments;
    state_.current = state_.matrix.Map(to);
    path_.Append(Verb::Line, state_.current);
}

void Drawing::CurveTo(Point control1, Point control2, Point to)
{
    if (state_.pen != Pen::Open)
        OpenSubpath(state_.matrix.Map(control1));
    ++counts_.segments;
    state_.current = state_.matrix.Map(to);
    path_.Append(Verb::Curve, state_.matrix.Map(control1), state_.matrix.Map(control2), state_.current);
}

void Drawing::CurveToFromCurrent(Point control2, Point to)
{
    if (state_.pen != Pen::Open)
        OpenSubpath(state_.matrix.Map(control2));
    ++counts_.segments;
    const Point from = state_.current;
    state_.current = state_.matrix.Map(to);
    path_.Append(Verb::Curve, from, state_.matrix.Map(control2), state_.current);
}

void Drawing::ClosePath()
{
    if (state_.pen != Pen::Open)
        return;
    path_.Append(Verb::Close);
    state_.pen = Pen::Closed;
}

void Drawing::Save()
{
    budget_.Take(sizeof(State));
    path_.Save();
    saved_.push_back(state_);
    state_.isSavedOnDevice = false;
}

void Drawing::Restore()
{
    if (saved_.empty())
        return;
    if (state_.isSavedOnDevice)
        device_->Restore();
    state_ = saved_.back();
    saved_.pop_back();
    path_.Restore();
    budget_.Give(sizeof(State));
}

void Drawing::EndAll()
{
    while (!saved_.empty())
        Restore();
    while (!opened_.empty())
        EndInnermost();
}

void Drawing::BeginWaiting()
{
    for (size_t i = opened_.size() - waiting_; i < opened_.size(); ++i) {
        opened_[i].isSent = true;
        if (opened_[i].layer != nullptr)
            device_->BeginLayer(*opened_[i].layer);
        else
            device_->BeginGroup();
    }
    waiting_ = 0;
}

void Drawing::EndInnermost()
{
    const Opened innermost = opened_.back();
    opened_.pop_back();
    if (!innermost.isSent)
        --waiting_;
    else if (innermost.layer != nullptr)
        device_->EndLayer();
    else
        device_->EndGroup();
}

void Drawing::EndGroups()
{
    groupsEndedEarly_ += std::exchange(groupsTooDeep_, 0);
    for (; !opened_.empty() && opened_.back().layer == nullptr; ++groupsEndedEarly_)
        EndInnermost();
}

void Drawing::BeginLayer(const Layer &layer)
{
    EndGroups();
    if (opened_.size() == kMostOpened) {
        ++layersTooDeep_;
        return;
    }
    opened_.push_back({&layer});
    ++waiting_;
}

void Drawing::EndLayer()
{
    EndGroups();
    if (layersTooDeep_ > 0)
        --layersTooDeep_;
    else if (!opened_.empty())
        EndInnermost();
}

void Drawing::BeginGroup()
{
    if (opened_.size() == kMostOpened) {
        ++groupsTooDeep_;
        return;
    }
    opened_.push_back({});
    ++waiting_;
}

void Drawing::EndGroup()
{
    if (groupsTooDeep_ > 0)
        --groupsTooDeep_;
    else if (!opened_.empty() && opened_.back().layer == nullptr)
        EndInnermost();
    else if (groupsEndedEarly_ > 0)
        --groupsEndedEarly_;
}

void Drawing::Translate(double dx, double dy)
{
    Concat({1, 0, 0, 1, dx, dy});
}

// A matrix that leaves the range of sensible numbers is not taken over: nothing drawn through it could be seen.
void Drawing::Concat(const Matrix &matrix)
{
    const Matrix product = Product(matrix, state_.matrix);
    if (IsUsable(product))
        state_.matrix = product;
}

void Drawing::SetLineWidth(double width)
{
    state_.lineWidth = std::abs(width);
}

void Drawing::CutDashes(size_t length)
{
    budget_.Give((dashes_.size() - length) * sizeof(double));
    dashes_.resize(length);
}

void Drawing::SetDash(double phase, std::span<const double> lengths)
{
    CutDashes(saved_.empty() ? 0 : saved_.back().dashEnd);
    state_.dashBegin = dashes_.size();
    state_.dashPhase = 0;
    if (!IsSolid(lengths)) {
        budget_.Take(lengths.size_bytes());
        dashes_.insert(dashes_.end(), lengths.begin(), lengths.end());
        state_.dashPhase = PositivePhase(phase, lengths);
    }
    state_.dashEnd = dashes_.size();
}

void Drawing::SetLineCap(int32_t cap)
{
    if (cap >= 0 && cap <= 2)
        state_.cap = static_cast<LineCap>(cap);
}

void Drawing::SetLineJoin(int32_t join)
{
    if (join >= 0 && join <= 2)
        state_.join = static_cast<LineJoin>(join);
}

void Drawing::SetMiterLimit(double limit)
{
    state_.miterLimit = std::max(limit, 1.0);
}

void Drawing::SetGray(double level)
{
    state_.space = ColourSpace::Gray;
    state_.ink = {Amount(level)};
}

void Drawing::SetCMYKColor(double cyan, double magenta, double yellow, double black)
{
    state_.space = ColourSpace::Cmyk;
    state_.ink = {Amount(cyan), Amount(magenta), Amount(yellow), Amount(black)};
}

void Drawing::SetOverprint(bool on)
{
    state_.overprint = on;
}

// Finds what is painted with next, as the plug-in has sent it.
void Drawing::CountPaint()
{
    if (waiting_ > 0)
        BeginWaiting();
    paint_.colour.space = state_.space;
    std::ranges::copy(state_.ink, paint_.colour.ink);
    paint_.colour.spots = {};
    paint_.overprint = state_.overprint;
    counts_.gray |= state_.space == ColourSpace::Gray;
    counts_.cmyk |= state_.space == ColourSpace::Cmyk;
    counts_.overprint |= state_.overprint;
}

// The spot ink has been read beside the plug-in.
void Drawing::AddSpot(const SpotColour &spot)
{
    if (spot.share.ink != nullptr && state_.space == ColourSpace::Cmyk &&
        std::ranges::equal(state_.ink, spot.process))
        paint_.colour.spots[0] = spot.share;
}

void Drawing::CountSpots()
{
    for (const SpotShare &share : paint_.colour.spots) {
        if (share.ink == nullptr)
            return;
        const double tint = 1 - share.amount;
        const auto [place, isNew] = placeOfSpot_.try_emplace(share.ink, spotsUsed_.size());
        if (isNew) {
            SpotUse &use = spotsUsed_.emplace_back();
            use.name = share.ink->name;
            std::ranges::copy(share.ink->alternate, use.alternate);
            use.leastTint = use.mostTint = tint;
        }
        SpotUse &use = spotsUsed_[place->second];
        use.leastTint = std::min(use.leastTint, tint);
        use.mostTint = std::max(use.mostTint, tint);
    }
}

const Paint &Drawing::CountStroke()
{
    CountPaint();
    AddSpot(strokeSpot_);
    CountSpots();
    return paint_;
}

const Paint &Drawing::CountFill()
{
    CountPaint();
    if (!blendSteps_.AddSpots(&paint_.colour))
        AddSpot(fillSpot_);
    CountSpots();
    return paint_;
}

void Drawing::FillShape(const Path &path)
{
    if (path.IsEmpty())
        return;
    device_->FillPath(path, CountFill());
}

void Drawing::StrokeShape(const Path &path)
{
    if (path.IsEmpty())
        return;
    const Paint &paint = CountStroke();
    FindStyle(&style_);
    device_->StrokePath(path, style_, paint);
}

void Drawing::FindStyle(StrokeStyle *style) const
{
    style->width = state_.lineWidth;
    style->cap = state_.cap;
    style->join = state_.join;
    style->miterLimit = state_.miterLimit;
    style->dashPhase = state_.dashPhase;
    const double *dashes = dashes_.data();
    style->dashes.assign(dashes + state_.dashBegin, dashes + state_.dashEnd);
    style->matrix = state_.matrix;
}

void Drawing::SaveOnDevice()
{
    if (waiting_ > 0)
        BeginWaiting();
    if (saved_.empty() || state_.isSavedOnDevice)
        return;
    device_->Save();
    state_.isSavedOnDevice = true;
}

void Drawing::ClipToShape(const Path &path)
{
    SaveOnDevice();
    device_->ClipPath(path);
}

void Drawing::ShowText(std::span<const GlyphRun> runs, int32_t mode)
{
    text_.fills = (mode & kZRKShowFill) != 0;
    text_.strokes = (mode & kZRKShowStroke) != 0;
    text_.clips = (mode & kZRKShowClip) != 0;
    if (text_.fills || text_.strokes)
        text_.paint = text_.fills ? CountFill() : CountStroke();
    if (text_.strokes)
        FindStyle(&text_.style);
    if (text_.clips)
        SaveOnDevice();
    if (text_.fills || text_.strokes || text_.clips)
        device_->ShowText(runs, text_);
}

void Drawing::Clip()
{
    ++counts_.clips;
    ClipToShape(path_.Current());
}

void Drawing::Fill()
{
    counts_.fills += path_.Current().IsEmpty() ? 0 : 1;
    FillShape(path_.Current());
    NewPath();
}

void Drawing::Stroke()
{
    counts_.strokes += path_.Current().IsEmpty() ? 0 : 1;
    StrokeShape(path_.Current());
    NewPath();
}

} // namespace vxhost
