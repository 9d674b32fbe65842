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

// More than the blends of a gradient and its caps.
constexpr size_t kMaxPieces = 64;

// What went through one matrix is the same up to the last bits of a double; documents are in steps of 1/65536.
constexpr double kExact = 1e-6;

// The pieces of a band have a matrix each, six numbers that documents write with three decimals or more. A corner
// is a sum of three of them, so those of two matrices are within six times half of a thousandth of each other. A
// seventh of a hair, and no pixel of any output.
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
    piece.drawn = strips_.Front();
    piece.paint = strips_.Paints(1).front();
    if (steps > 0) {
        const Quad &far = strips_.Shapes(steps).back();
        piece.drawn.far0 = far.far0;
        piece.drawn.far1 = far.far1;
        piece.spans = MakeSpans(strips_.Paints(steps), strips_.Starts(steps), Length(far.far0 - start_));
    }
    piece.placed = piece.drawn;
    return piece;
}

void StripBlend::AddPiece(Piece piece, Device *device)
{
    band_.push_back(std::move(piece));
    if (band_.size() == 1 || JoinsLast())
        return;
    piece = std::move(band_.back());
    band_.pop_back();
    EndBand(device);
    band_.push_back(std::move(piece));
}

StripBlend::Quad StripBlend::Quad::Oriented(int orientation) const
{
    Quad quad = (orientation & 1) == 0 ? *this : Quad{near1, far1, far0, near0};
    for (int turn = 0; turn < orientation / 2; ++turn)
        quad = {quad.far0, quad.far1, quad.near1, quad.near0};
    return quad;
}

bool StripBlend::Quad::HasCornerOf(const Quad &other) const
{
    const auto isCorner = [this](Point p) {
        return AreNear(p, near0, kJoint) || AreNear(p, far0, kJoint) || AreNear(p, far1, kJoint) ||
               AreNear(p, near1, kJoint);
    };
    return isCorner(other.near0) || isCorner(other.far0) || isCorner(other.far1) || isCorner(other.near1);
}

// A strip of one colour is the same whichever way it was drawn. A ramp has its direction, but may lie on either side
// of the axis; the first stays as it is.
bool StripBlend::JoinsLast()
{
    Piece &last = band_.back(), &before = band_[band_.size() - 2];
    if (band_.size() > kMaxPieces || !AreAlike(last.paint, before.paint) ||
        !last.drawn.HasCornerOf(before.drawn))
        return false;
    const bool isBeforeFree = band_.size() == 2 && !before.IsRamp();
    const int orientationsBefore = isBeforeFree ? 8 : 1;
    const int orientations = !last.IsRamp() ? 8 : isBeforeFree ? 1 : 2;
    const Quad placedBefore = before.placed;
    for (int i = 0; i < orientationsBefore; ++i) {
        before.placed = placedBefore.Oriented(i);
        for (int k = 0; k < orientations; ++k) {
            last.placed = last.drawn.Oriented(k);
            if (AreNear(before.placed.far0, last.placed.near0, kJoint) &&
                AreNear(before.placed.far1, last.placed.near1, kJoint) && MakesBand())
                return true;
        }
    }
    before.placed = placedBefore;
    last.placed = last.drawn;
    return false;
}

// Whether all far sides lie across one parallelogram, in order; and where they lie, from 0 to 1.
bool StripBlend::MakesBand()
{
    const Quad &first = band_.front().placed;
    const Point axis = band_.back().placed.far0 - first.near0;
    const double square = Dot(axis, axis);
    double before = 0;
    for (Piece &piece : band_) {
        const Quad &quad = piece.placed;
        piece.end = Dot(quad.far0 - first.near0, axis) / square;
        if (!(piece.end > before && AreNear(first.near0 + axis * piece.end, quad.far0, kJoint) &&
              AreNear(first.near1 + axis * piece.end, quad.far1, kJoint)))
            return false;
        before = piece.end;
    }
    return true;
}

void StripBlend::EndBand(Device *device)
{
    if (std::ranges::any_of(band_, &Piece::IsRamp))
        ShadeBand(device);
    else
        FillPieces(device);
    band_.clear();
}

void StripBlend::FillPieces(Device *device)
{
    for (const Piece &piece : band_) {
        path_.verbs.assign(std::begin(kStripVerbs), std::end(kStripVerbs));
        path_.points = {piece.drawn.near0, piece.drawn.far0, piece.drawn.far1, piece.drawn.near1};
        device->FillPath(path_, piece.paint);
    }
}

void StripBlend::ShadeBand(Device *device)
{
    MakesBand(); // it does; the ends may be those of a piece that did not join
    const Quad &first = band_.front().placed;
    const Point axis = band_.back().placed.far0 - first.near0, edge = first.near1 - first.near0;
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
    device->Shade(shading);
}

} // namespace vxhost
