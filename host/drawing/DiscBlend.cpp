#include "host/drawing/DiscBlend.h"

#include "host/drawing/ColourRamp.h"
#include "host/drawing/Vectors.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vxhost
{

namespace
{

// A circle without a close, as blends draw it.
constexpr Verb kDiscVerbs[] = {Verb::Move, Verb::Curve, Verb::Curve, Verb::Curve, Verb::Curve};

// Points that went through one matrix differ in the last bits of a double at most; numbers of documents lie 1/65536
// apart.
constexpr double kExact = 1e-6;

// Blends round the control points of circles to 16.16, which shows in the smallest discs.
constexpr double kControlError = 0.01;

// How far from its place a centre may be, in steps of the radius.
constexpr double kPlaceError = 0.1;

// A blend has about one step a percent.
constexpr double kGroundStep = 0.01;
// A gradient has fewer stops.
constexpr size_t kMaxSpans = 64;

} // namespace

bool DiscBlend::ReadDisc(const Path &path, Disc *disc)
{
    if (!std::ranges::equal(path.verbs, kDiscVerbs))
        return false;
    const Point *p = path.points.data();
    const Point centre = (p[0] + p[6]) * 0.5;
    const Point u = p[0] - centre, v = p[3] - centre;
    std::copy_n(p, disc->path.size(), disc->path.begin());
    disc->centre = centre;
    disc->u = u;
    disc->v = v;
    if (p[12] != p[0] || !AreNear((p[3] + p[9]) * 0.5, centre, kExact) || Cross(u, v) == 0)
        return false;
    const double error = kControlError * (Length(u) + Length(v));
    const auto isAt = [&](int i, double x, double y) { return AreNear(p[i], centre + u * x + v * y, error); };
    return isAt(1, 1, kArcControl) && isAt(2, kArcControl, 1) && isAt(4, -kArcControl, 1) &&
           isAt(5, -1, kArcControl) && isAt(7, -1, -kArcControl) && isAt(8, -kArcControl, -1) &&
           isAt(10, kArcControl, -1) && isAt(11, 1, -kArcControl);
}

bool DiscBlend::Continues(const Disc &disc, const Paint &paint) const
{
    const Disc &last = discs_.Back();
    const double ratio = Dot(disc.u, last.u) / Dot(last.u, last.u);
    return AreAlike(paint, discs_.BackPaint()) && ratio > 0 && ratio < 1 &&
           AreNear(disc.u, last.u * ratio, kExact) && AreNear(disc.v, last.v * ratio, kExact);
}

bool DiscBlend::Add(const Path &path, const Paint &paint, Device *device)
{
    Disc disc;
    if (!ReadDisc(path, &disc))
        return false;
    if (!discs_.IsEmpty() && !Continues(disc, paint))
        Flush(device);
    if (discs_.IsEmpty())
        radius_ = Length(disc.u);
    discs_.Push(disc, paint, radius_ - Length(disc.u));
    if (discs_.IsFull())
        TakeShape(device);
    return true;
}

void DiscBlend::Flush(Device *device)
{
    while (!discs_.IsEmpty())
        TakeShape(device);
    EndCone(device);
    FillGround(device);
}

void DiscBlend::FillGround(Device *device)
{
    if (ground_ != nullptr)
        device->FillPath(*std::exchange(ground_, nullptr), groundPaint_);
}

// The first discs of the queue go on as a shading, or the first one goes on as it is.
void DiscBlend::TakeShape(Device *device)
{
    const size_t steps = discs_.CountRamp();
    Shading shading;
    if (steps > 0 && MakeShading(steps, &shading)) {
        if (!Join(shading)) {
            EndCone(device);
            TakeGround(&shading);
            FillGround(device);
            cone_ = std::move(shading);
        }
        discs_.Pop(steps);
        return;
    }
    EndCone(device);
    FillGround(device);
    const Disc &first = discs_.Front();
    path_.verbs.assign(std::begin(kDiscVerbs), std::end(kDiscVerbs));
    path_.points.assign(first.path.begin(), first.path.end());
    device->FillPath(path_, discs_.Paints(1).front());
    discs_.Pop(1);
}

// False when the centres do not move by equal steps, or move out of the first disc.
bool DiscBlend::MakeShading(size_t steps, Shading *shading) const
{
    const std::span<const Disc> discs = discs_.Shapes(steps);
    const std::span<const double> starts = discs_.Starts(steps);
    const Disc &outer = discs.front();
    const auto intervals = static_cast<double>(steps - 1);
    const Point move = discs.back().centre - outer.centre;
    const double radius = Length(outer.u), step = (starts.back() - starts.front()) / intervals;
    const double error = kPlaceError * step * std::min(1.0, Length(outer.v) / radius);
    for (size_t i = 1; i < steps; ++i) {
        const Point place = outer.centre + move * (static_cast<double>(i) / intervals);
        if (!AreNear(discs[i].centre, place, error))
            return false;
    }

    // The last disc ends one step before the circle that the colours run to.
    const double end = std::min(starts.back() + step, starts.front() + radius);
    const double area = Cross(outer.u, outer.v);
    const Point lastCentre = {Cross(move, outer.v) / area, Cross(outer.u, move) / area};
    const double lastRadius = 1 - (end - starts.front()) / radius;
    if (!(Length(lastCentre) <= 1 - lastRadius))
        return false;
    shading->kind = ShadingKind::Radial;
    shading->matrix = {outer.u.x, outer.u.y, outer.v.x, outer.v.y, outer.centre.x, outer.centre.y};
    shading->first = {{0, 0}, 1};
    shading->last = {lastCentre, lastRadius};
    shading->spans = MakeSpans(discs_.Paints(steps), starts, end);
    shading->overprint = discs_.BackPaint().overprint;
    return true;
}

// The ground has the colour where the blend begins, at most one step before the first disc's. Overprinted discs keep
// the ground's inks that they do not have themselves, which a shading cannot do.
void DiscBlend::TakeGround(Shading *shading)
{
    Colour &first = shading->spans.front().colours.front();
    if (ground_ == nullptr || shading->overprint || !AreAlike(groundPaint_, discs_.Paints(1).front()))
        return;
    for (int i = 0; i < 4; ++i) {
        if (std::abs(groundPaint_.colour.ink[i] - first.ink[i]) > kGroundStep)
            return;
    }
    if (!AreNested(shading->first, shading->last))
        return;
    first = groundPaint_.colour;
    shading->ground = *std::exchange(ground_, nullptr);
}

// False when the inner shading does not begin at the last circle, or is not on the way to the tip. Overprinted shadings
// stay apart, since their inks differ.
bool DiscBlend::Join(const Shading &inner)
{
    if (inner.overprint || cone_.spans.empty() || cone_.spans.size() + inner.spans.size() > kMaxSpans)
        return false;
    // Both are discs of one queue, so their matrices differ by a move and a factor.
    const Point u = {cone_.matrix.a, cone_.matrix.b}, v = {cone_.matrix.c, cone_.matrix.d};
    const Point move = Point{inner.matrix.tx, inner.matrix.ty} - Point{cone_.matrix.tx, cone_.matrix.ty};
    const double area = Cross(u, v), factor = Length({inner.matrix.a, inner.matrix.b}) / Length(u);
    const Point centre = {Cross(move, v) / area, Cross(u, move) / area};
    const Shading::Circle last = {centre + inner.last.centre * factor, inner.last.radius * factor};
    const double joint = (1 - factor) / (1 - last.radius);
    const double step = (1 - factor) / static_cast<double>(cone_.spans.back().colours.size());
    const auto isNear = [&](double difference) { return std::abs(difference) <= kPlaceError * step; };
    if (!isNear(cone_.last.radius - factor) || !AreNear(centre, last.centre * joint, kPlaceError * step) ||
        !AreNear(cone_.last.centre, last.centre * joint, kPlaceError * step))
        return false;
    for (ColourSpan &span : cone_.spans) {
        span.from *= joint;
        span.to = span.to < 1 ? span.to * joint : joint;
    }
    for (const ColourSpan &span : inner.spans) {
        const auto place = [&](double t) { return t < 1 ? joint + t * (1 - joint) : 1; };
        cone_.spans.push_back({place(span.from), place(span.to), span.colours});
    }
    cone_.last = last;
    return true;
}

void DiscBlend::EndCone(Device *device)
{
    if (!cone_.spans.empty())
        device->Shade(std::exchange(cone_, {}));
}

} // namespace vxhost
