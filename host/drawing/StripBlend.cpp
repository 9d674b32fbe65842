#include "host/drawing/StripBlend.h"

#include "host/drawing/ColourRamp.h"
#include "host/drawing/Vectors.h"

#include <algorithm>
#include <utility>

namespace vxhost
{

namespace
{

constexpr Verb kStripVerbs[] = {Verb::Move, Verb::Line, Verb::Line, Verb::Line, Verb::Close};

// A gradient has fewer blends, with its caps.
constexpr size_t kMaxPieces = 64;
// What waits for a ramp is a cap, and blends without a change.
constexpr size_t kMaxWaiting = 4;

// Points that went through one matrix differ in the last bits of a double at most; numbers of documents lie 1/65536
// apart.
constexpr double kExact = 1e-6;

// The pieces of a band have a matrix each, six numbers that documents write with three decimals or more. A corner
// is a sum of three of them, so a corner by two matrices differs by six times half of a thousandth at most. This
// is a seventh of a hair, and no pixel of any output.
constexpr double kJoint = 1.0 / 256;

// The last strip's width differs, since it ends where the blend does.
constexpr double kWidthError = 0.1;

} // namespace

bool StripBlend::ReadQuad(const Path &path, Quad *quad)
{
    if (!std::ranges::equal(path.verbs, kStripVerbs))
        return false;
    const Point *p = path.points.data();
    *quad = {p[0], p[1], p[2], p[3]};
    return AreNear(p[1] - p[0], p[2] - p[3], kExact) && Cross(p[1] - p[0], p[3] - p[0]) != 0;
}

bool StripBlend::Continues(const Quad &quad, const Paint &paint) const
{
    const Quad &last = strips_.Back();
    if (quad.near0 != last.far0 || quad.near1 != last.far1 || !AreAlike(paint, strips_.BackPaint()))
        return false;
    const Point across = quad.far0 - quad.near0, first = strips_.Front().far0 - strips_.Front().near0;
    const double width = Length(first);
    return AreNear(across, first, width * kWidthError) && std::abs(Cross(across, first)) <= kExact * width;
}

bool StripBlend::Add(const Path &path, const Paint &paint, Device *device)
{
    Quad quad;
    if (!ReadQuad(path, &quad))
        return false;
    if (!strips_.IsEmpty() && !Continues(quad, paint))
        EndStrips(device);
    if (strips_.IsEmpty())
        start_ = quad.near0;
    strips_.Push(quad, paint, Length(quad.near0 - start_));
    if (strips_.IsFull())
        TakePiece(device);
    return true;
}

void StripBlend::Flush(Device *device)
{
    EndStrips(device);
    FillWaiting(waiting_.size(), device);
    EndBand(device);
}

void StripBlend::EndStrips(Device *device)
{
    while (!strips_.IsEmpty())
        TakePiece(device);
}

// The first strips of the queue become a ramp, or the first becomes a piece of one colour.
void StripBlend::TakePiece(Device *device)
{
    const size_t steps = strips_.CountRamp();
    AddPiece(MakePiece(steps), device);
    strips_.Pop(std::max<size_t>(steps, 1));
}

StripBlend::Piece StripBlend::MakePiece(size_t steps) const
{
    Piece piece;
    piece.quad = strips_.Front();
    piece.paint = strips_.Paints(1).front();
    if (steps > 0) {
        const Quad &far = strips_.Shapes(steps).back();
        piece.quad.far0 = far.far0;
        piece.quad.far1 = far.far1;
        piece.spans = MakeSpans(strips_.Paints(steps), strips_.Starts(steps), Length(far.far0 - start_));
    }
    return piece;
}

void StripBlend::AddPiece(Piece piece, Device *device)
{
    if (!band_.empty()) {
        if (Join(piece, true))
            return;
        EndBand(device);
    }
    if (piece.IsRamp()) {
        BeginBand(std::move(piece), device);
        return;
    }
    waiting_.push_back(std::move(piece));
    if (waiting_.size() > kMaxWaiting)
        FillWaiting(1, device);
}

void StripBlend::BeginBand(Piece ramp, Device *device)
{
    band_.push_back(std::move(ramp));
    while (!waiting_.empty() && Join(waiting_.back(), false))
        waiting_.pop_back();
    FillWaiting(waiting_.size(), device);
}

StripBlend::Quad StripBlend::Quad::Oriented(int orientation) const
{
    Quad quad = (orientation & 1) == 0 ? *this : Quad{near1, far1, far0, near0};
    for (int turn = 0; turn < orientation / 2; ++turn)
        quad = {quad.far0, quad.far1, quad.near1, quad.near0};
    return quad;
}

// Adds a piece at one end of the band. A strip of one colour is the same whichever way it was drawn; a ramp has its
// direction, but may be mirrored. The band's first piece stays as it is.
bool StripBlend::Join(const Piece &piece, bool behind)
{
    if (band_.size() == kMaxPieces || !AreAlike(piece.paint, band_.front().paint))
        return false;
    const int orientations = piece.IsRamp() ? 2 : 8;
    for (int i = 0; i < orientations; ++i) {
        const Quad quad = piece.quad.Oriented(i);
        const Quad &first = behind ? band_.back().quad : quad, &second = behind ? quad : band_.front().quad;
        if (!AreNear(first.far0, second.near0, kJoint) || !AreNear(first.far1, second.near1, kJoint))
            continue;
        const auto place = band_.insert(behind ? band_.end() : band_.begin(), piece);
        place->quad = quad;
        if (MakesBand())
            return true;
        band_.erase(place);
    }
    return false;
}

// Whether all far sides lie across one parallelogram, in order. Each piece is told where its own lies, from 0 to 1.
bool StripBlend::MakesBand()
{
    const Quad &first = band_.front().quad;
    const Point axis = band_.back().quad.far0 - first.near0;
    const double square = Dot(axis, axis);
    double before = 0;
    for (Piece &piece : band_) {
        const Quad &quad = piece.quad;
        piece.end = Dot(quad.far0 - first.near0, axis) / square;
        if (!(piece.end > before && AreNear(first.near0 + axis * piece.end, quad.far0, kJoint) &&
              AreNear(first.near1 + axis * piece.end, quad.far1, kJoint)))
            return false;
        before = piece.end;
    }
    return true;
}

void StripBlend::FillWaiting(size_t count, Device *device)
{
    for (size_t i = 0; i < count; ++i) {
        const Quad &quad = waiting_[i].quad;
        path_.verbs.assign(std::begin(kStripVerbs), std::end(kStripVerbs));
        path_.points = {quad.near0, quad.far0, quad.far1, quad.near1};
        device->FillPath(path_, waiting_[i].paint);
    }
    waiting_.erase(waiting_.begin(), waiting_.begin() + static_cast<ptrdiff_t>(count));
}

void StripBlend::EndBand(Device *device)
{
    if (band_.empty())
        return;
    MakesBand(); // again, since the ends may have been set for a piece that did not join
    const Quad &first = band_.front().quad;
    const Point axis = band_.back().quad.far0 - first.near0, edge = first.near1 - first.near0;
    Shading shading;
    shading.matrix = {axis.x, axis.y, edge.x, edge.y, first.near0.x, first.near0.y};
    shading.overprint = band_.front().paint.overprint;
    double start = 0;
    for (Piece &piece : band_) {
        if (!piece.IsRamp())
            piece.spans = {{0, 1, {piece.paint.colour}}};
        const auto place = [&](double t) { return t < 1 ? start + t * (piece.end - start) : piece.end; };
        for (ColourSpan &span : piece.spans)
            shading.spans.push_back({place(span.from), place(span.to), std::move(span.colours)});
        start = piece.end;
    }
    band_.clear();
    device->Shade(shading);
}

} // namespace vxhost
