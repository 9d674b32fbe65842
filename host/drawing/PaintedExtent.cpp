#include "host/drawing/PaintedExtent.h"

#include "host/drawing/Vectors.h"

#include <array>
#include <cmath>
#include <limits>

namespace vxhost
{

namespace
{

constexpr double kFar = std::numeric_limits<double>::infinity();

struct Extent {
    Box box = {kFar, kFar, -kFar, -kFar};

    void Add(Point p)
    {
        box = {std::min(box.left, p.x), std::min(box.bottom, p.y), std::max(box.right, p.x),
               std::max(box.top, p.y)};
    }
};

Box Intersection(const Box &one, const Box &other)
{
    return {std::max(one.left, other.left), std::max(one.bottom, other.bottom),
            std::min(one.right, other.right), std::min(one.top, other.top)};
}

using Curve = std::array<Point, 4>;

Point Mix(Point from, Point to, double t)
{
    return from + (to - from) * t;
}

// Returns the point of the curve at t, and which way it runs there.
std::pair<Point, Point> PlaceAt(const Curve &curve, double t)
{
    const Point a = Mix(curve[0], curve[1], t), b = Mix(curve[1], curve[2], t),
                c = Mix(curve[2], curve[3], t);
    const Point before = Mix(a, b, t), after = Mix(b, c, t);
    return {Mix(before, after, t), after - before};
}

// Calls use(t) for each t between 0 and 1 at which a·t² + b·t + c is 0.
template <class Use>
void ForRoots(double a, double b, double c, const Use &use)
{
    const auto give = [&](double t) {
        if (t > 0 && t < 1)
            use(t);
    };
    const double square = b * b - 4 * a * c;
    if (square < 0)
        return;
    const double q = -(b + std::copysign(std::sqrt(square), b)) / 2; // no two near numbers are subtracted
    if (a != 0)
        give(q / a);
    if (q != 0)
        give(c / q);
}

// Calls use(t) for each place within the curve at which it runs along an axis: there it reaches furthest.
template <class Use>
void ForTurns(const Curve &curve, const Use &use)
{
    for (const auto side : {&Point::x, &Point::y}) {
        const double d0 = curve[1].*side - curve[0].*side, d1 = curve[2].*side - curve[1].*side,
                     d2 = curve[3].*side - curve[2].*side;
        ForRoots(d0 - 2 * d1 + d2, 2 * (d1 - d0), d0, use);
    }
}

// Calls sink.Move(point), sink.Segment(curve, isLine) and sink.Close(). A line is a curve with its ends alone.
template <class Sink>
void Walk(const Path &path, Sink *sink)
{
    const Point *next = path.points.data();
    Point current;
    for (const Verb verb : path.verbs) {
        switch (verb) {
        case Verb::Move:
            current = *next++;
            sink->Move(current);
            break;
        case Verb::Line:
            sink->Segment({current, current, *next, *next}, true);
            current = *next++;
            break;
        case Verb::Curve:
            sink->Segment({current, next[0], next[1], next[2]}, false);
            current = next[2];
            next += 3;
            break;
        case Verb::Close:
            sink->Close();
            break;
        }
    }
}

struct FillExtent : Extent {
    void Move(Point) {}
    void Segment(const Curve &curve, bool isLine)
    {
        Add(curve[0]);
        Add(curve[3]);
        if (!isLine)
            ForTurns(curve, [&](double t) { Add(PlaceAt(curve, t).first); });
    }
    void Close() {}
};

// Directions are on the page; what the pen makes of them is decided in its own space, where it is round.
class StrokeExtent : public Extent
{
  public:
    explicit StrokeExtent(const StrokeStyle &style)
        : style_(style), toPage_({style.matrix.a, style.matrix.b, style.matrix.c, style.matrix.d, 0, 0}),
          isFlat_(Determinant(toPage_) == 0), toPen_(isFlat_ ? Matrix() : Inverse(toPage_)),
          radius_(style.width / 2),
          reach_({radius_ * std::hypot(toPage_.a, toPage_.c), radius_ * std::hypot(toPage_.b, toPage_.d)})
    {
    }

    void Move(Point to)
    {
        End();
        start_ = at_ = to;
        hasSegments_ = isDrawn_ = false;
    }

    void Segment(const Curve &curve, bool isLine)
    {
        isDrawn_ = true;
        at_ = curve[3];
        Point leaving, arriving;
        for (size_t i = 1; i < curve.size() && leaving == Point{}; ++i)
            leaving = curve[i] - curve[0];
        for (size_t i = curve.size() - 1; i-- > 0 && arriving == Point{};)
            arriving = curve[3] - curve[i];
        if (leaving == Point{})
            return;
        if (hasSegments_)
            AddJoin(curve[0], arriving_, leaving);
        else
            first_ = leaving;
        hasSegments_ = true;
        arriving_ = arriving;
        AddSides(curve[0], leaving);
        AddSides(curve[3], arriving);
        if (!isLine)
            ForTurns(curve, [&](double t) {
                const auto [point, direction] = PlaceAt(curve, t);
                AddSides(point, direction);
            });
    }

