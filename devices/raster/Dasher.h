// Cuts lines into dashes and hands each to the stroker.
//
// Lengths count in the user's space. Only what can be seen is cut: outside of the page a line is passed in
// one step, and a pattern too fine for the samples is drawn solid, so the work follows the size of the
// picture.
#pragma once

#include "devices/raster/Stroker.h"

namespace vxhost::raster
{

class Dasher
{
  public:
    // False: the style has no dashes that could be drawn, or none at all.
    bool Begin(const StrokeStyle &style, const Matrix &toSamples, const Bounds &visible, Stroker *stroker);

    // Each line starts the pattern from its beginning.
    void DashOpen(std::span<const StrokePoint> points) { Walk(points, false); }
    void DashClosed(std::span<const StrokePoint> points) { Walk(points, true); }

  private:
    void Walk(std::span<const StrokePoint> points, bool closed);
    void WalkSegment(Point from, const StrokePoint &to);
    void BeginDash(Point at, Point direction);
    void EndDash();
    void StrokeDash(const std::vector<StrokePoint> &dash, Point direction);
    void Advance(double distance); // draws nothing
    void NextElement();
    bool IsOn() const { return element_ % 2 == 0; }
    double UserLength(Point along) const;

    Stroker *stroker_ = nullptr;
    std::vector<double> pattern_; // an even number of lengths
    double period_ = 0;
    double phase_ = 0;
    Matrix toUser_;                                      // from samples
    double left_ = 0, top_ = 0, right_ = 0, bottom_ = 0; // what can be seen, grown by the stroke's reach

    size_t element_ = 0;   // of the pattern, where the walk is
    double remaining_ = 0; // what is left of that element
    bool drawing_ = false;
    Point direction_; // of the dash being drawn, at its start
    std::vector<StrokePoint> dash_;
    bool holdFirst_ = false; // the first dash of a closed line waits: the last may run into it
    std::vector<StrokePoint> first_;
    Point firstDirection_;
};

} // namespace vxhost::raster
