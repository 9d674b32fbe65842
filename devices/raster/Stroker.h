// From lines with a width to outlines.
//
// A stroke is the union of a rectangle a segment, a wedge a join and a cap an end, all with the same sense
// of rotation, so that non-zero winding gives exactly their union: no holes in tight curves, no spikes
// inside corners. Nowhere is it narrower than a sample, and no piece of a line is lost between samples.
#pragma once

#include "devices/raster/Scanner.h"
#include "host/drawing/Device.h"

#include <span>
#include <vector>

namespace vxhost::raster
{

// The disc that draws a line, as the ellipse it becomes among the samples. Angles and lengths in pen space
// are those of the user's space, in units of half the line width: there joins and caps are decided.
class Pen
{
  public:
    Pen() = default;
    // toSamples maps the user's space; the ellipse is widened to a sample, or to a pixel when width is 0. What is
    // widened to a sample is drawn in as much less ink, so that it does not come out darker than it is wide.
    Pen(double width, const Matrix &toSamples, int samplesPerPixel);

    Point ToSamples(Point p) const;
    Point ToPen(Point p) const;
    double LongRadius() const { return std::max(radiusX_, radiusY_); }
    double ShortRadius() const { return std::min(radiusX_, radiusY_); }
    double Strength() const { return strength_; } // how much of the ink is left, up to 1

  private:
    double cos_ = 1, sin_ = 0; // of the ellipse's axes among the samples
    double radiusX_ = 1, radiusY_ = 1;
    double strength_ = 1;
};

struct StrokePoint {
    Point at;
    bool smooth; // in the middle of a curve: joined round, whatever the style says
    // The directions of the curves that end and begin here; 0: those of the lines to the points beside it.
    Point arriving = {}, leaving = {};
};

class Stroker
{
  public:
    // All outlines go to the scanner.
    void Begin(const StrokeStyle &style, const Matrix &toSamples, int samplesPerPixel, Scanner *scanner);

    // How far from its line a stroke can paint, in samples.
    double Reach() const;
    double Strength() const { return pen_.Strength(); }

    // Each takes at least one point. Where all points are the same, only round caps paint.
    void StrokeOpen(std::span<const StrokePoint> points);
    void StrokeClosed(std::span<const StrokePoint> points); // with a line from the last point to the first

    // A line without length which has a direction all the same: round caps and square caps paint.
    void StrokeDot(Point at, Point direction);

  private:
    struct Segment {
        Point unit;    // direction in pen space, length 1
        Point normal;  // to the left of unit, length 1
        Point offset;  // the normal among the samples
        double length; // in pen space
    };

    bool KeepDistinct(std::span<const StrokePoint> points, bool closed);
    void StrokeTiny(std::span<const StrokePoint> points);
    void AddCell(Point at);
    Segment MakeSegment(Point from, Point to) const;
    Point UnitOf(Point direction, const Segment &segment) const;
    void BeginSides(Point at, const Segment &segment);
    void AddSides(Point left, Point right);
    void AddJoin(const StrokePoint &at, const Segment &before, const Segment &after);
    void AddCap(Point at, const Segment &segment);
    template <class AddLine>
    void AddArc(Point centre, Point from, double angle, Point start, Point end, AddLine addLine) const;

    Scanner *scanner_ = nullptr;
    Pen pen_;
    LineCap cap_ = LineCap::Butt;
    LineJoin join_ = LineJoin::Miter;
    double miterLimit_ = 10;
    double arcStep_ = 1; // largest angle between two points of an arc
    double arcStepCos_ = 0;
    Point left_, right_; // where the two sides of the outline have come to
    std::vector<StrokePoint> kept_;
};

} // namespace vxhost::raster