    void Close()
    {
        if (at_ != start_)
            Segment({at_, at_, start_, start_}, true);
        isDrawn_ = true;
        if (hasSegments_)
            AddJoin(start_, arriving_, first_);
        else
            End();
        hasSegments_ = isDrawn_ = false;
    }

    // Adds the caps of a line that is not closed. One without length is a dot where its caps are round.
    void End()
    {
        if (hasSegments_) {
            AddCap(start_, first_ * -1);
            AddCap(at_, arriving_);
        } else if (isDrawn_ && style_.cap == LineCap::Round) {
            AddDisc(at_);
        }
    }

  private:
    Point Unit(Point direction) const
    {
        const Point inPen = toPen_.Map(direction);
        return inPen * (1 / Length(inPen));
    }
    static Point LeftOf(Point unit) { return {-unit.y, unit.x}; }

    void AddDisc(Point at)
    {
        Add(at - reach_);
        Add(at + reach_);
    }

    void AddSides(Point at, Point direction)
    {
        if (isFlat_ || direction == Point{}) // at a cusp the line turns round
            return AddDisc(at);
        const Point offset = toPage_.Map(LeftOf(Unit(direction)) * radius_);
        Add(at + offset);
        Add(at - offset);
    }

    void AddJoin(Point at, Point arriving, Point leaving)
    {
        if (style_.join == LineJoin::Round)
            AddDisc(at);
        if (style_.join != LineJoin::Miter || isFlat_)
            return;
        const Point in = Unit(arriving), out = Unit(leaving);
        const double width = 1 + Dot(in, out);
        if (width <= 0 || width * style_.miterLimit * style_.miterLimit < 2)
            return;
        const double side = Cross(in, out) <= 0 ? 1 : -1; // the tip is on the outer one
        Add(at + toPage_.Map(LeftOf(in + out) * (side * radius_ / width)));
    }

    void AddCap(Point at, Point outwards)
    {
        if (style_.cap == LineCap::Round)
            AddDisc(at);
        if (style_.cap == LineCap::Square && !isFlat_)
            AddSides(at + toPage_.Map(Unit(outwards) * radius_), outwards);
    }

    const StrokeStyle &style_;
    Matrix toPage_; // without its translation
    bool isFlat_;
    Matrix toPen_;
    double radius_;
    Point reach_; // of the pen, on the page
    Point start_, at_;
    Point first_, arriving_; // the directions of the first segment and at the end of the last
    bool hasSegments_ = false, isDrawn_ = false;
};

Box FilledBox(const Path &path)
{
    FillExtent extent;
    Walk(path, &extent);
    return extent.box;
}

} // namespace

void PaintedExtent::BeginPage(const Page &)
{
    clips_.resize(1);
    clips_.front() = {-kFar, -kFar, kFar, kFar};
    found_.reset();
}

void PaintedExtent::ClipPath(const Path &path)
{
    clips_.back() = Intersection(clips_.back(), FilledBox(path));
}

// A shape without area is not painted when it is filled.
void PaintedExtent::FillPath(const Path &path, const Paint &)
{
    const Box box = FilledBox(path);
    if (box.Width() > 0 && box.Height() > 0)
        Add(box);
}

void PaintedExtent::StrokePath(const Path &path, const StrokeStyle &style, const Paint &)
{
    StrokeExtent extent(style);
    Walk(path, &extent);
    extent.End();
    Add(extent.box);
}

void PaintedExtent::Shade(const Shading &shading)
{
    for (const double from : {0, 1}) // what is between two discs reaches no further than they
        Add(FilledBox(OutlineOf(shading, from, 1)));
}

void PaintedExtent::Add(const Box &painted)
{
    const Box &clip = clips_.back();
    const Box seen = Intersection(painted, clip);
    // A shape that only touches the clip is not seen; a hairline has no width by itself.
    const auto isSeen = [](double part, double whole) { return part > 0 || (part == 0 && whole == 0); };
    if (clip.Width() <= 0 || clip.Height() <= 0 || !isSeen(seen.Width(), painted.Width()) ||
        !isSeen(seen.Height(), painted.Height()))
        return;
    const Box before = found_.value_or(seen);
    found_ = Box{std::min(before.left, seen.left), std::min(before.bottom, seen.bottom),
                 std::max(before.right, seen.right), std::max(before.top, seen.top)};
}

} // namespace vxhost
