// Both sides of a line are walked at once: the scanner takes the edges of an outline in any order, so
// nothing is stored on the way back.
#include "devices/raster/Stroker.h"

#include "devices/raster/Precision.h"

#include <numbers>

namespace vxhost::raster
{

namespace
{

// Rounding to the grid of the scanner must not take the last centre out of a stroke that is just one sample wide. It
// is no more than that, since what is added here darkens every thin line.
constexpr double kOneSample = 1.0 + 1.0 / 4096;

// The thinnest lines keep this much of their ink, which is enough to be seen.
constexpr double kFaintest = 0.25;

Point Rotate(Point p, double cosine, double sine)
{
    return {p.x * cosine - p.y * sine, p.x * sine + p.y * cosine};
}

Extent FindExtent(std::span<const StrokePoint> points)
{
    Extent extent;
    for (const StrokePoint &p : points)
        extent.Add(p.at);
    return extent;
}

} // namespace

// Every matrix takes the unit disc to an ellipse; its axes are the singular vectors. What the matrix does to
// the disc before that, turning or mirroring it, cannot be seen and is left out.
Pen::Pen(double width, const Matrix &toSamples, int samplesPerPixel)
{
    const double e = (toSamples.a + toSamples.d) / 2, f = (toSamples.a - toSamples.d) / 2;
    const double g = (toSamples.b + toSamples.c) / 2, h = (toSamples.b - toSamples.c) / 2;
    const double q = std::hypot(e, h), r = std::hypot(f, g);
    const double thinnest = width > 0 ? kOneSample / 2 : samplesPerPixel * kOneSample / 2;
    const double shortRadius = ClampFar(std::abs(q - r) * width / 2);
    radiusX_ = std::max(ClampFar((q + r) * width / 2), thinnest);
    radiusY_ = std::max(shortRadius, thinnest);
    if (width > 0)
        strength_ = std::clamp(shortRadius / thinnest, kFaintest, 1.0);
    const double angle = (std::atan2(g, f) + std::atan2(h, e)) / 2;
    if (radiusX_ != radiusY_ && std::isfinite(angle)) {
        cos_ = std::cos(angle);
        sin_ = std::sin(angle);
    }
}

Point Pen::ToSamples(Point p) const
{
    return Rotate({p.x * radiusX_, p.y * radiusY_}, cos_, sin_);
}

Point Pen::ToPen(Point p) const
{
    const Point q = Rotate(p, cos_, -sin_);
    return {q.x / radiusX_, q.y / radiusY_};
}

void Stroker::Begin(const StrokeStyle &style, const Matrix &toSamples, int samplesPerPixel, Scanner *scanner)
{
    scanner_ = scanner;
    pen_ = Pen(style.width, toSamples, samplesPerPixel);
    cap_ = style.cap;
    join_ = style.join;
    miterLimit_ = style.miterLimit;
    const double radius = pen_.LongRadius();
    arcStep_ =
        std::clamp(2 * std::acos(std::max(1 - kPenFlatness / radius, 0.0)), kMinPenAngle, kMaxPenAngle);
    arcStepCos_ = std::cos(arcStep_);
}

double Stroker::Reach() const
{
    const double corner = join_ == LineJoin::Miter ? std::max(miterLimit_, 1.5) : 1.5; // 1.5: square caps
    return ClampFar(pen_.LongRadius() * corner + 2);
}

void Stroker::StrokeOpen(std::span<const StrokePoint> points)
{
    const double size = FindExtent(points).Size();
    if (size == 0) {
        if (cap_ == LineCap::Round)
            StrokeDot(points[0].at, {1, 0});
        return;
    }
    if (size < 3 && pen_.ShortRadius() < 1) {
        const size_t middle = (points.size() - 1) / 2;
        AddCell((points[middle].at + points[middle + 1].at) * 0.5);
    }
    if ((size < 1 && cap_ == LineCap::Butt) || !KeepDistinct(points, false)) {
        StrokeTiny(points);
        return;
    }
    const size_t last = kept_.size() - 1;
    Segment segment = MakeSegment(kept_[0].at, kept_[1].at);
    AddCap(kept_[0].at, MakeSegment(kept_[1].at, kept_[0].at));
    BeginSides(kept_[0].at, segment);
    for (size_t i = 1; i < last; ++i) {
        const Segment after = MakeSegment(kept_[i].at, kept_[i + 1].at);
        AddJoin(kept_[i], segment, after);
        segment = after;
    }
    AddSides(kept_[last].at + segment.offset, kept_[last].at - segment.offset);
    AddCap(kept_[last].at, segment);
}

void Stroker::StrokeClosed(std::span<const StrokePoint> points)
{
    const double size = FindExtent(points).Size();
    if (size == 0 || !KeepDistinct(points, true)) {
        StrokeOpen(points);
        return;
    }
    if (size < 3 && pen_.ShortRadius() < 1)
        AddCell((points[0].at + points[1].at) * 0.5);
    const size_t count = kept_.size();
    // The corner at the first point is joined last; the sides begin in the middle of the first segment.
    const Segment first = MakeSegment(kept_[0].at, kept_[1].at);
    const Point middle = (kept_[0].at + kept_[1].at) * 0.5;
    BeginSides(middle, first);
    Segment before = first;
    for (size_t i = 1; i < count; ++i) {
        const Segment after = MakeSegment(kept_[i].at, kept_[i + 1 < count ? i + 1 : 0].at);
        AddJoin(kept_[i], before, after);
        before = after;
    }
    AddJoin(kept_[0], before, first);
    AddSides(middle + first.offset, middle - first.offset);
}

void Stroker::StrokeDot(Point at, Point direction)
{
    if (cap_ == LineCap::Butt)
        return;
    AddCap(at, MakeSegment({0, 0}, direction));
    AddCap(at, MakeSegment(direction, {0, 0}));
    if (pen_.ShortRadius() < 1)
        AddCell(at);
}

// Leaves in kept_ the points that differ from the one before; false when fewer than two are left. Where several points
// are the same, the line arrives as at the first of them and leaves as from the last.
bool Stroker::KeepDistinct(std::span<const StrokePoint> points, bool closed)
{
    const auto differ = [](Point a, Point b) { return Dot(a - b, a - b) > kDistinct * kDistinct; };
    kept_.clear();
    for (const StrokePoint &p : points) {
        if (kept_.empty() || differ(p.at, kept_.back().at))
            kept_.push_back(p);
        else
            kept_.back().leaving = p.leaving;
    }
    while (closed && kept_.size() > 1 && !differ(kept_.back().at, kept_.front().at)) {
        kept_.front().arriving = kept_.back().arriving;
        kept_.pop_back();
    }
    return kept_.size() > 1;
}

// A line of less than a sample with flat ends might pass between the centres: it is drawn a sample long.
void Stroker::StrokeTiny(std::span<const StrokePoint> points)
{
    Point far = points.back().at;
    for (const StrokePoint &p : points) {
        if (Length(p.at - points[0].at) > Length(far - points[0].at))
            far = p.at;
    }
    const Point along = far - points[0].at;
    const double length = Length(along);
    const Point half = along * (std::max(length, kOneSample) / length / 2);
    const Point middle = (points[0].at + far) * 0.5;
    const Segment segment = MakeSegment({0, 0}, along);
    AddCap(middle - half, MakeSegment(along, {0, 0}));
    BeginSides(middle - half, segment);
    AddSides(middle + half + segment.offset, middle + half - segment.offset);
    AddCap(middle + half, segment);
}

// The sample around a point, turning the same way as everything else.
void Stroker::AddCell(Point at)
{
    const double left = std::floor(at.x), top = std::floor(at.y);
    const Point corners[] = {{left, top + 1}, {left + 1, top + 1}, {left + 1, top}, {left, top}};
    for (size_t i = 0; i < 4; ++i)
        scanner_->AddEdge(corners[i], corners[(i + 1) % 4]);
}

Stroker::Segment Stroker::MakeSegment(Point from, Point to) const
{
    const Point along = pen_.ToPen(to - from);
    const double length = Length(along);
    Segment segment;
    segment.unit = along * (1 / length);
    segment.normal = {-segment.unit.y, segment.unit.x};
    segment.offset = pen_.ToSamples(segment.normal);
    segment.length = length;
    return segment;
}

// The direction in pen space, as a unit vector: a curve's own at a point, or that of the segment beside it.
Point Stroker::UnitOf(Point direction, const Segment &segment) const
{
    if (direction == Point{})
        return segment.unit;
    const Point inPen = pen_.ToPen(direction);
    return inPen * (1 / Length(inPen));
}

void Stroker::BeginSides(Point at, const Segment &segment)
{
    left_ = at + segment.offset;
    right_ = at - segment.offset;
}

// The left side runs with the line and the right side against it.
void Stroker::AddSides(Point left, Point right)
{
    scanner_->AddEdge(left_, left);
    scanner_->AddEdge(right, right_);
    left_ = left;
    right_ = right;
}

void Stroker::AddJoin(const StrokePoint &at, const Segment &before, const Segment &after)
{
    const double dot = Dot(before.unit, after.unit);
    const double cross = Cross(before.unit, after.unit);
    const double shorter = std::min(before.length, after.length);
    const LineJoin join = at.smooth ? LineJoin::Round : join_;
    // A corner of curves is as sharp as they are, not as the lines that stand for them.
    Point arriving, leaving;
    bool mitred = false;
    if (join == LineJoin::Miter) {
        arriving = UnitOf(at.arriving, before);
        leaving = UnitOf(at.leaving, after);
        mitred = (1 + Dot(arriving, leaving)) * miterLimit_ * miterLimit_ >= 2;
    }
    const bool nearlyStraight = join == LineJoin::Round && dot >= arcStepCos_;

    // Most corners: the sides meet where their lines do, inside and outside alike. Inside, that is right
    // while the place lies along both segments.
    if ((mitred || nearlyStraight) && std::abs(cross) < shorter * (1 + dot)) {
        const Point corner = pen_.ToSamples((before.normal + after.normal) * (1 / (1 + dot)));
        AddSides(at.at + corner, at.at - corner);
        return;
    }

    AddSides(at.at + before.offset, at.at - before.offset);
    BeginSides(at.at, after);
    const bool leftIsOuter = cross <= 0;
    const double side = leftIsOuter ? 1 : -1;
    const auto addLine = [&](bool left, Point from, Point to) {
        scanner_->AddEdge(left ? from : to, left ? to : from);
    };

    // Inside, straight across while that stays in both rectangles; else through the corner, which is always
    // right.
    const Point innerFrom = at.at - before.offset * side, innerTo = at.at - after.offset * side;
    if (dot > 0 && std::abs(cross) <= shorter) {
        addLine(!leftIsOuter, innerFrom, innerTo);
    } else {
        addLine(!leftIsOuter, innerFrom, at.at);
        addLine(!leftIsOuter, at.at, innerTo);
    }

    const Point outerFrom = at.at + before.offset * side, outerTo = at.at + after.offset * side;
    const auto addOuter = [&](Point from, Point to) { addLine(leftIsOuter, from, to); };
    if (join == LineJoin::Round && !nearlyStraight) {
        const double angle = std::acos(std::clamp(dot, -1.0, 1.0));
        AddArc(at.at, before.normal * side, -angle * side, outerFrom, outerTo, addOuter);
    } else if (mitred) {
        const Point across = {-arriving.y - leaving.y, arriving.x + leaving.x};
        const Point tip = at.at + pen_.ToSamples(across * (side / (1 + Dot(arriving, leaving))));
        addOuter(outerFrom, tip);
        addOuter(tip, outerTo);
    } else {
        addOuter(outerFrom, outerTo);
    }
}

// Adds the cap at the end of the segment.
void Stroker::AddCap(Point at, const Segment &segment)
{
    const auto addLine = [&](Point from, Point to) { scanner_->AddEdge(from, to); };
    const Point from = at + segment.offset, to = at - segment.offset;
    switch (cap_) {
    case LineCap::Butt:
        addLine(from, to);
        break;
    case LineCap::Square: {
        const Point forward = pen_.ToSamples(segment.unit);
        addLine(from, from + forward);
        addLine(from + forward, to + forward);
        addLine(to + forward, to);
        break;
    }
    case LineCap::Round:
        AddArc(at, segment.normal, -std::numbers::pi, from, to, addLine);
        break;
    }
}

// Adds the lines of an arc that turns the pen-space vector `from` by angle; start and end are where it begins and ends
// among the samples.
template <class AddLine>
void Stroker::AddArc(Point centre, Point from, double angle, Point start, Point end, AddLine addLine) const
{
    const double steps = std::ceil(std::abs(angle) / arcStep_);
    const double cosine = std::cos(angle / steps), sine = std::sin(angle / steps);
    for (int i = 1; i < steps; ++i) {
        from = Rotate(from, cosine, sine);
        const Point next = centre + pen_.ToSamples(from);
        addLine(start, next);
        start = next;
    }
    addLine(start, end);
}

} // namespace vxhost::raster
