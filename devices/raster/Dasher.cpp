// The walk keeps the element of the pattern and what is left of it. A segment is entered and left in closed
// form where it cannot be seen.
#include "devices/raster/Dasher.h"

namespace vxhost::raster
{

namespace
{

// Dashes a sample of length, above which a pattern is drawn solid.
constexpr double kMaxDashesPerSample = 2;

// The part first ≤ t ≤ last of a segment that lies between low and high in one coordinate.
void CutTo(double from, double along, double low, double high, double *first, double *last)
{
    if (along == 0) {
        if (from < low || from > high)
            *last = -1;
        return;
    }
    const double a = (low - from) / along, b = (high - from) / along;
    *first = std::max(*first, std::min(a, b));
    *last = std::min(*last, std::max(a, b));
}

} // namespace

bool Dasher::Begin(const StrokeStyle &style, const Matrix &toSamples, const Bounds &visible, Stroker *stroker)
{
    stroker_ = stroker;
    if (style.dashes.empty())
        return false;
    if (!std::isfinite(1 / Determinant(toSamples)))
        return false;
    toUser_ = Inverse(toSamples);

    pattern_ = style.dashes;
    if (pattern_.size() % 2 != 0) // then on and off change places every time round
        pattern_.insert(pattern_.end(), style.dashes.begin(), style.dashes.end());
    period_ = 0;
    for (const double length : pattern_)
        period_ += length;
    phase_ = std::fmod(style.dashPhase, period_);
    if (!(period_ > 0) || !std::isfinite(period_) || !std::isfinite(phase_))
        return false;
    if (phase_ < 0)
        phase_ += period_;

    // A mitre may reach in from very far away, but nobody misses one that comes from further than this.
    const double page = std::max(visible.right - visible.left, visible.bottom - visible.top);
    const double reach = std::min(stroker->Reach(), 4 * page);
    left_ = visible.left - reach;
    top_ = visible.top - reach;
    right_ = visible.right + reach;
    bottom_ = visible.bottom + reach;
    return true;
}

double Dasher::UserLength(Point along) const
{
    const Point user = MapVector(toUser_, along);
    return std::hypot(user.x, user.y);
}

void Dasher::NextElement()
{
    element_ = element_ + 1 < pattern_.size() ? element_ + 1 : 0;
    remaining_ = pattern_[element_];
}

void Dasher::Advance(double distance)
{
    distance = std::fmod(distance, period_);
    while (distance > 0 && distance >= remaining_) { // an element of length 0 is not skipped at its own place
        distance -= remaining_;
        NextElement();
    }
    remaining_ -= distance;
}

void Dasher::BeginDash(Point at, Point direction)
{
    drawing_ = true;
    direction_ = direction;
    dash_.clear();
    dash_.push_back({at, false});
}

void Dasher::EndDash()
{
    if (!drawing_)
        return;
    drawing_ = false;
    if (holdFirst_) {
        holdFirst_ = false;
        first_.swap(dash_);
        firstDirection_ = direction_;
        return;
    }
    StrokeDash(dash_, direction_);
}

void Dasher::StrokeDash(const std::vector<StrokePoint> &dash, Point direction)
{
    const auto moved = [&](const StrokePoint &p) { return p.at != dash[0].at; };
    if (std::any_of(dash.begin(), dash.end(), moved))
        stroker_->StrokeOpen(dash);
    else
        stroker_->StrokeDot(dash[0].at, direction);
}

void Dasher::Walk(std::span<const StrokePoint> points, bool closed)
{
    size_t next = 1;
    while (next < points.size() && points[next].at == points[0].at)
        ++next;
    if (next == points.size()) { // no length to measure
        stroker_->StrokeOpen(points);
        return;
    }
    element_ = 0;
    remaining_ = pattern_[0];
    Advance(phase_);
    drawing_ = false;
    first_.clear();
    const Point start = points[0].at;
    if (IsOn())
        BeginDash(start, points[next].at - start);
    holdFirst_ = closed && drawing_;
    const bool startsOn = holdFirst_;

    for (; next < points.size(); ++next)
        WalkSegment(points[next - 1].at, points[next]);
    if (closed && points.back().at != start)
        WalkSegment(points.back().at, {start, false});

    if (startsOn && drawing_ && dash_.back().at == start)
        dash_.back().leaving = points[0].leaving;
    if (startsOn && holdFirst_) { // one dash all round
        stroker_->StrokeClosed(dash_);
        return;
    }
    if (startsOn && drawing_ && dash_.back().at == start) {
        dash_.insert(dash_.end(), first_.begin() + 1, first_.end());
        first_.clear();
    }
    EndDash();
    if (!first_.empty())
        StrokeDash(first_, firstDirection_);
}

void Dasher::WalkSegment(Point from, const StrokePoint &to)
{
    const Point along = to.at - from;
    const double length = UserLength(along);
    if (!(length > 0) || !std::isfinite(length))
        return;
    double first = 0, last = 1;
    CutTo(from.x, along.x, left_, right_, &first, &last);
    CutTo(from.y, along.y, top_, bottom_, &first, &last);
    if (first > last) {
        EndDash();
        Advance(length);
        return;
    }
    if (first > 0) {
        EndDash();
        Advance(first * length);
    }
    const Point entry = from + along * first;
    const double visible = (last - first) * length;
    const double dashesInPeriod = static_cast<double>(pattern_.size()) / 2;
    const bool tooFine = period_ / length * Length(along) * kMaxDashesPerSample < dashesInPeriod;
    if (drawing_ && !IsOn() && !tooFine) // the solid stretch of a pattern that was too fine until here
        EndDash();
    if (!drawing_ && (IsOn() || tooFine))
        BeginDash(entry, along);
    if (tooFine) {
        Advance(visible);
    } else {
        double at = 0; // from the entry, so that small dashes far from the segment's start keep their length
        while (at + remaining_ < visible) {
            at += remaining_;
            const Point here = entry + along * (at / length);
            if (IsOn()) {
                dash_.push_back({here, false});
                EndDash();
            }
            NextElement();
            if (IsOn())
                BeginDash(here, along);
        }
        remaining_ -= visible - at;
    }
    if (drawing_)
        dash_.push_back(last < 1 ? StrokePoint{from + along * last, false} : to);
    if (last < 1) {
        EndDash();
        Advance((1 - last) * length);
    }
}

} // namespace vxhost::raster
