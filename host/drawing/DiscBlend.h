// Disc blends: finds the radial blends among discs that are painted one upon the other, ever smaller.
//
// Between two stops they shrink by equal steps, and with a highlight their centres move by equal steps. The discs of
// all stops become one radial shading, which is a cone seen from its tip. What lies around the first disc is painted
// first, as the ground, and belongs to it.
#pragma once

#include "host/drawing/Device.h"
#include "host/drawing/StepQueue.h"

#include <array>

namespace vxhost
{

class DiscBlend
{
  public:
    // Holds the shape back, or does nothing and returns false when it is no disc. What can no longer become part of a
    // shading goes on to the device, which is the same one for all calls.
    bool Add(const Path &path, const Paint &paint, Device *device);
    // Holds back what may be the ground of the discs that come next, if nothing else is held. The path of the clip lasts
    // until the next flush.
    void HoldGround(const Path *clip, const Paint &paint)
    {
        ground_ = clip;
        groundPaint_ = paint;
    }
    // All that is held back goes on.
    void Flush(Device *device);
    bool IsEmpty() const { return discs_.IsEmpty() && ground_ == nullptr && cone_.spans.empty(); }

  private:
    // The unit circle under a matrix: its centre, and what (1, 0) and (0, 1) become of, less the centre.
    struct Disc {
        std::array<Point, 13> path;
        Point centre, u, v;
    };

    static bool ReadDisc(const Path &path, Disc *disc);
    bool Continues(const Disc &disc, const Paint &paint) const;
    void TakeShape(Device *device);
    void FillGround(Device *device);
    bool MakeShading(size_t steps, Shading *shading) const;
    void TakeGround(Shading *shading);
    bool Join(const Shading &inner);
    void EndCone(Device *device);

    const Path *ground_ = nullptr;
    Paint groundPaint_;
    StepQueue<Disc> discs_;
    Shading cone_;      // what discs have become, for more within; without spans: nothing
    double radius_ = 0; // of the first that came into the empty queue
    Path path_;         // keeps its storage
};

} // namespace vxhost
